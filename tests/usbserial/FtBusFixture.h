// What the tests of the FT_* functions on the virtual USB bus share: a bus, and short forms that fail the test when a
// call does.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "bridge/SerialPeers.h"
#include "bridge/VirtualUsbBus.h"
#include "usbserial/ftd2xx.h"

namespace corvane {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

template <class Condition>
bool Eventually(Condition condition) {
  const auto end = Clock::now() + std::chrono::seconds(5);
  while (!condition() && Clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return condition();
}

class FtBusTest : public testing::Test {
 protected:
  BridgeChip& Plug(const BridgeChip::Options& options = {}, const std::vector<ISerialPeer*>& peers = {}) {
    BridgeChip& chip = mBus.Plug(options, peers);
    mChannels += static_cast<DWORD>(options.interfaces);
    AwaitDevices(mChannels);
    return chip;
  }

  void Unplug(BridgeChip& chip) {
    mBus.Unplug(chip);
    mChannels -= static_cast<DWORD>(chip.GetOptions().interfaces);
    AwaitDevices(mChannels);
  }

  static void AwaitDevices(DWORD wanted) {
    DWORD count = 0;
    EXPECT_TRUE(Eventually([&] {
      return FT_ListDevices(&count, nullptr, FT_LIST_NUMBER_ONLY) == 0 && count == wanted;
    })) << count
        << " devices";
  }

  static FT_HANDLE Open(int index = 0, DWORD readTimeout = 2000, DWORD writeTimeout = 2000) {
    FT_HANDLE handle = nullptr;
    EXPECT_EQ(FT_Open(index, &handle), FT_OK);
    EXPECT_EQ(FT_SetTimeouts(handle, readTimeout, writeTimeout), FT_OK);
    return handle;
  }

  static void Write(FT_HANDLE handle, Bytes bytes, FT_STATUS wanted = FT_OK) {
    DWORD written = 99;
    ASSERT_EQ(FT_Write(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written), wanted);
    ASSERT_EQ(written, wanted == FT_OK ? bytes.size() : 0);
  }

  static Bytes Read(FT_HANDLE handle, std::size_t count, FT_STATUS wanted = FT_OK) {
    Bytes bytes(count);
    DWORD received = 0xFFFFFFFF;
    EXPECT_EQ(FT_Read(handle, bytes.data(), static_cast<DWORD>(count), &received), wanted);
    bytes.resize(std::min<std::size_t>(received, count));
    return bytes;
  }

  static DWORD Queued(FT_HANDLE handle) {
    DWORD count = 0;
    EXPECT_EQ(FT_GetQueueStatus(handle, &count), FT_OK);
    return count;
  }

  // The vendor requests that the chip got since they were last asked for, as "request:value@index".
  static std::vector<std::string> Requests(BridgeChip& chip) {
    std::vector<std::string> texts;
    for (const auto& r : chip.Requests()) {
      texts.push_back(std::to_string(r.request) + ":" + std::to_string(r.value) + "@" + std::to_string(r.index));
    }
    chip.ForgetRequests();
    return texts;
  }

  VirtualUsbBus mBus;

 private:
  DWORD mChannels = 0;
};

}  // namespace corvane
