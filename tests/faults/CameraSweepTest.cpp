// Every I2C transfer of a session behind the camera fails once, and then from that one on.
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <tuple>
#include <vector>

#include "Session.h"
#include "support/FakeTime.h"
#include "support/LegacyLaboratory.h"

using nlohmann::json;

namespace {

constexpr unsigned int kBusFailure = 20067;

/// Drives every part of an older instrument. Its grating offset does not change by 11 to 29 steps: those are made in
/// tens, and by design only the last move tells of a failure.
const std::vector<ExportedFunction> kLegacySession = {
    {CALL(CorvaneSetGrating(d, 2))},
    {CALL(CorvaneSetWavelength(d, 550.0F))},
    {CALL(CorvaneSetGratingOffset(d, 2, 35))},
    {CALL(CorvaneGetGratingOffset(d, 2, &o.ints[0]))},
    {CALL(CorvaneGetCalibration(d, o.floats.data(), 4))},
    {CALL(CorvaneSetSlit(d, 180.0F))},
    {CALL(CorvaneSetOutputSlit(d, 220.0F))},
    {CALL(CorvaneSlitReset(d))},
    {CALL(CorvaneSetSlitCoefficients(d, -80, 10, 800, 2200))},
    {CALL(CorvaneSetFilter(d, 3))},
    {CALL(CorvaneFilterReset(d))},
    {CALL(CorvaneSetFilterInfo(d, 2, "OG570"))},
    {CALL(CorvaneSetPort(d, 1))},
    {CALL(CorvaneGotoZeroOrder(d))},
    {CALL(CorvaneWavelengthReset(d))},
    {CALL(CorvaneSetWavelength(d, 480.0F))},
    {CALL(CorvaneSetShutter(d, 1))},
    {CALL(CorvaneSetAccessory(d, 1, 1))},
};

struct Swept {
  const char* name;
  const std::vector<ExportedFunction>& calls;
  json scenario;
  int failures;  ///< of a sound session

  bool IsLegacy() const { return scenario.contains("legacy"); }
};

void PrintTo(const Swept& swept, std::ostream* out) {
  *out << swept.name;
}

class CameraSweep : public testing::TestWithParam<std::tuple<Swept, bool>> {
 protected:
  SessionResult RunOnce() {
    const std::uint64_t before = mLab.Bus().Operations();
    const SessionResult result =
        RunSession(mLab.Directory(), mSwept.calls, [&] { return mLab.Bus().Operations() - before; });
    mOperations = mLab.Bus().Operations() - before;
    return result;
  }

  /// Where an older instrument really stands.
  json Stands() const {
    if (!mSwept.IsLegacy()) {
      return {};
    }
    const json state = mLab.State();
    EXPECT_EQ(state["lostWrites"], 0);
    return {state["positions"], state["lastForward"]};
  }

  /// A controller's question costs some twenty transfers, one for each character of its reply. Of an older instrument a
  /// bus that stays dead is met by every transfer alike, and polling repeats itself every two or three.
  Strides StridesFor(bool fromThenOn) const {
    if (!mSwept.IsLegacy()) {
      return {.record = 23, .driving = 3};
    }
    return {.record = 31, .driving = fromThenOn ? 5U : 1U};
  }

  FakeTime mTime;
  const Swept& mSwept = std::get<0>(GetParam());
  LegacyLaboratory mLab{mSwept.scenario};
  std::uint64_t mOperations = 0;
};

TEST_P(CameraSweep, EndsInDefinedStatusesAndWorksAgainAfterwards) {
  const bool fromThenOn = std::get<1>(GetParam());
  RunOnce();  // whatever is made once per process exists now
  const SessionResult baseline = RunOnce();
  const json stands = Stands();
  ASSERT_TRUE(baseline.found);
  ASSERT_EQ(baseline.Failures(), mSwept.failures);
  Sweep(
      baseline, mOperations, StridesFor(fromThenOn),
      [&](std::uint64_t transfer) {
        mLab.Bus().ArmFault(transfer, fromThenOn ? 1 : 0, kBusFailure);
        const SessionResult result = RunOnce();
        EXPECT_GT(mLab.Bus().FaultHits(), 0U);
        // A controller's record that cannot be read is replaced.
        if ((mSwept.IsLegacy() || transfer > baseline.opened) && result.SameStatuses(baseline)) {
          EXPECT_EQ(result.Difference(baseline), "") << "a failure was taken for an answer";
          EXPECT_EQ(Stands(), stands) << "a failure was taken for a success";
        }
        mLab.Bus().ArmFault(0, 0, 0);
      },
      [this] { return RunOnce(); });
  EXPECT_EQ(Stands(), stands);
}

Swept SweptController(const char* model, int failures) {
  return {model, ControllerSession(), {{"i2c", {{"model", model}}}}, failures};
}

// The library's pauses cost nothing here, so neither may what they wait for.
Swept SweptLegacy(const char* name, int fpga) {
  const json instrument = {{"motion", 0}, {"writeTime", 0}, {"fpga", fpga}};
  return {name, kLegacySession, {{"legacy", instrument}, {"detector", {{"pixels", 1024}}}}, 0};
}

INSTANTIATE_TEST_SUITE_P(
    Faults, CameraSweep,
    testing::Combine(testing::Values(SweptController("LX", kControllerFailures),
                                     SweptController("MX", kControllerFailures), SweptController("SX", kSxFailures),
                                     SweptLegacy("LegacyRegisters", 23), SweptLegacy("LegacyBursts", 22)),
                     testing::Bool()),
    [](const auto& instance) {
      return std::get<0>(instance.param).name + std::string(std::get<1>(instance.param) ? "FromThenOn" : "Once");
    });

}  // namespace
