// Events, held reading and port resets through the FT_* functions, on the virtual USB bus.
#include <pthread.h>

#include <array>
#include <cerrno>
#include <future>

#include "FtBusFixture.h"

using namespace std::chrono_literals;

namespace {

class FtEventTest : public corvane::FtBusTest {
 protected:
  static DWORD Taken(FT_HANDLE handle) {
    DWORD events = 0;
    EXPECT_EQ(FT_GetEventStatus(handle, &events), FT_OK);
    return events;
  }

  static DWORD Awaited(FT_HANDLE handle, FT_STATUS status = FT_OK) {
    DWORD events = 99;
    EXPECT_EQ(FT_WaitOnMask(handle, &events), status);
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

TEST_F(FtEventTest, EventsAreRaisedTakenAndWaitedFor) {
  auto& chip = PlugEcho();
  FT_HANDLE const handle = Open(0, 60);
  EXPECT_EQ(Awaited(handle), 0U);  // at once: nothing is asked for
  Taken(handle);

  // Received bytes, until they are read or purged.
  std::array<DWORD, 3> status{};
  for (const bool read : {true, false}) {
    Write(handle, {1, 2});
    AwaitQueued(handle, 2);
    EXPECT_EQ(FT_GetStatus(handle, &status[0], &status[1], &status[2]), FT_OK);
    EXPECT_EQ(status, (std::array<DWORD, 3>{2, 0, FT_EVENT_RXCHAR}));
    EXPECT_TRUE(read ? Read(handle, 2).size() == 2 : FT_Purge(handle, FT_PURGE_RX) == FT_OK);
    EXPECT_EQ(Taken(handle), 0U);
  }

  ASSERT_EQ(FT_SetWaitMask(handle, FT_EVENT_MODEM_STATUS | FT_EVENT_TX_EMPTY), FT_OK);
  const auto begin = Clock::now();
  EXPECT_EQ(Awaited(handle), 0U);
  EXPECT_GE(Clock::now() - begin, 60ms);
  FT_SetTimeouts(handle, 0, 0);
  chip.SetModemStatus(0, FT_MODEM_RI, FT_LINE_FRAMING >> 8);
  EXPECT_EQ(Awaited(handle), FT_EVENT_MODEM_STATUS);
  EXPECT_EQ(Taken(handle), FT_EVENT_LINE_STATUS);
  Write(handle, {3});
  EXPECT_EQ(Awaited(handle), FT_EVENT_TX_EMPTY);

  // A new mask and an unplug reach a call that waits.
  auto waiting = std::async(std::launch::async, Awaited, handle, FT_OK);
  EXPECT_EQ(waiting.wait_for(150ms), std::future_status::timeout);
  ASSERT_EQ(FT_SetWaitMask(handle, 0), FT_OK);
  EXPECT_EQ(waiting.get(), 0U);
  ASSERT_EQ(FT_SetWaitMask(handle, FT_EVENT_MODEM_STATUS), FT_OK);
  waiting = std::async(std::launch::async, Awaited, handle, FT_IO_ERROR);
  EXPECT_EQ(waiting.wait_for(50ms), std::future_status::timeout);
  Unplug(chip);
  EXPECT_EQ(waiting.wait_for(1s), std::future_status::ready);
}

TEST_F(FtEventTest, TheHostsEventIsSignalledWithoutEverWaitingForItsMutex) {
  HostEvent event;
  auto& chip = PlugEcho();
  FT_HANDLE handle = Open(0, 1000);
  Write(handle, {1});
  AwaitQueued(handle, 1);
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_RXCHAR | FT_EVENT_MODEM_STATUS, event.Get()), FT_OK);
  EXPECT_TRUE(event.Await());  // was there already
  chip.SetModemStatus(0, FT_MODEM_DCD, 0);
  EXPECT_TRUE(event.Await());
  // The host holds its mutex through everything else, then hears of it.
  event.Lock();
  Write(handle, Bytes(3000));
  EXPECT_EQ(Read(handle, 3001).size(), 3001U);
  EXPECT_EQ(event.Get()->set, 0);
  event.Unlock();
  EXPECT_TRUE(event.Await());
  // A full buffer does not keep the signal back.
  Write(handle, Bytes(100'000));
  EXPECT_TRUE(event.Await());
  EXPECT_EQ(Read(handle, 100'000).size(), 100'000U);
  EXPECT_TRUE(event.Await());
  ASSERT_EQ(FT_SetEventNotification(handle, 0, nullptr), FT_OK);
  Write(handle, {1});
  EXPECT_EQ(Read(handle, 1).size(), 1U);
  EXPECT_EQ(event.Get()->set, 0);
  // A waiting host finds out about a close, and a failure however late it lets go of its mutex or asks.
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_TX_EMPTY, event.Get()), FT_OK);
  EXPECT_EQ(FT_Close(handle), FT_OK);
  EXPECT_TRUE(event.Await());
  handle = Open();
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_TX_EMPTY, event.Get()), FT_OK);
  event.Lock();
  Unplug(chip);
  std::this_thread::sleep_for(200ms);
  event.Unlock();
  EXPECT_TRUE(event.Await());
  event.Lock();
  ASSERT_EQ(FT_SetEventNotification(handle, FT_EVENT_TX_EMPTY, event.Get()), FT_OK);
  event.Unlock();
  EXPECT_TRUE(event.Await());
  event.Lock();
  EXPECT_EQ(FT_Close(handle), FT_OK);
  event.Unlock();
}

TEST_F(FtEventTest, TheChannelsOfAChipKeepOutOfEachOthersWayAndBearAPortReset) {
  auto& chip = PlugEcho({.release = 0x0500, .interfaces = 2});
  mBus.BindKernelDriver(chip, 0, "serial");
  mBus.BindKernelDriver(chip, 1, "serial");
  FT_HANDLE const first = Open(0, 200);
  // Held reading keeps bytes in the chip.
  ASSERT_EQ(FT_StopInTask(first), FT_OK);
  EXPECT_TRUE(Eventually([&] { return mBus.PendingTransfers() == 0; }));
  Write(first, {1, 2, 3});
  EXPECT_TRUE(Read(first, 3).empty());
  EXPECT_EQ(Requests(chip), "0:0@0 3:16696@1 4:8@1 2:0@1");
  FT_HANDLE const second = Open(1);
  EXPECT_EQ(Requests(chip), "0:1@2 0:2@2 3:16696@2 4:8@2 2:0@2");  // no reset, which the first would feel
  ASSERT_EQ(FT_RestartInTask(first), FT_OK);
  EXPECT_EQ(Read(first, 3), (Bytes{1, 2, 3}));

  // A full buffer does not hold a reset up, nor a write that the chip never takes.
  Write(second, Bytes(150'000));
  AwaitQueued(second, 65536);
  for (auto* const reset : {FT_ResetPort, FT_CyclePort}) {
    for (FT_HANDLE const handle : {first, second}) {
      ASSERT_EQ(FT_SetLatencyTimer(first, 40), FT_OK);
      ASSERT_EQ(FT_SetDataCharacteristics(second, 7, FT_STOP_BITS_2, FT_PARITY_EVEN), FT_OK);
      Write(first, {4, 5});
      AwaitQueued(first, 2);
      chip.Hold(BridgeChip::OutEndpoint(0), true);
      auto write = std::async(std::launch::async, [first] { Write(first, {1}, FT_IO_ERROR); });
      EXPECT_EQ(write.wait_for(50ms), std::future_status::timeout);
      const auto begin = Clock::now();
      ASSERT_EQ(reset(handle), FT_OK);
      EXPECT_LT(Clock::now() - begin, 1s);
      write.get();
      chip.Hold(BridgeChip::OutEndpoint(0), false);
      Write(first, {6, 7});
      EXPECT_EQ(Read(first, 4), (Bytes{4, 5, 6, 7}));
      EXPECT_EQ(chip.Settings(0).latency, 16);
      EXPECT_EQ(mBus.BoundDriver(chip, 0) + mBus.BoundDriver(chip, 1), "usbfsusbfs");
      Requests(chip);
      EXPECT_EQ(FT_SetBreakOn(second), FT_OK);
      EXPECT_EQ(Requests(chip), "4:16392@2");  // the format of power-on
    }
  }
  // A channel whose interface is lost by it has failed.
  mBus.SetClaimError(chip, EBUSY);
  EXPECT_EQ(FT_ResetPort(first), FT_IO_ERROR);
  mBus.SetClaimError(chip, 0);
  EXPECT_TRUE(Read(second, 1, FT_IO_ERROR).empty());
}

}  // namespace
