// The components of an older instrument: what they ask of the driver, when they are busy, what they throw.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <tuple>

#include "camera/legacyparts/TCorvaneX3Hardware.h"
#include "legacy/Corvane.h"
#include "support/BusyLog.h"
#include "support/FakeLegacyInstrument.h"

namespace {

using Slit = ISpectrographSlit;

class SdkComponents : public testing::Test {
 protected:
  SdkComponents() { mDriver.ReadSpectCfg(nullptr); }

  FakeLegacyInstrument mInstrument;
  Corvane mDriver{&mInstrument, false};
  std::unique_ptr<TCorvaneX3Hardware> mHardware = std::make_unique<TCorvaneX3Hardware>(&mDriver);
};

TEST_F(SdkComponents, CommandsAreBusyMeanwhileAndTellOfSuccessAlone) {
  ISpectrographWavelength& wave = *mHardware->GetWavelengthInterface();
  ISpectrographGrating& grating = *mHardware->GetGratingInterface();
  ISpectrographSlit& slit = *mHardware->GetSlitInterface(Slit::kSlitPosition0);
  ISpectrographFilter& filter = *mHardware->GetFilterInterface();
  ISpectrographFlipper& mirror = *mHardware->GetFlipperInterface(ISpectrographFlipper::kFlipperPosition1);
  // Indices count from 0, the stored values do not. The selector (0: none) and bit that tell of the part; the last move
  // made.
  const std::tuple<TBusyDeviceServer&, std::function<void()>, int, std::uint8_t, std::string> commands[] = {
      {wave, [&] { wave.SetWavelength(0.0F); }, 0, 0, "0+193"},
      {grating, [&] { grating.SetGrating(1); }, 0, 0, "0+159999"},
      {grating, [&] { grating.SetDetectorOffset(0, 0, 252); }, 0, 0, "0+60"},
      {grating, [&] { grating.SetGratingOffset(1, 70); }, 0, 0, "0+70"},
      {grating, [&] { grating.Reset(); }, 0, 0, "0-2000e"},
      {slit, [&] { slit.SetSlit(1000.0F); }, 129, 2, "1+392"},
      {slit, [&] { slit.Reset(); }, 129, 2, "1-100"},
      {slit, [&] { slit.UnsafeReset(); }, 129, 2, "1-4880"},
      {filter, [&] { filter.SetFilter(2); }, 64, 1, "2+1600"},
      {mirror, [&] { mirror.Reset(); }, 96, 2, "3-80"},
  };
  ASSERT_EQ(mDriver.ResetWavelength(true), 0U);
  for (const auto& [component, command, selector, mask, move] : commands) {
    SCOPED_TRACE(move);
    mInstrument.TakeMoves();
    BusyLog log(component);
    if (selector != 0) {
      mInstrument.status[static_cast<std::uint8_t>(selector)] = mask;
      EXPECT_EQ(ThrownBy(command), 1);
      mInstrument.status.clear();
      EXPECT_EQ(log.Take(), Lines());
    }
    command();
    EXPECT_EQ(log.Take(), (Lines{"busy", "idle", "idle"}));
    EXPECT_EQ(mInstrument.TakeMoves().back(), move);
    // A failure: nothing of a change. The test of presence takes 9 transfers.
    mInstrument.answers = selector == 0 ? 0 : 9;
    EXPECT_EQ(ThrownBy(command), 1);
    mInstrument.answers = mInstrument.kAlways;
    EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
    mDriver.SaveCurrentWaveSteps(mInstrument.position[0]);
  }
  BusyLog log(grating);
  grating.SetTurret(1);
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle"})) << "deliberately not told of the change";
  EXPECT_EQ(ThrownBy([&] { grating.SetTurret(2); }), 1);
}

TEST_F(SdkComponents, RefuseWhatIsNoIndexAndKeepOutputsOnFailure) {
  ISpectrographGrating& grating = *mHardware->GetGratingInterface();
  ISpectrographWavelength& wavelength = *mHardware->GetWavelengthInterface();
  float low = 180.0F;
  float high = 0.0F;
  const char* blaze = nullptr;
  for (const int none : {-2, 3, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(ThrownBy([&] { grating.GetGratingInfo(none, low, blaze, high, high); }), 1);
    EXPECT_EQ(ThrownBy([&] { grating.GetGratingOffset(none); }), 1);
    EXPECT_EQ(ThrownBy([&] { wavelength.GetWavelengthLimits(none, low, high); }), 1);
  }
  EXPECT_EQ(ThrownBy([&] { mHardware->GetSlitInterface(Slit::kSlitPosition0)->GetSlitMode(); }), 1);
  ISpectrographShutter& shutter = *mHardware->GetShutterInterface();
  shutter.SetExternalShutter(1);
  mInstrument.answers = 9;
  EXPECT_EQ(ThrownBy([&] { shutter.SetExternalShutter(0); }), 1);
  EXPECT_EQ(ThrownBy([&] { mHardware->GetEepromInterface()->GetOpticalParams(low, high, high); }), 1);
  EXPECT_EQ(low, 180.0F);
  mInstrument.answers = mInstrument.kAlways;
  EXPECT_EQ(shutter.GetExternalShutter(), 1) << "what succeeded last";
  TCorvaneX3Hardware driverless(nullptr);
  driverless.Initialise();
  EXPECT_EQ(ThrownBy([&] { driverless.GetWavelengthInterface()->SetWavelength(1.0F); }), 1);
}

}  // namespace
