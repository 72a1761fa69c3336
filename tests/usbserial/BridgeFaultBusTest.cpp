// Unplugging, failing transfers, and calls that come together, through the FT_* functions on the virtual USB bus: every
// call ends in bounded time, and nothing is left behind.
#include <malloc.h>
#include <pthread.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <future>
#include <utility>

#include "FtBusFixture.h"
#include "LibusbSeam.h"

using corvane::gLibusb;
using namespace std::chrono_literals;

// The leak checker's, where there is one: between them a thread may lose on purpose what it allocates.
// NOLINTBEGIN(bugprone-reserved-identifier): its names.
extern "C" {
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

class FtFaultTest : public corvane::FtBusTest {
 protected:
  static std::future<FT_STATUS> Start(FT_STATUS (*call)(FT_HANDLE), FT_HANDLE handle) {
    auto result = std::async(std::launch::async, call, handle);
    EXPECT_EQ(result.wait_for(150ms), std::future_status::timeout);  // it is under way, on a busy machine too
    return result;
  }

  static FT_STATUS ReadOne(FT_HANDLE handle) {
    std::uint8_t byte = 0;
    DWORD received = 0;
    return FT_Read(handle, &byte, 1, &received);
  }

  static FT_STATUS WaitOnMask(FT_HANDLE handle) {
    DWORD events = 0;
    return FT_WaitOnMask(handle, &events);
  }

  static FT_STATUS PurgeTransmit(FT_HANDLE handle) { return FT_Purge(handle, FT_PURGE_TX); }

  static FT_STATUS WriteOne(FT_HANDLE handle) {
    std::uint8_t byte = 0;
    DWORD written = 0;
    return FT_Write(handle, &byte, 1, &written);
  }
};

TEST_F(FtFaultTest, AnUnplugAndACloseEndReadsWritesAndWaitsOfOtherThreads) {
  auto& chip = PlugEcho();
  for (const bool unplug : {false, true}) {
    FT_HANDLE const handle = Open(0, 0, 0);
    chip.Hold(BridgeChip::OutEndpoint(0), true);
    ASSERT_EQ(FT_SetWaitMask(handle, FT_EVENT_MODEM_STATUS), FT_OK);
    std::array calls{Start(ReadOne, handle), Start(WaitOnMask, handle), Start(WriteOne, handle),
                     Start(WriteOne, handle)};  // which waits for the write lock
    if (unplug) {
      Unplug(chip);
    } else {
      EXPECT_EQ(FT_Close(handle), FT_OK);
    }
    for (auto& call : calls) {
      ASSERT_EQ(call.wait_for(1s), std::future_status::ready);
      EXPECT_EQ(call.get(), FT_IO_ERROR);
    }
    EXPECT_EQ(FT_Purge(handle, FT_PURGE_RX), unplug ? FT_IO_ERROR : FT_INVALID_HANDLE);
    EXPECT_EQ(FT_Close(handle), unplug ? FT_OK : FT_INVALID_HANDLE);
  }
}

TEST_F(FtFaultTest, ACloseEndsControlRequestsUnderWayAndThoseThatWaitForThem) {
  constexpr std::uint64_t requestsUnderWay = 2;  // a setting waits for the one before it, a question does not
  Plug();
  FT_HANDLE const handle = Open();
  mBus.SetCompletionDelay(5s);
  mBus.ForgetOperations();
  std::array calls{Start(FT_SetDtr, handle), Start(FT_SetBreakOn, handle), Start(PurgeTransmit, handle)};
  const auto begin = Clock::now();
  EXPECT_EQ(FT_Close(handle), FT_OK);
  EXPECT_LT(Clock::now() - begin, 4s);
  for (auto& call : calls) {
    EXPECT_EQ(call.get(), FT_IO_ERROR);
  }
  EXPECT_EQ(mBus.Operations(UsbFault::kControl), requestsUnderWay);
}

TEST_F(FtFaultTest, NothingOfATransferIsTouchedBehindItsCallback) {
  PlugEcho();
  gLibusb.holdBehindCallback = 10ms;  // it is freed meanwhile
  for (int round = 0; round < 3; ++round) {
    DWORD count = 0;
    EXPECT_EQ(FT_CreateDeviceInfoList(&count), FT_OK);
    FT_HANDLE const handle = Open();
    Write(handle, {1, 2, 3});
    EXPECT_EQ(Read(handle, 3), (Bytes{1, 2, 3}));
    EXPECT_EQ(FT_Purge(handle, FT_PURGE_TX), FT_OK);
    EXPECT_EQ(FT_Close(handle), FT_OK);
  }
  gLibusb.holdBehindCallback = 0ms;
}

TEST_F(FtFaultTest, AFullBufferCanBeReadAfterAnUnplugUntilAWriteFindsTheDeviceGone) {
  for (const bool write : {false, true}) {
    auto& chip = PlugEcho();
    FT_HANDLE const handle = Open(0, 500);
    Write(handle, Bytes(150'000, 5));
    AwaitQueued(handle, kReceiveBuffer);
    EXPECT_TRUE(Eventually([&] { return mBus.PendingTransfers() == 0; }));  // no read request tells of the unplug
    Unplug(chip);
    if (write) {
      Write(handle, {1}, FT_IO_ERROR);
      EXPECT_EQ(ReadOne(handle), FT_IO_ERROR);
    } else {
      EXPECT_EQ(Read(handle, kReceiveBuffer), Bytes(kReceiveBuffer, 5));
      EXPECT_TRUE(Eventually([&] { return ReadOne(handle) == FT_IO_ERROR; }));
    }
  }
}

TEST_F(FtFaultTest, AThousandOpeningsLeaveNothingBehind) {
  constexpr int kLaterRounds = 950;
  auto& chip = PlugEcho();
  FT_HANDLE last = nullptr;
  const auto rounds = [&](int count) {
    for (int round = 0; round < count; ++round) {
      FT_HANDLE handle = nullptr;
      ASSERT_EQ(FT_Open(0, &handle), FT_OK);
      ASSERT_NE(std::exchange(last, handle), handle);  // a handle does not come again
      Write(handle, {1});
      ASSERT_EQ(Read(handle, 1), (Bytes{1}));
      ASSERT_EQ(FT_Close(handle), FT_OK);
      chip.ForgetRequests();
    }
  };
  rounds(50);
  const auto descriptors = Entries("/proc/self/fd");
  const auto threads = Entries("/proc/self/task");
  const auto bytes = mallinfo2().uordblks;
  rounds(kLaterRounds);
  EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
  EXPECT_TRUE(Eventually([&] { return Entries("/proc/self/task") == threads; }));
  if (!corvane::kSanitized) {
    EXPECT_LT(mallinfo2().uordblks, bytes + kLaterRounds * sizeof(void*));
  }
}

TEST_F(FtFaultTest, AFailingReadRequestStopsTheReadingAlsoWithBytesWaiting) {
  using Effect = UsbFault::Effect;
  for (const auto& [effect, error] :
       {std::pair{Effect::kCompletionFails, EPROTO}, {Effect::kSubmitFails, EIO}, {Effect::kUnplug, ENODEV}}) {
    auto& chip = PlugEcho();
    FT_HANDLE const handle = Open(0, 0);
    Write(handle, {1, 2});
    AwaitQueued(handle, 2);
    mBus.SetFault({.effect = effect, .kinds = UsbFault::kBulkIn, .error = error});
    EXPECT_TRUE(Eventually([&] { return mBus.FaultHits() > 0; }));
    mBus.ClearFault();
    EXPECT_TRUE(Eventually([&] { return ReadOne(handle) == FT_IO_ERROR; }));
    EXPECT_EQ(FT_Close(handle), FT_OK);
    Unplug(chip);
  }
}

TEST_F(FtFaultTest, ReadsThatStallOrAreRefusedForAWhileTakeNoCoreAndGoOn) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 400);
  const UsbFault stalls{
      .effect = UsbFault::Effect::kCompletionFails, .kinds = UsbFault::kBulkIn, .fromThenOn = true, .error = EPIPE};
  for (const bool refuse : {false, true}) {
    chip.Stall(BridgeChip::InEndpoint(0));  // once
    Write(handle, {1, 2, 3});
    EXPECT_EQ(Read(handle, 3), (Bytes{1, 2, 3}));
    gLibusb.refuseReads = refuse;
    if (!refuse) {
      mBus.SetFault(stalls);
    }
    const auto before = std::clock();
    EXPECT_TRUE(Read(handle, 1).empty());
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 8) << refuse;
    gLibusb.refuseReads = false;
    mBus.ClearFault();
    Write(handle, {4, 5});
    EXPECT_EQ(Read(handle, 2), (Bytes{4, 5}));
  }
  EXPECT_EQ(mBus.HurriedClears(chip), 0U);  // each halt was cleared with no request under way
  chip.Stall(BridgeChip::OutEndpoint(0));
  Write(handle, {7}, FT_IO_ERROR);
  Write(handle, {8});
  EXPECT_EQ(Read(handle, 1), (Bytes{8}));
}

TEST_F(FtFaultTest, AWriteThatTheDeviceDoesNotTakeEndsSoonAfterItsTimeoutEvenIfItsTransferIsLost) {
  if (__lsan_disable != nullptr) {
    __lsan_disable();
  }
  auto& chip = PlugEcho();
  FT_HANDLE handle = Open(0, 1000, 50);
  for (const bool lost : {false, true}) {
    chip.Hold(BridgeChip::OutEndpoint(0), true);
    gLibusb.loseCancels = lost;
    const auto start = Clock::now();
    Write(handle, {1, 1, 1}, FT_IO_ERROR);
    EXPECT_GE(Clock::now() - start, 50ms);
    EXPECT_LT(Clock::now() - start, 4s);
    // A port is not reset under requests that do not come back.
    chip.Hold(BridgeChip::InEndpoint(0), lost);
    EXPECT_EQ(FT_ResetPort(handle), lost ? FT_IO_ERROR : FT_OK);
    gLibusb.loseCancels = false;
    chip.Hold(BridgeChip::InEndpoint(0), false);
    chip.Hold(BridgeChip::OutEndpoint(0), false);
    if (lost) {
      Write(handle, {2}, FT_IO_ERROR);
      EXPECT_EQ(FT_Close(handle), FT_OK);
      handle = Open();
    }
    EXPECT_EQ(FT_Purge(handle, FT_PURGE_RX), FT_OK);
    Write(handle, {4, 5});
    EXPECT_EQ(Read(handle, 2), (Bytes{4, 5}));
  }
  if (__lsan_enable != nullptr) {
    __lsan_enable();
  }
}

TEST_F(FtFaultTest, ACancelledThreadLeavesTheLibraryUsable) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 0, 200);
  for (const bool write : {false, true}) {
    chip.Hold(BridgeChip::OutEndpoint(0), write);
    std::thread thread(write ? WriteOne : ReadOne, handle);
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(pthread_cancel(thread.native_handle()), 0);
    thread.join();
    chip.Hold(BridgeChip::OutEndpoint(0), false);
    Write(handle, {1, 2, 3});
    EXPECT_EQ(Read(handle, 3), (Bytes{1, 2, 3}));
  }
}

}  // namespace
