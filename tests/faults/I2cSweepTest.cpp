// Every I2C transfer of a session fails once, and then from that one on.
#include <gtest/gtest.h>

#include <cstdint>

#include "Session.h"
#include "support/FakeTime.h"
#include "support/Simulation.h"
#include "support/TemporaryDirectory.h"

namespace {

constexpr unsigned int kBusFailure = 20067;

class I2cSweep : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    mFolder.Write("corvane-sim.json", R"({"i2c": {"motion": 0}})");
    mSimulation.ArmFault(0, 0, 0);
    RunOnce();  // whatever is made once per process exists now
    const std::uint64_t before = mSimulation.Operations();
    mBaseline = RunOnce();
    mOperations = mSimulation.Operations() - before;
    ASSERT_TRUE(mBaseline.AllSucceeded());
  }

  SessionResult RunOnce() { return RunSession(mFolder.Path().string()); }

  FakeTime mTime;
  TemporaryDirectory mFolder;
  Simulation mSimulation;
  SessionResult mBaseline;
  std::uint64_t mOperations = 0;
};

TEST_P(I2cSweep, EndsInDefinedStatusesAndWorksAgainAfterwards) {
  const bool fromThenOn = GetParam();
  const int descriptors = OpenDescriptors();
  // Reading the record repeats itself some 350 times; between its ends a prime stride meets every kind of transfer.
  constexpr std::uint64_t kOpening = 120;
  constexpr std::uint64_t kDriving = 250;
  constexpr std::uint64_t kStride = 23;
  ASSERT_GT(mOperations, kOpening + kDriving);
  for (std::uint64_t n = 1; n <= mOperations;) {
    SCOPED_TRACE("transfer " + std::to_string(n) + " of " + std::to_string(mOperations));
    mSimulation.ArmFault(n, fromThenOn ? 1 : 0, kBusFailure);
    const SessionResult result = RunOnce();
    EXPECT_GT(mSimulation.FaultHits(), 0U);
    if (n > mOperations - kDriving && result.AllSucceeded()) {
      EXPECT_TRUE(result.SameResults(mBaseline)) << "a failure was taken for an answer";
    }
    mSimulation.ArmFault(0, 0, 0);
    ASSERT_EQ(OpenDescriptors(), descriptors);
    if (HasFailure()) {
      return;
    }
    n += n < kOpening || n > mOperations - kDriving ? 1 : kStride;
  }
  const SessionResult after = RunOnce();
  EXPECT_TRUE(after.AllSucceeded());
  EXPECT_TRUE(after.SameResults(mBaseline));
}

INSTANTIATE_TEST_SUITE_P(Faults, I2cSweep, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "FromThenOn" : "Once"; });

}  // namespace
