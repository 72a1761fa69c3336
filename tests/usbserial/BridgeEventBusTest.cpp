// Events, held reading and port resets through the FT_* functions, on the virtual USB bus.
#include <pthread.h>

#include <cerrno>
#include <future>

#include "FtBusFixture.h"

using namespace std::chrono_literals;

namespace {

class FtEventTest : public corvane::FtBusTest {
 protected:
  static constexpr DWORD kNothing = 0;

  struct Status {
    DWORD received = kUntouched;
    DWORD unsent = kUntouched;
    DWORD events = kUntouched;
  };
  static Status StatusOf(FT_HANDLE handle) {
    Status status;
    EXPECT_EQ(FT_GetStatus(handle, &status.received, &status.unsent, &status.events), FT_OK);
    return status;
  }

  static DWORD Taken(FT_HANDLE handle) {
    DWORD events = 0;
    EXPECT_EQ(FT_GetEventStatus(handle, &events), FT_OK);
    return events;
  }

  static DWORD Awaited(FT_HANDLE handle) {
    DWORD events = kUntouched;
    EXPECT_EQ(FT_WaitOnMask(handle, &events), FT_OK);
    return events;
  }
};

/// The host's event, waited for as a host does.
class HostEvent {
 public:
  FT_EVENT* Get() { return &mEvent; }
  void Lock() { pthread_mutex_lock(&mEvent.mutex); }
  void Unlock() { pthread_mutex_unlock(&mEvent.mutex); }

  bool Await() {
    timespec end{};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += 2;
    Lock();
    while (mEvent.set == 0 && pthread_cond_timedwait(&mEvent.condition, &mEvent.mutex, &end) == 0) {
    }
    const bool came = mEvent.set != 0;
    mEvent.set = 0;
    Unlock();
    return came;
  }

 private:
  FT_EVENT mEvent{PTHREAD_COND_INITIALIZER, PTHREAD_MUTEX_INITIALIZER, 0};
};

TEST_F(FtEventTest, ReceivedBytesAreAnEventUntilTheyAreReadOrPurged) {
  PlugEcho();
  FT_HANDLE const handle = Open();
  const auto expectOneEvent = [&] {
    Write(handle, {1, 2});
    AwaitQueued(handle, 2);
    const Status status = StatusOf(handle);
    EXPECT_EQ(status.received, 2U);
    EXPECT_EQ(status.unsent, 0U);
    EXPECT_EQ(status.events, FT_EVENT_RXCHAR);
  };
  Taken(handle);
  expectOneEvent();
  EXPECT_EQ(Read(handle, 2), (Bytes{1, 2}));
  EXPECT_EQ(Taken(handle), kNothing);
  expectOneEvent();
  EXPECT_EQ(FT_Purge(handle, FT_PURGE_RX), FT_OK);
  EXPECT_EQ(Taken(handle), kNothing);
}

TEST_F(FtEventTest, AWaitEndsAtOnceForNothingAndAtItsTimeoutOrWithAnEventOfItsMask) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 60);
  EXPECT_EQ(Awaited(handle), kNothing);
  Taken(handle);
  ASSERT_EQ(FT_SetWaitMask(handle, FT_EVENT_MODEM_STATUS | FT_EVENT_TX_EMPTY), FT_OK);
  const auto begin = Clock::now();
  EXPECT_EQ(Awaited(handle), kNothing);
  EXPECT_GE(Clock::now() - begin, 60ms);
  FT_SetTimeouts(handle, 0, 0);
  chip.SetModemStatus(0, FT_MODEM_RI, FT_LINE_FRAMING >> 8);
  EXPECT_EQ(Awaited(handle), FT_EVENT_MODEM_STATUS);
  EXPECT_EQ(Taken(handle), FT_EVENT_LINE_STATUS);
  Write(handle, {3});
  EXPECT_EQ(Awaited(handle), FT_EVENT_TX_EMPTY);
}

TEST_F(FtEventTest, ANewMaskReachesACallThatWaits) {
  PlugEcho();
  FT_HANDLE const handle = Open(0, 0);
  ASSERT_EQ(FT_SetWaitMask(handle, FT_EVENT_MODEM_STATUS), FT_OK);
  auto waiting = std::async(std::launch::async, Awaited, handle);
  EXPECT_EQ(waiting.wait_for(150ms), std::future_status::timeout);
  ASSERT_EQ(FT_SetWaitMask(handle, 0), FT_OK);
  EXPECT_EQ(waiting.get(), kNothing);
}

TEST_F(FtEventTest, TheHostsEventIsSignalledWithoutEverWaitingForItsMutex) {
  constexpr std::size_t tooMuch = 100'000;  // for the receive buffer
  HostEvent event;
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 1000);
  Write(handle, {1});
  AwaitQueued(handle, 1);
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_RXCHAR | FT_EVENT_MODEM_STATUS, event.Get()), FT_OK);
  EXPECT_TRUE(event.Await()) << "was there already";
  chip.SetModemStatus(0, FT_MODEM_DCD, 0);
  EXPECT_TRUE(event.Await());
  event.Lock();
  Write(handle, Bytes(3000));
  EXPECT_EQ(Read(handle, 1), (Bytes{1}));
  EXPECT_EQ(Read(handle, 3000), Bytes(3000));
  EXPECT_EQ(event.Get()->set, 0) << "while the host holds the mutex";
  event.Unlock();
  EXPECT_TRUE(event.Await());
  Write(handle, Bytes(tooMuch));
  EXPECT_TRUE(event.Await()) << "with a full buffer";
  EXPECT_EQ(Read(handle, tooMuch), Bytes(tooMuch));
  EXPECT_TRUE(event.Await());
  ASSERT_EQ(FT_SetEventNotification(handle, 0, nullptr), FT_OK);
  Write(handle, {1});
  EXPECT_EQ(Read(handle, 1), (Bytes{1}));
  EXPECT_EQ(event.Get()->set, 0);
}

TEST_F(FtEventTest, AWaitingHostFindsOutAboutACloseAndAFailureHoweverLateItAsks) {
  HostEvent event;
  auto& chip = PlugEcho();
  FT_HANDLE handle = Open();
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_TX_EMPTY, event.Get()), FT_OK);
  EXPECT_EQ(FT_Close(handle), FT_OK);
  EXPECT_TRUE(event.Await()) << "of a close";
  handle = Open();
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_TX_EMPTY, event.Get()), FT_OK);
  event.Lock();
  Unplug(chip);
  std::this_thread::sleep_for(200ms);
  event.Unlock();
  EXPECT_TRUE(event.Await()) << "of a failure while it held its mutex";
  event.Lock();
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_TX_EMPTY, event.Get()), FT_OK);
  event.Unlock();
  EXPECT_TRUE(event.Await()) << "of a failure before it asked";
  event.Lock();
  EXPECT_EQ(FT_Close(handle), FT_OK);
  event.Unlock();
}

TEST_F(FtEventTest, HeldReadingKeepsBytesInTheChipWhichAnotherChannelLeavesThereAndNoticesAnUnplug) {
  auto& chip = PlugEcho({.release = 0x0500, .interfaces = 2});
  FT_HANDLE const first = Open(0, 200);
  EXPECT_EQ(Requests(chip), "reset@0, baud 4138@1, line 8@1, flow 0@1");
  ASSERT_EQ(FT_StopInTask(first), FT_OK);
  EXPECT_TRUE(Eventually([&] { return mBus.PendingTransfers() == 0; }));
  Write(first, {1, 2, 3});
  EXPECT_EQ(Read(first, 3), Bytes{});
  FT_HANDLE const second = Open(1);
  EXPECT_EQ(Requests(chip), "purge-rx@2, purge-tx@2, baud 4138@2, line 8@2, flow 0@2");
  ASSERT_EQ(FT_RestartInTask(first), FT_OK);
  EXPECT_EQ(Read(first, 3), (Bytes{1, 2, 3}));
  EXPECT_EQ(FT_Close(second), FT_OK);
  ASSERT_EQ(FT_StopInTask(first), FT_OK);
  EXPECT_TRUE(Eventually([&] { return mBus.PendingTransfers() == 0; }));
  ASSERT_EQ(FT_SetTimeouts(first, 0, 0), FT_OK);
  auto read = std::async(std::launch::async, [first] { return Read(first, 1, FT_IO_ERROR); });
  EXPECT_EQ(read.wait_for(150ms), std::future_status::timeout);
  Unplug(chip);
  EXPECT_EQ(read.wait_for(2s), std::future_status::ready);
}

/// Two channels of a chip whose port is reset.
class FtPortResetTest : public FtEventTest {
 protected:
  void SetUp() override {
    mChip = &PlugEcho({.release = 0x0500, .interfaces = 2});
    mBus.BindKernelDriver(*mChip, 0, "serial");
    mBus.BindKernelDriver(*mChip, 1, "serial");
    mFirst = Open(0);
    mSecond = Open(1);
  }

  BridgeChip* mChip = nullptr;
  FT_HANDLE mFirst = nullptr;
  FT_HANDLE mSecond = nullptr;
};

TEST_F(FtPortResetTest, EndsAWriteThatTheChipNeverTakesAndKeepsReceivedBytes) {
  Write(mSecond, Bytes(150'000));
  AwaitQueued(mSecond, kReceiveBuffer);  // which does not hold a reset up
  for (auto* const reset : {FT_ResetPort, FT_CyclePort}) {
    for (FT_HANDLE const handle : {mFirst, mSecond}) {
      Write(mFirst, {4, 5});
      AwaitQueued(mFirst, 2);
      mChip->Hold(BridgeChip::OutEndpoint(0), true);
      auto write = std::async(std::launch::async, [this] { Write(mFirst, {1}, FT_IO_ERROR); });
      EXPECT_TRUE(Eventually([&] { return StatusOf(mFirst).unsent == 1; }));
      const auto begin = Clock::now();
      ASSERT_EQ(reset(handle), FT_OK);
      EXPECT_LT(Clock::now() - begin, 1s);
      write.get();
      EXPECT_EQ(StatusOf(mFirst).unsent, 0U);
      mChip->Hold(BridgeChip::OutEndpoint(0), false);
      Write(mFirst, {6, 7});
      EXPECT_EQ(Read(mFirst, 4), (Bytes{4, 5, 6, 7}));
    }
  }
}

TEST_F(FtPortResetTest, LeavesTheChipAsAfterPowerOnAndItsInterfacesTakenIfItCan) {
  ASSERT_EQ(FT_SetLatencyTimer(mFirst, 40), FT_OK);
  ASSERT_EQ(FT_SetDataCharacteristics(mSecond, FT_BITS_7, FT_STOP_BITS_2, FT_PARITY_EVEN), FT_OK);
  ASSERT_EQ(FT_ResetPort(mFirst), FT_OK);
  EXPECT_EQ(mChip->Settings(0).latency, BridgeChannel::kDefaultLatency);
  EXPECT_EQ(mBus.BoundDriver(*mChip, 0), "usbfs");
  EXPECT_EQ(mBus.BoundDriver(*mChip, 1), "usbfs");
  Requests(*mChip);
  EXPECT_EQ(FT_SetBreakOn(mSecond), FT_OK);
  EXPECT_EQ(Requests(*mChip), "line 4008@2") << "the format of power-on";
  // A channel whose interface is lost by it has failed.
  mBus.SetClaimError(*mChip, EBUSY);
  EXPECT_EQ(FT_ResetPort(mFirst), FT_IO_ERROR);
  mBus.SetClaimError(*mChip, 0);
  EXPECT_EQ(Read(mSecond, 1, FT_IO_ERROR), Bytes{});
}

}  // namespace
