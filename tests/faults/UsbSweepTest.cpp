// Every control and bulk OUT transfer of a session over the virtual USB bus fails once, and then from that one on; the
// chip is pulled at any of them; bulk IN transfers fail now and then (they come with the clock, so a count of them
// means no particular place).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ostream>
#include <thread>

#include "Session.h"
#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "controller/Scenario.h"
#include "support/FakeTime.h"
#include "support/TemporaryDirectory.h"

namespace {

using corvane::sim::InstrumentDescription;
using corvane::sim::MotionController;

struct SweepCase {
  const char* name;
  UsbFault fault;
  /// Operations between one fault and the next, after the opening and before the driving.
  std::uint64_t stride;
};

void PrintTo(const SweepCase& sweep, std::ostream* out) {
  *out << sweep.name;
}

constexpr unsigned kCounted = UsbFault::kControl | UsbFault::kBulkOut;

InstrumentDescription InstantInstrument() {
  InstrumentDescription description = corvane::sim::DefaultInstrument();
  description.motion = {0, 0, 0, 0, 0, 0, 0};
  return description;
}

/// The virtual bus announces a chip over a socket that is open for a moment.
bool SettlesAt(int (*count)(), int expected) {
  for (int i = 0; i < 1000; ++i) {
    if (count() == expected) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

class UsbSweep : public testing::TestWithParam<SweepCase> {
 protected:
  void SetUp() override {
    BridgeChip::Options options;
    options.vendorId = 0x136E;
    options.productId = 0x0017;
    options.repliesAtOnce = true;
    mChip = &mBus.Plug(options, {&mController});
    RunOnce();  // whatever is made once per process exists now
    mBus.ForgetOperations();
    mBaseline = RunOnce();
    mOperations = mBus.Operations(GetParam().fault.kinds);
    ASSERT_TRUE(mBaseline.AllSucceeded());
    mDescriptors = OpenDescriptors();
    mThreads = Threads();
  }

  SessionResult RunOnce() { return RunSession(mFolder.Path().string()); }

  void RunWithFaultAt(std::uint64_t n) {
    UsbFault fault = GetParam().fault;
    fault.operation = n;
    mBus.SetFault(fault);
    const auto begin = std::chrono::steady_clock::now();
    RunOnce();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    mBus.ClearFault();
    mBus.Replug(*mChip);
    EXPECT_EQ(mBus.OpenNodes(), 0U);
    EXPECT_EQ(mBus.PendingTransfers(), 0U);
    EXPECT_TRUE(SettlesAt(OpenDescriptors, mDescriptors));
    EXPECT_TRUE(SettlesAt(Threads, mThreads));
  }

  FakeTime mTime;
  TemporaryDirectory mFolder;
  MotionController mController{InstantInstrument()};
  VirtualUsbBus mBus;
  BridgeChip* mChip = nullptr;
  SessionResult mBaseline;
  std::uint64_t mOperations = 0;
  int mDescriptors = 0;
  int mThreads = 0;
};

TEST_P(UsbSweep, EndsInDefinedStatusesAndWorksAgainAfterwards) {
  constexpr std::uint64_t kOpening = 40;
  constexpr std::uint64_t kDriving = 20;
  ASSERT_GT(mOperations, kOpening + kDriving);
  for (std::uint64_t n = 1; n <= mOperations;) {
    SCOPED_TRACE("operation " + std::to_string(n) + " of " + std::to_string(mOperations));
    RunWithFaultAt(n);
    if (HasFailure()) {
      return;
    }
    n += n < kOpening || n > mOperations - kDriving ? 1 : GetParam().stride;
  }
  const SessionResult after = RunOnce();
  EXPECT_TRUE(after.AllSucceeded());
  EXPECT_TRUE(after.SameResults(mBaseline));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, UsbSweep,
    testing::Values(SweepCase{"SubmitOnce", {UsbFault::Effect::kSubmitFails, 1, kCounted, false, EIO}, 7},
                    SweepCase{"SubmitFromThenOn", {UsbFault::Effect::kSubmitFails, 1, kCounted, true, EIO}, 7},
                    SweepCase{"CompletionOnce", {UsbFault::Effect::kCompletionFails, 1, kCounted, false, EPROTO}, 7},
                    SweepCase{"Unplug", {UsbFault::Effect::kUnplug, 1, kCounted, false, ENODEV}, 7},
                    SweepCase{"BulkIn", {UsbFault::Effect::kCompletionFails, 1, UsbFault::kBulkIn, false, EPROTO}, 29}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
