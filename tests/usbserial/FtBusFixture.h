// What the tests of the FT_* functions on the virtual USB bus share: a bus, short forms that fail the test when a call
// does, and devices that are closed at its end, when nothing of them may be left.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "bridge/SerialPeers.h"
#include "bridge/VirtualUsbBus.h"
#include "usbserial/ftd2xx.h"

namespace corvane {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

class FtBusTest : public testing::Test {
 protected:
  using Clock = std::chrono::steady_clock;
  using Bytes = std::vector<std::uint8_t>;

  static constexpr std::size_t kReceiveBuffer = 65536;  ///< what the library keeps for FT_Read
  static constexpr DWORD kUntouched = 0xFFFFFFFF;

  void TearDown() override {
    for (FT_HANDLE const handle : mHandles) {
      FT_Close(handle);
    }
    EXPECT_EQ(mBus.OpenNodes(), 0U);
    EXPECT_EQ(mBus.PendingTransfers(), 0U);
  }

  template <class Condition>
  static bool Eventually(Condition condition) {
    const auto end = Clock::now() + std::chrono::seconds(5);
    while (!condition() && Clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
  }

  static std::ptrdiff_t Entries(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
  }

  BridgeChip& Plug(const BridgeChip::Options& options = {}, const std::vector<ISerialPeer*>& peers = {}) {
    BridgeChip& chip = mBus.Plug(options, peers);
    mChannels += static_cast<DWORD>(options.interfaces);
    AwaitDevices(mChannels);
    return chip;
  }

  // A chip that echoes at once.
  BridgeChip& PlugEcho(BridgeChip::Options options = {}) {
    options.repliesAtOnce = true;
    return Plug(options, {&mPeers.emplace_back(), &mPeers.emplace_back()});
  }

  void Unplug(BridgeChip& chip) {
    mBus.Unplug(chip);
    mChannels -= static_cast<DWORD>(chip.GetOptions().interfaces);
    AwaitDevices(mChannels);
  }

  static void AwaitDevices(DWORD wanted) {
    DWORD count = 0;
    const auto all = [&] { return FT_ListDevices(&count, nullptr, FT_LIST_NUMBER_ONLY) == 0 && count == wanted; };
    EXPECT_TRUE(Eventually(all)) << count << " devices";
  }

  FT_HANDLE Open(int index = 0, DWORD readTimeout = 2000, DWORD writeTimeout = 2000) {
    FT_HANDLE handle = nullptr;
    EXPECT_EQ(FT_Open(index, &handle), FT_OK);
    EXPECT_EQ(FT_SetTimeouts(handle, readTimeout, writeTimeout), FT_OK);
    mHandles.push_back(handle);
    return handle;
  }

  static void Write(FT_HANDLE handle, Bytes bytes, FT_STATUS wanted = FT_OK) {
    DWORD written = kUntouched;
    ASSERT_EQ(FT_Write(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written), wanted);
    ASSERT_EQ(written, wanted == FT_OK ? bytes.size() : 0);
  }

  static Bytes Read(FT_HANDLE handle, std::size_t count, FT_STATUS wanted = FT_OK) {
    Bytes bytes(count);
    DWORD received = kUntouched;
    EXPECT_EQ(FT_Read(handle, bytes.data(), static_cast<DWORD>(count), &received), wanted);
    EXPECT_LE(received, count);
    bytes.resize(std::min<std::size_t>(received, count));
    return bytes;
  }

  static DWORD Queued(FT_HANDLE handle) {
    DWORD count = 0;
    EXPECT_EQ(FT_GetQueueStatus(handle, &count), FT_OK);
    return count;
  }

  static void AwaitQueued(FT_HANDLE handle, DWORD count) {
    ASSERT_TRUE(Eventually([&] { return Queued(handle) == count; })) << Queued(handle);
  }

  // The vendor requests that the chip got since they were last asked for, as "name value@index" in hexadecimal, with
  // commas; those of the first number by the name of their value.
  static std::string Requests(BridgeChip& chip) {
    static const std::map<int, const char*> names{
        {1, "modem"},      {2, "flow"},       {3, "baud"},        {4, "line"},         {5, "status"},
        {6, "event-char"}, {7, "error-char"}, {9, "set-latency"}, {10, "get-latency"}, {11, "set-pins"},
        {12, "get-pins"},  {0x90, "read-ee"}, {0x91, "write-ee"}, {0x92, "erase-ee"}};
    static const std::array resets{"reset", "purge-rx", "purge-tx"};
    std::ostringstream all;
    all << std::hex << std::uppercase;
    for (const auto& request : chip.Requests()) {
      all << (all.tellp() == 0 ? "" : ", ");
      if (request.request == 0) {
        all << resets.at(request.value);
      } else {
        all << names.at(request.request) << " " << request.value;
      }
      all << "@" << request.index;
    }
    chip.ForgetRequests();
    return all.str();
  }

  VirtualUsbBus mBus;

 private:
  std::list<LoopbackPeer> mPeers;
  std::vector<FT_HANDLE> mHandles;
  DWORD mChannels = 0;
};

}  // namespace corvane
