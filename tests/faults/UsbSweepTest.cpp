// Every control and bulk OUT transfer of a session over the virtual USB bus fails once, and then from that one on; the
// chip is pulled at any of them; bulk IN transfers fail now and then (they come with the clock, so a count of them
// means no particular place).
#include <gtest/gtest.h>

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

constexpr unsigned kCounted = UsbFault::kControl | UsbFault::kBulkOut;

struct SweepCase {
  const char* name;
  std::string model;
  UsbFault::Effect effect;
  int error;
  unsigned kinds = kCounted;
  bool fromThenOn = false;

  /// Questions of an SX's record come one to a value, those of the others one to a byte.
  bool IsSx() const { return model == "SX"; }
};

void PrintTo(const SweepCase& sweep, std::ostream* out) {
  *out << sweep.name;
}

InstrumentDescription InstantInstrument(const std::string& model) {
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
                      [this] { return mBus.Operations(GetParam().kinds); });
  }

  void RunWithFaultAt(std::uint64_t n) {
    const SweepCase& sweep = GetParam();
    mBus.SetFault({sweep.effect, n, sweep.kinds, sweep.fromThenOn, sweep.error});
    RunOnce();
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
  ASSERT_EQ(baseline.Failures(), GetParam().IsSx() ? kSxFailures : kControllerFailures);
  Sweep(
      baseline, mBus.Operations(GetParam().kinds), {.record = GetParam().IsSx() ? 7U : 29U, .driving = 1},
      [this](std::uint64_t operation) { RunWithFaultAt(operation); }, [this] { return RunOnce(); });
}

using Effect = UsbFault::Effect;
const SweepCase kCases[] = {
    {"SubmitOnce", "LX", Effect::kSubmitFails, EIO},
    {"SubmitOnceSx", "SX", Effect::kSubmitFails, EIO},
    {"SubmitFromThenOn", "MX", Effect::kSubmitFails, EIO, kCounted, true},
    {"CompletionOnce", "SX", Effect::kCompletionFails, EPROTO},
    {"Unplug", "LX", Effect::kUnplug, ENODEV},
    {"UnplugSx", "SX", Effect::kUnplug, ENODEV},
    {"BulkIn", "MX", Effect::kCompletionFails, EPROTO, UsbFault::kBulkIn},
};
INSTANTIATE_TEST_SUITE_P(Faults, UsbSweep, testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
