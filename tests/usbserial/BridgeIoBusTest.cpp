// Reading, writing and purging through the FT_* functions, on the virtual USB bus.
#include <algorithm>
#include <array>
#include <random>
#include <thread>
#include <tuple>

#include "FtBusFixture.h"

using namespace std::chrono_literals;
using corvane::Bytes;
using corvane::Clock;
using corvane::Eventually;

namespace {

class FtIoTest : public corvane::FtBusTest {
 protected:
  static Bytes Counted(std::size_t length, std::uint64_t from = 0) {
    Bytes bytes(length);
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<std::uint8_t>(from++ % CountingPeer::kPeriod); });
    return bytes;
  }

  // A counting peer talks before the device is opened, whose reset drops that; so a stream begins anywhere.
  static std::uint64_t FirstOfStream(FT_HANDLE handle) {
    const Bytes first = Read(handle, 1);
    return first.empty() ? 0 : first[0] + std::uint64_t{1};
  }
};

TEST_F(FtIoTest, ReadEndsAtItsTimeoutWithWhatThereIsAndWithoutOneWaitsForALateAnswer) {
  ScriptedPeer peer;
  auto& chip = Plug({}, {&peer});
  FT_HANDLE const handle = Open();
  for (const auto timeout : {1ms, 20ms, 100ms}) {
    ASSERT_EQ(FT_SetTimeouts(handle, static_cast<DWORD>(timeout.count()), 0), FT_OK);
    const auto start = Clock::now();
    EXPECT_TRUE(Read(handle, 1).empty());
    EXPECT_GE(Clock::now() - start, timeout);
  }
  peer.Send("abc");
  chip.LookAtPeers();
  EXPECT_EQ(Read(handle, 5), (Bytes{'a', 'b', 'c'}));
  // Each packet begins with two bytes that are no data, whatever its length.
  for (const std::size_t length : {0U, 1U, 2U, 3U, 64U}) {
    chip.QueueRawPacket(0, Bytes(length, 'x'));
  }
  EXPECT_EQ(Read(handle, 64), Bytes(63, 'x'));
  ASSERT_EQ(FT_SetTimeouts(handle, 0, 0), FT_OK);
  std::thread late([&] {
    std::this_thread::sleep_for(300ms);
    peer.Send("late");
  });
  EXPECT_EQ(Read(handle, 4), (Bytes{'l', 'a', 't', 'e'}));
  late.join();
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtIoTest, ArgumentsAndHandles) {
  Plug();
  FT_HANDLE const handle = Open();
  std::uint8_t byte = 0;
  DWORD count = 5;
  EXPECT_EQ(FT_Read(handle, nullptr, 1, &count), FT_INVALID_PARAMETER);
  EXPECT_EQ(FT_Write(handle, nullptr, 1, &count), FT_INVALID_PARAMETER);
  EXPECT_EQ(count, 5U);
  EXPECT_EQ(FT_Read(handle, &byte, 0, &count), FT_OK);
  EXPECT_EQ(count, 0U);
  count = 5;
  EXPECT_EQ(FT_Write(handle, &byte, 0, &count), FT_OK);  // the write lock is free again
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(FT_GetLatencyTimer(handle, &byte), FT_NOT_SUPPORTED);
  EXPECT_EQ(FT_Close(handle), FT_OK);
  for (FT_HANDLE const wrong : {FT_HANDLE{nullptr}, handle, static_cast<FT_HANDLE>(&byte)}) {
    EXPECT_THAT((std::array{FT_Read(wrong, &byte, 1, &count), FT_Write(wrong, &byte, 1, &count),
                            FT_SetTimeouts(wrong, 1, 1), FT_Purge(wrong, 1), FT_GetDriverVersion(wrong, &count),
                            FT_SetBaudRate(wrong, 9600), FT_Close(wrong)}),
                testing::Each(FT_INVALID_HANDLE));
  }
}

TEST_F(FtIoTest, ALongStreamArrivesWholeInReadsOfEverySizeAndAFullBufferHoldsItBack) {
  constexpr std::size_t kBuffer = 65536;
  for (const bool highSpeed : {false, true}) {
    CountingPeer peer;
    auto& chip = Plug({.highSpeed = highSpeed}, {&peer});
    FT_HANDLE const handle = Open();
    EXPECT_TRUE(Eventually([&] { return Queued(handle) == kBuffer; }));
    std::this_thread::sleep_for(50ms);
    EXPECT_LT(peer.Sent(), kBuffer + 5 * 4096U);
    std::mt19937 random(3);
    std::uint64_t at = FirstOfStream(handle);
    // Requests of one packet to the whole of the buffer; every fourth read asks for more than that.
    for (const ULONG request : {64U, 4096U, 1088U, 65536U}) {
      ASSERT_EQ(FT_SetUSBParameters(handle, request, 0), FT_OK);
      for (int round = 0; round < 20; ++round) {
        const std::size_t length = round % 4 == 3 ? 70000 + random() % 100000 : 1 + random() % 10000;
        ASSERT_EQ(Read(handle, length), Counted(length, at)) << request << " at " << at;
        at += length;
      }
    }
    EXPECT_TRUE(Eventually([&] { return Queued(handle) == kBuffer; }));
    EXPECT_EQ(FT_Close(handle), FT_OK);
    Unplug(chip);
  }
}

TEST_F(FtIoTest, PurgeDropsWhatItsBitsNameAndItsSixthRequestDecides) {
  LoopbackPeer peer;
  auto& chip = Plug({.repliesAtOnce = true}, {&peer});
  FT_HANDLE const handle = Open(0, 1);
  // Mask, number of the request that fails, status, bytes kept, values of the requests that succeeded.
  for (const auto& [mask, failing, status, kept, values] :
       std::vector<std::tuple<DWORD, std::uint64_t, FT_STATUS, DWORD, std::string>>{
           {0, 0, FT_OK, 200, ""},
           {0xFFFFFFFC, 0, FT_OK, 200, ""},
           {2, 0, FT_OK, 200, "2"},
           {3, 0, FT_OK, 0, "1111112"},
           {1, 1, FT_OK, 0, "11111"},
           {3, 6, FT_IO_ERROR, 200, "11111"}}) {
    Write(handle, Bytes(200));
    ASSERT_TRUE(Eventually([&] { return Queued(handle) == 200; }));
    Requests(chip);
    mBus.SetFault({.effect = UsbFault::Effect::kCompletionFails, .operation = failing, .kinds = UsbFault::kControl});
    EXPECT_EQ(FT_Purge(handle, mask), status);
    std::string sent;
    for (const std::string& request : Requests(chip)) {
      sent += request.substr(2, request.find('@') - 2);
    }
    EXPECT_EQ(sent, values);
    EXPECT_EQ(Queued(handle), kept);
    Read(handle, 201);  // whatever is left
  }
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtIoTest, WritesOfAnySizeComeBackOnTwoDevicesAndNothingOlderThanAPurge) {
  std::array<LoopbackPeer, 2> peers;
  Plug({.repliesAtOnce = true}, {&peers[0]});
  Plug({.highSpeed = true, .repliesAtOnce = true}, {&peers[1]});
  mBus.SetCompletionDelay(50us);
  const auto echo = [](int device) {
    FT_HANDLE const handle = Open(device);
    std::mt19937 random(static_cast<unsigned>(device));
    for (int round = 0; round < 150; ++round) {
      Write(handle, Bytes(1 + random() % 2000, 0xEE));
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 400));
      ASSERT_EQ(FT_Purge(handle, FT_PURGE_RX), FT_OK);
      const Bytes wanted = Counted(round == 50 ? 200'000 : 1 + random() % 3000, random());
      ASSERT_NO_FATAL_FAILURE(Write(handle, wanted));
      ASSERT_EQ(Read(handle, wanted.size()), wanted) << "round " << round;
    }
    EXPECT_EQ(FT_Close(handle), FT_OK);
  };
  std::thread second(echo, 1);
  echo(0);
  second.join();
}

}  // namespace
