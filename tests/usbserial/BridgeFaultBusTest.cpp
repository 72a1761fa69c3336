// Unplugging, failing transfers, and calls that come together, through the FT_* functions on the virtual USB bus: every
// call ends in bounded time, and nothing is left behind.
#include <dlfcn.h>
#include <libusb.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <functional>
#include <future>
#include <set>

#include "FtBusFixture.h"

using namespace std::chrono_literals;
using corvane::Bytes;
using corvane::Clock;
using corvane::Eventually;

namespace {

std::atomic<bool> gRefuseReads{false};
std::atomic<bool> gLoseCancels{false};

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The leak checker's, where there is one.
extern "C" {
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}

// In the place of libusb's own, for libusb too: what the virtual bus cannot produce.
__attribute__((visibility("default"))) int libusb_submit_transfer(libusb_transfer* transfer) {
  static auto* const real = Real<decltype(libusb_submit_transfer)>("libusb_submit_transfer");
  return gRefuseReads && (transfer->endpoint & 0x80) != 0 ? LIBUSB_ERROR_OTHER : real(transfer);
}

__attribute__((visibility("default"))) int libusb_cancel_transfer(libusb_transfer* transfer) {
  static auto* const real = Real<decltype(libusb_cancel_transfer)>("libusb_cancel_transfer");
  return gLoseCancels ? 0 : real(transfer);
}

namespace {

/// What this thread allocates meanwhile may be lost on purpose.
class LossExpected {
 public:
  LossExpected() {
    if (__lsan_disable != nullptr) {
      __lsan_disable();
    }
  }
  ~LossExpected() {
    if (__lsan_enable != nullptr) {
      __lsan_enable();
    }
  }
  LossExpected(const LossExpected&) = delete;
  LossExpected& operator=(const LossExpected&) = delete;
};

class FtFaultTest : public corvane::FtBusTest {
 protected:
  static std::future<FT_STATUS> Start(FT_STATUS (*call)(FT_HANDLE), FT_HANDLE handle) {
    auto result = std::async(std::launch::async, call, handle);
    EXPECT_EQ(result.wait_for(50ms), std::future_status::timeout);
    return result;
  }

  static FT_STATUS ReadOne(FT_HANDLE handle) {
    std::uint8_t byte = 0;
    DWORD received = 0;
    return FT_Read(handle, &byte, 1, &received);
  }

  static FT_STATUS WriteOne(FT_HANDLE handle) {
    std::uint8_t byte = 0;
    DWORD written = 0;
    return FT_Write(handle, &byte, 1, &written);
  }
};

TEST_F(FtFaultTest, AnUnplugAndACloseEndReadsAndWritesOfOtherThreads) {
  LoopbackPeer peer;
  auto& chip = Plug({}, {&peer});
  for (const bool unplug : {false, true}) {
    FT_HANDLE const handle = Open(0, 0, 0);
    chip.Hold(BridgeChip::OutEndpoint(0), true);
    std::array<std::future<FT_STATUS>, 3> calls{Start(ReadOne, handle), Start(WriteOne, handle),
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
    EXPECT_EQ(mBus.OpenNodes(), 0U);
  }
}

TEST_F(FtFaultTest, OnlyOneOfManyClosesWinsAndNoHandleComesTwice) {
  Plug();
  std::set<FT_HANDLE> handles;
  for (int round = 0; round < 20; ++round) {
    FT_HANDLE const handle = Open();
    EXPECT_TRUE(handles.insert(handle).second);
    std::array<std::future<FT_STATUS>, 4> closes;
    std::ranges::generate(closes, [&] { return std::async(std::launch::async, FT_Close, handle); });
    EXPECT_EQ(std::ranges::count_if(closes, [](auto& close) { return close.get() == FT_OK; }), 1);
  }
}

TEST_F(FtFaultTest, AFailingReadRequestStopsTheReadingAlsoWithBytesWaiting) {
  using Effect = UsbFault::Effect;
  for (const auto& [effect, error] :
       {std::pair{Effect::kCompletionFails, EPROTO}, {Effect::kSubmitFails, EIO}, {Effect::kUnplug, ENODEV}}) {
    LoopbackPeer peer;
    auto& chip = Plug({.repliesAtOnce = true}, {&peer});
    FT_HANDLE const handle = Open(0, 0);
    Write(handle, {1, 2});
    ASSERT_TRUE(Eventually([&] { return Queued(handle) == 2; }));
    mBus.SetFault({.effect = effect, .kinds = UsbFault::kBulkIn, .error = error});
    EXPECT_TRUE(Eventually([&] { return mBus.FaultHits() > 0; }));
    mBus.ClearFault();
    EXPECT_TRUE(Eventually([&] { return ReadOne(handle) == FT_IO_ERROR; }));
    EXPECT_EQ(FT_Close(handle), FT_OK);
    Unplug(chip);
  }
}

TEST_F(FtFaultTest, ReadsThatStallOrAreRefusedForAWhileTakeNoCoreAndGoOn) {
  LoopbackPeer peer;
  auto& chip = Plug({.repliesAtOnce = true}, {&peer});
  FT_HANDLE const handle = Open(0, 400);
  const UsbFault stalls{
      .effect = UsbFault::Effect::kCompletionFails, .kinds = UsbFault::kBulkIn, .fromThenOn = true, .error = EPIPE};
  for (const bool refuse : {false, true}) {
    chip.Stall(BridgeChip::InEndpoint(0));  // once
    Write(handle, {1, 2, 3});
    EXPECT_EQ(Read(handle, 3), (Bytes{1, 2, 3}));
    gRefuseReads = refuse;
    refuse ? mBus.ClearFault() : mBus.SetFault(stalls);
    const auto before = std::clock();
    EXPECT_TRUE(Read(handle, 1).empty());
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 8) << refuse;
    gRefuseReads = false;
    mBus.ClearFault();
    Write(handle, {4, 5});
    EXPECT_EQ(Read(handle, 2), (Bytes{4, 5}));
  }
  EXPECT_EQ(mBus.HurriedClears(chip), 0U);  // each halt was cleared with no request under way
  chip.Stall(BridgeChip::OutEndpoint(0));
  Write(handle, {7}, FT_IO_ERROR);
  Write(handle, {8});
  EXPECT_EQ(Read(handle, 1), (Bytes{8}));
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtFaultTest, AWriteThatTheDeviceDoesNotTakeEndsSoonAfterItsTimeoutEvenIfItsTransferIsLost) {
  const LossExpected loss;
  LoopbackPeer peer;
  auto& chip = Plug({.repliesAtOnce = true}, {&peer});
  FT_HANDLE handle = Open(0, 1000, 50);
  for (const bool lost : {false, true}) {
    chip.Hold(BridgeChip::OutEndpoint(0), true);
    gLoseCancels = lost;
    const auto start = Clock::now();
    Write(handle, {1, 1, 1}, FT_IO_ERROR);
    EXPECT_GE(Clock::now() - start, 50ms);
    EXPECT_LT(Clock::now() - start, 4s);
    gLoseCancels = false;
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
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtFaultTest, ACancelledThreadLeavesTheLibraryUsable) {
  LoopbackPeer peer;
  auto& chip = Plug({.repliesAtOnce = true}, {&peer});
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
  EXPECT_EQ(FT_Close(handle), FT_OK);
}

TEST_F(FtFaultTest, ManyThreadsMayDoEverythingAtOnce) {
  LoopbackPeer peer;
  auto& chip = Plug({.highSpeed = true, .repliesAtOnce = true}, {&peer});
  mBus.SetCompletionDelay(50us);
  for (const bool unplug : {false, false, true}) {
    FT_HANDLE const handle = Open(0, 5, 100);
    std::atomic<bool> stop{false};
    std::vector<std::jthread> threads;
    const auto repeat = [&](std::function<void(Bytes&, DWORD&)> call) {
      threads.emplace_back([&stop, call = std::move(call)] {
        Bytes bytes(700);
        for (DWORD count = 0; !stop;) {
          call(bytes, count);
        }
      });
    };
    repeat([handle](Bytes& bytes, DWORD& count) { FT_Write(handle, bytes.data(), 500, &count); });
    repeat([handle](Bytes& bytes, DWORD& count) { FT_Read(handle, bytes.data(), 700, &count); });
    repeat([handle](Bytes&, DWORD& count) {
      FT_Purge(handle, 3);
      FT_GetQueueStatus(handle, &count);
      FT_SetTimeouts(handle, 5, 100);
      FT_SetUSBParameters(handle, 4096, 0);
    });
    repeat([](Bytes&, DWORD& count) { EXPECT_EQ(FT_CreateDeviceInfoList(&count), FT_OK); });
    std::this_thread::sleep_for(300ms);
    if (unplug) {
      Unplug(chip);
    }
    EXPECT_EQ(FT_Close(handle), FT_OK);
    stop = true;
    threads.clear();
    EXPECT_EQ(mBus.OpenNodes(), 0U);
  }
}

}  // namespace
