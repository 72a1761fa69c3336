// Every control and bulk OUT transfer of a session over the virtual USB bus fails once, and then from that one on; the
// chip is pulled at any of them; bulk IN transfers fail now and then (they come with the clock, so a count of them
// means no particular place).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

#include "Session.h"
#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/FakeTime.h"
#include "support/TemporaryDirectory.h"

namespace {

using corvane::sim::InstrumentDescription;
using corvane::sim::MotionController;

struct SweepCase {
  const char* name;
  const char* model;
  UsbFault fault;
  /// While the record is read and written.
  std::uint64_t stride;
};

void PrintTo(const SweepCase& sweep, std::ostream* out) {
  *out << sweep.name;
}

constexpr unsigned kCounted = UsbFault::kControl | UsbFault::kBulkOut;

InstrumentDescription InstantInstrument(const char* model) {
  InstrumentDescription description = corvane::sim::DefaultInstrument(model);
  description.motion = {0, 0, 0, 0, 0, 0, 0};
  return description;
}

class UsbSweep : public testing::TestWithParam<SweepCase> {
 protected:
  void SetUp() override {
    BridgeChip::Options options;
    options.vendorId = 0x136E;
    options.productId = 0x0017;
    options.repliesAtOnce = true;
    mChip = &mBus.Plug(options, {&mController});
  }

  SessionResult RunOnce() {
    mBus.ForgetOperations();
    return RunSession(mFolder.Path().string(), ControllerSession(),
                      [this] { return mBus.Operations(GetParam().fault.kinds); });
  }

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
  }

  FakeTime mTime;
  TemporaryDirectory mFolder;
  MotionController mController{InstantInstrument(GetParam().model)};
  VirtualUsbBus mBus;
  BridgeChip* mChip = nullptr;
};

TEST_P(UsbSweep, EndsInDefinedStatusesAndWorksAgainAfterwards) {
  RunOnce();  // whatever is made once per process exists now
  const SessionResult baseline = RunOnce();
  ASSERT_TRUE(baseline.found);
  ASSERT_EQ(baseline.Failures(), GetParam().model == std::string("SX") ? 13 : 9);
  Sweep(
      baseline, mBus.Operations(GetParam().fault.kinds), {GetParam().stride, 1},
      [this](std::uint64_t operation) { RunWithFaultAt(operation); }, [this] { return RunOnce(); });
}

INSTANTIATE_TEST_SUITE_P(
    Faults, UsbSweep,
    testing::Values(
        SweepCase{"SubmitOnce", "LX", {UsbFault::Effect::kSubmitFails, 1, kCounted, false, EIO}, 29},
        SweepCase{"SubmitOnceSx", "SX", {UsbFault::Effect::kSubmitFails, 1, kCounted, false, EIO}, 7},
        SweepCase{"SubmitFromThenOn", "MX", {UsbFault::Effect::kSubmitFails, 1, kCounted, true, EIO}, 29},
        SweepCase{"CompletionOnce", "SX", {UsbFault::Effect::kCompletionFails, 1, kCounted, false, EPROTO}, 7},
        SweepCase{"Unplug", "LX", {UsbFault::Effect::kUnplug, 1, kCounted, false, ENODEV}, 29},
        SweepCase{"UnplugSx", "SX", {UsbFault::Effect::kUnplug, 1, kCounted, false, ENODEV}, 7},
        SweepCase{"BulkIn", "MX", {UsbFault::Effect::kCompletionFails, 1, UsbFault::kBulkIn, false, EPROTO}, 29}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
