// Reading, writing and purging through the FT_* functions, on the virtual USB bus.
#include <algorithm>
#include <atomic>
#include <random>
#include <span>
#include <thread>

#include "FtBusFixture.h"

using namespace std::chrono_literals;

namespace {

/// What a peer sends from a place of its stream on, for up to 256 KiB.
const std::uint8_t* Stream(std::uint64_t at) {
  static const auto bytes = [] {
    std::vector<std::uint8_t> all(CountingPeer::kPeriod + 0x40000);
    CountingPeer().ToHost(all);
    return all;
  }();
  return bytes.data() + at % CountingPeer::kPeriod;
}

/// Sends and expects the stream, in bursts of random length, so that packets have random lengths too.
class BurstPeer : public ISerialPeer {
 public:
  void FromHost(std::span<const std::uint8_t> bytes) override {
    mIntact = mIntact && std::equal(bytes.begin(), bytes.end(), Stream(mReceived));
    mReceived += bytes.size();
  }

  std::size_t ToHost(std::span<std::uint8_t> buffer) override {
    const std::size_t wanted = mRandom() % 4 == 0 ? 1 + mRandom() % 600 : 510 + mRandom() % 3600;
    const std::size_t length = std::min(buffer.size(), wanted);
    std::copy_n(Stream(mSent), length, buffer.begin());
    mSent += length;
    return length;
  }

  std::atomic<bool> mIntact{true};
  std::atomic<std::uint64_t> mSent{0};

 private:
  std::mt19937 mRandom{7};
  std::uint64_t mReceived = 0;
};

class FtIoTest : public corvane::FtBusTest {
 protected:
  static Bytes Counted(std::size_t length, std::uint64_t from) { return {Stream(from), Stream(from) + length}; }
};

TEST_F(FtIoTest, ReadEndsAtItsTimeoutWithWhatThereIs) {
  ScriptedPeer peer;
  auto& chip = Plug({}, {&peer});
  FT_HANDLE const handle = Open(0, 100);
  const auto start = Clock::now();
  EXPECT_TRUE(Read(handle, 1).empty());
  EXPECT_GE(Clock::now() - start, 100ms);
  peer.Send("abc");
  chip.LookAtPeers();
  EXPECT_EQ(Read(handle, 5), (Bytes{'a', 'b', 'c'}));
  // Each packet begins with two bytes that are no data, whatever its length.
  for (const std::size_t length : {0U, 1U, 2U, 3U, 64U}) {
    chip.QueueRawPacket(0, Bytes(length, 'x'));
  }
  EXPECT_EQ(Read(handle, 64), Bytes(63, 'x'));
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtIoTest, StreamsPassWholeBothWaysInRequestsOfEverySizeAndAFullBufferHoldsOneBack) {
  constexpr std::size_t kUnderWay = 5 * std::size_t{4096};
  constexpr int kRounds = corvane::kSanitized ? 120 : 600;  // over a hundred megabytes each way
  for (const bool highSpeed : {false, true}) {
    BurstPeer peer;
    auto& chip = Plug({.highSpeed = highSpeed, .repliesAtOnce = true}, {&peer});
    FT_HANDLE const handle = Open();
    AwaitQueued(handle, kReceiveBuffer);
    std::this_thread::sleep_for(50ms);
    EXPECT_LT(peer.mSent, kReceiveBuffer + kUnderWay);
    std::mt19937 random(3);
    // The peer talks before the device is opened, whose reset drops that; so the stream begins anywhere.
    const Bytes first = Read(handle, 1);
    ASSERT_EQ(first.size(), 1U);
    std::uint64_t at = first[0] + std::uint64_t{1};
    std::atomic<bool> done{false};
    std::thread writer([&] {
      std::mt19937 lengths(5);
      for (std::uint64_t sent = 0; !done && !HasFailure();) {
        const std::size_t length = 1 + lengths() % 3000;
        Write(handle, Counted(length, sent));
        sent += length;
      }
    });
    // Requests of one packet to the whole of the buffer; every fourth read asks for more than that.
    for (const ULONG request : {64U, 4096U, 1088U, 65536U}) {
      EXPECT_EQ(FT_SetUSBParameters(handle, request, 0), FT_OK);
      for (int round = 0; round < kRounds && !HasFailure(); ++round) {
        const std::size_t length = round % 4 == 3 ? 70000 + random() % 100000 : 1 + random() % 10000;
        EXPECT_EQ(Read(handle, length), Counted(length, at)) << request << " at " << at;
        at += length;
      }
    }
    done = true;
    writer.join();
    EXPECT_TRUE(peer.mIntact);
    EXPECT_EQ(FT_Close(handle), FT_OK);
    Unplug(chip);
  }
}

TEST_F(FtIoTest, PurgeDropsWhatItsBitsNameAndItsSixthRequestDecides) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 1);
  struct Case {
    DWORD mask;
    std::uint64_t failing;  ///< number of the request that fails; 0 for none
    FT_STATUS status;
    DWORD kept;
    std::string requests;  ///< that succeeded
  };
  const std::string five = "purge-rx@0, purge-rx@0, purge-rx@0, purge-rx@0, purge-rx@0";
  for (const Case& each : {
           Case{~(FT_PURGE_RX | FT_PURGE_TX), 0, FT_OK, 200, ""},
           Case{FT_PURGE_TX, 0, FT_OK, 200, "purge-tx@0"},
           Case{FT_PURGE_RX | FT_PURGE_TX, 0, FT_OK, 0, five + ", purge-rx@0, purge-tx@0"},
           Case{FT_PURGE_RX, 1, FT_OK, 0, five},
           Case{FT_PURGE_RX | FT_PURGE_TX, 6, FT_IO_ERROR, 200, five},
       }) {
    Write(handle, Bytes(200));
    AwaitQueued(handle, 200);
    Requests(chip);
    mBus.SetFault(
        {.effect = UsbFault::Effect::kCompletionFails, .operation = each.failing, .kinds = UsbFault::kControl});
    EXPECT_EQ(FT_Purge(handle, each.mask), each.status);
    EXPECT_EQ(Requests(chip), each.requests);
    EXPECT_EQ(Queued(handle), each.kept);
    Read(handle, 201);  // whatever is left
  }
}

TEST_F(FtIoTest, WritesOfAnySizeComeBackOnTwoDevicesAndNothingOlderThanAPurge) {
  PlugEcho();
  PlugEcho({.highSpeed = true});
  mBus.SetCompletionDelay(50us);
  const auto echo = [](FT_HANDLE handle, unsigned seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < 150; ++round) {
      Write(handle, Bytes(1 + random() % 2000, 0xEE));
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 400));
      ASSERT_EQ(FT_Purge(handle, FT_PURGE_RX), FT_OK);
      const Bytes wanted = Counted(round == 50 ? 200'000 : 1 + random() % 3000, random());
      ASSERT_NO_FATAL_FAILURE(Write(handle, wanted));
      ASSERT_EQ(Read(handle, wanted.size()), wanted) << "round " << round;
    }
  };
  std::thread second(echo, Open(1), 1);
  echo(Open(0), 0);
  second.join();
}

}  // namespace
