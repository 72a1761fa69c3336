// The components of an older instrument: what they ask of the driver, when they are busy, what they throw.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>

#include "camera/legacyparts/TCorvaneX3Hardware.h"
#include "legacy/Corvane.h"
#include "support/BusyLog.h"
#include "support/SimulatedLegacyBus.h"

namespace {

using Flipper = ISpectrographFlipper;
using Slit = ISpectrographSlit;

constexpr int kFailureCode = 1;
/// Transfers of the test that a part is fitted.
constexpr int kPresenceTest = 9;

class SdkComponents : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(mDriver.ReadSpectCfg(nullptr), Corvane::kSuccess);
    ASSERT_EQ(mDriver.ResetWavelength(true), Corvane::kSuccess);
  }
  static corvane::sim::LegacyDescription Described() {
    corvane::sim::LegacyDescription description = corvane::sim::DefaultLegacy();
    description.motion = 0;
    return description;
  }

  SimulatedLegacyBus mBus{Described()};
  Corvane mDriver{&mBus, false};
  TCorvaneX3Hardware mHardware{&mDriver};
  ISpectrographWavelength& mWave = *mHardware.GetWavelengthInterface();
  ISpectrographGrating& mGrating = *mHardware.GetGratingInterface();
};

TEST_F(SdkComponents, CommandsAreBusyMeanwhileAndTellOfSuccessAlone) {
  ISpectrographSlit& slit = *mHardware.GetSlitInterface(Slit::kSlitPosition0);
  ISpectrographFilter& filter = *mHardware.GetFilterInterface();
  ISpectrographFlipper& mirror = *mHardware.GetFlipperInterface(Flipper::kFlipperPosition1);
  // Indices count from 0, the stored values do not.
  const struct {
    TBusyDeviceServer& component;
    std::function<void()> command;
    int transfersBefore;  ///< of the test that it is fitted
    std::string lastMove;
  } commands[] = {
      {mWave, [&] { mWave.SetWavelength(0.0F); }, 0, "0+193"},
      {mGrating, [&] { mGrating.SetGrating(1); }, 0, "0+159999"},
      {mGrating, [&] { mGrating.SetDetectorOffset(0, 0, 252); }, 0, "0+60"},
      {mGrating, [&] { mGrating.SetGratingOffset(1, 70); }, 0, "0+70"},
      {mGrating, [&] { mGrating.Reset(); }, 0, "0-2000e"},
      {slit, [&] { slit.SetSlit(1000.0F); }, kPresenceTest, "1+392"},
      {slit, [&] { slit.Reset(); }, kPresenceTest, "1-100"},
      {slit, [&] { slit.UnsafeReset(); }, kPresenceTest, "1-4880"},
      {filter, [&] { filter.SetFilter(2); }, kPresenceTest, "2+1600"},
      {mirror, [&] { mirror.Reset(); }, kPresenceTest, "3-80"},
  };
  for (const auto& [component, command, transfersBefore, lastMove] : commands) {
    SCOPED_TRACE(lastMove);
    mBus.TakeMoves();
    BusyLog log(component);
    command();
    EXPECT_EQ(log.Take(), (Lines{"busy", "idle", "idle"}));
    EXPECT_EQ(mBus.TakeMoves().back(), lastMove);
    int position = 0;
    mDriver.GetCurrentWaveSteps(&position);
    // A failure: nothing of a change.
    mBus.answers = transfersBefore;
    EXPECT_EQ(ThrownBy(command), kFailureCode);
    EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
    mBus.answers = mBus.kAlways;
    mDriver.SaveCurrentWaveSteps(position);
  }
}

TEST_F(SdkComponents, APartThatIsNotFittedIsNotBusy) {
  ISpectrographFilter& filter = *mHardware.GetFilterInterface();
  BusyLog log(filter);
  mBus.tamper = [](std::uint8_t reg, std::uint8_t& value) { value = reg == 64 ? 1 : value; };
  EXPECT_EQ(ThrownBy([&] { filter.SetFilter(2); }), kFailureCode);
  EXPECT_EQ(log.Take(), Lines());
}

TEST_F(SdkComponents, ATurretIsNotToldAsAChange) {
  BusyLog log(mGrating);
  mGrating.SetTurret(0);
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle"})) << "deliberately";
  EXPECT_EQ(ThrownBy([&] { mGrating.SetTurret(1); }), kFailureCode);
  EXPECT_EQ(ThrownBy([&] { mGrating.SetTurret(-1); }), kFailureCode);
}

TEST_F(SdkComponents, RefuseWhatIsNoIndex) {
  float value = 0.0F;
  const char* blaze = nullptr;
  for (const int none : {-2, 3, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(ThrownBy([&] { mGrating.GetGratingInfo(none, value, blaze, value, value); }), kFailureCode) << none;
    EXPECT_EQ(ThrownBy([&] { mGrating.GetGratingOffset(none); }), kFailureCode) << none;
    EXPECT_EQ(ThrownBy([&] { mGrating.SetGratingOffset(none, 7); }), kFailureCode) << none;
    EXPECT_EQ(ThrownBy([&] { mWave.GetWavelengthLimits(none, value, value); }), kFailureCode) << none;
  }
  EXPECT_EQ(ThrownBy([&] { mHardware.GetSlitInterface(Slit::kSlitPosition0)->GetSlitMode(); }), kFailureCode);
}

TEST_F(SdkComponents, KeepWhatSucceededLast) {
  ISpectrographShutter& shutter = *mHardware.GetShutterInterface();
  shutter.SetExternalShutter(1);
  mBus.answers = kPresenceTest;
  EXPECT_EQ(ThrownBy([&] { shutter.SetExternalShutter(0); }), kFailureCode);
  mBus.answers = mBus.kAlways;
  EXPECT_EQ(shutter.GetExternalShutter(), 1);
}

TEST(SdkComponentsWithoutADriver, FailWithoutHarm) {
  TCorvaneX3Hardware driverless(nullptr);
  driverless.Initialise();
  EXPECT_EQ(ThrownBy([&] { driverless.GetWavelengthInterface()->SetWavelength(1.0F); }), kFailureCode);
}

}  // namespace
