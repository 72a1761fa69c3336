#include "components/TCorvaneMerakGrating.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "components/TCorvaneMerakEeprom.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "components/TMerakSpectrographDevice.h"
#include "components/TMerakWavelength.h"
#include "support/ScriptedInstrument.h"

namespace {

class Gratings : public testing::Test {
 protected:
  /// The grating component on the instrument as the test has prepared it by now.
  TCorvaneMerakGrating& Grating() {
    if (mGrating == nullptr) {
      mDevice = std::make_unique<TMerakSpectrographDevice>(mInstrument.Connect());
      mInstrument.Take();
      mGrating = std::make_unique<TCorvaneMerakGrating>(*mDevice);
    }
    return *mGrating;
  }
  TMerakWavelength& Wavelength() {
    if (mWavelength == nullptr) {
      Grating();
      mWavelength = std::make_unique<TMerakWavelength>(*mDevice, *mGrating);
    }
    return *mWavelength;
  }
  TMerakOrbis& Controller() { return mDevice->GetMerakOrbis(); }

  Instrument mInstrument;
  std::unique_ptr<TMerakSpectrographDevice> mDevice;
  std::unique_ptr<TCorvaneMerakGrating> mGrating;
  std::unique_ptr<TMerakWavelength> mWavelength;
};

TEST_F(Gratings, SelectionFollowsTheFlagAtEveryCall) {
  Grating();
  Controller().SetWaveToStepsEnable(1);
  Grating().Reset();
  EXPECT_EQ(mInstrument.Take().at(3), "Step_abs 100");
  EXPECT_EQ(Grating().GetGrating(), 0);
  mInstrument.Take();
  Controller().SetWaveToStepsEnable(0);
  Grating().Reset();
  EXPECT_EQ(mInstrument.Take(), (Lines{"GRATING 1", "GRATINGHOME"}));
  mInstrument.errors["GRATING"] = "E06";
  EXPECT_EQ(ThrownBy([&] { Grating().UnsafeReset(); }), 6);
  EXPECT_EQ(mInstrument.Take(), Lines{"GRATING 1"}) << "no homing after a refused grating";
}

TEST_F(Gratings, MotionIsBusyAndIdleAgainBeforeAFailureLeaves) {
  BusyLog log(Grating());
  mInstrument.errors["GRATING"] = "E10";
  const std::pair<int, std::function<void()>> motions[] = {{10, [&] { Grating().SetGrating(0); }},
                                                           {10, [&] { Grating().Reset(); }},
                                                           {0, [&] { Grating().SetGratingOffset(0, 1); }},
                                                           {0, [&] { Grating().SetDetectorOffset(1); }},
                                                           {0, [&] { Grating().GratingOffsetAutoAdjust(); }}};
  for (const auto& [thrown, motion] : motions) {
    EXPECT_EQ(ThrownBy(motion), thrown);
    EXPECT_EQ(log.Take(), (Lines{"busy", "idle"})) << thrown;
  }
  Grating().GratingOffsetCancelAutoAdjust();
  Grating().SetTurret(0);
  EXPECT_TRUE(log.Take().empty());
}

TEST_F(Gratings, BuiltInOffsetsReapproachTheWavelengthWhateverComesOfIt) {
  Grating();
  mInstrument.errors["POSITION"] = "E04";
  Grating().SetGratingOffset(2, -13);
  EXPECT_EQ(mInstrument.Take(), Lines{"POSITION?"});
  EXPECT_EQ(Grating().GetGratingOffset(2), -13);
  mInstrument.errors.clear();
  Grating().SetDetectorOffset(2, 0, 77);
  EXPECT_EQ(mInstrument.Take(), (Lines{"POSITION?", "MOVETO 546.1000"})) << "although nothing was stored";
  EXPECT_EQ(Grating().GetDetectorOffset(2, 0), 0);
}

TEST_F(Gratings, DetectorOffsetIsNotStoredForPortsThatAreOnlyGuessed) {
  mInstrument.values["EXITPORT"] = "1";
  Grating().SetDetectorOffset(45);
  EXPECT_EQ(Grating().GetDetectorOffset(0, 1), 45);
  mInstrument.errors["ENTRANCEPORT"] = "E05";
  EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(46); }), 2);
  EXPECT_EQ(ThrownBy([&] { Grating().GetDetectorOffset(); }), 2);
  mInstrument.errors.clear();
  Controller().SetWaveToStepsEnable(1);
  mInstrument.Take();
  mInstrument.values["EXITPORT"] = "garbage";
  EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(46); }), 4);
  EXPECT_EQ(ThrownBy([&] { Grating().GetDetectorOffset(); }), 4);
  EXPECT_EQ(mInstrument.Take().back(), "EXITPORT?") << "nothing moved";
  EXPECT_EQ(Grating().GetDetectorOffset(0, 0), 0);
  EXPECT_EQ(Grating().GetDetectorOffset(0, 1), 45);
}

TEST_F(Gratings, IndicesBeyondTheTablesThrowAndTextsAreCut) {
  mInstrument.eeprom.At(363) = 255;
  EXPECT_EQ(Grating().GetNumberGratings(), 255) << "as the instrument claims";
  Controller().SetGratingBlaze(0, 2, "a blaze text of some length");
  TCorvaneMerakEeprom eeprom(Controller());
  float number = 0.0F;
  const char* blaze = nullptr;
  for (const int bad : {-1, 4, 254, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(ThrownBy([&] { Grating().GetGratingInfo(bad, number, blaze, number, number); }), 1);
    EXPECT_EQ(ThrownBy([&] { Grating().GetGratingOffset(bad); }), 1);
    EXPECT_EQ(ThrownBy([&] { Grating().SetGratingOffset(bad, 3); }), 1);
    EXPECT_EQ(ThrownBy([&] { eeprom.GetGratingInfo(bad, number, blaze); }), bad == 4 ? 0 : 1);
  }
  EXPECT_EQ(ThrownBy([&] { Grating().SetGratingOffset(3, 3); }), 1) << "no room in this family's record";
  eeprom.GetGratingInfo(2, number, blaze);
  EXPECT_STREQ(blaze, "a blaze text of");
}

TEST_F(Gratings, GreatestWavelengthOfAGrating) {
  mInstrument.eeprom.Put(341, 0.0F);
  Grating();
  const TCorvaneMerakGratingInfo info(Controller());
  EXPECT_EQ(info.GetMaxWave(2), 0.0F) << "no rulings";
  // The angle is rounded to single precision, which shows at 13.4 degrees and more so near a right angle; its cosine is
  // not, which shows at 60 degrees.
  const std::pair<float, float> angles[] = {
      {0.0F, 1443.3756F}, {13.4F, 1404.08105F}, {89.99F, 0.252010345F}, {60.0F, 721.687805F}};
  for (const auto& [degrees, nm] : angles) {
    Controller().SetAngularDev(degrees);
    EXPECT_EQ(info.GetMaxWave(0), nm) << degrees;
  }
}

TEST_F(Gratings, ZeroOrderIsExactlyZeroAndGarbageBelowIt) {
  const std::pair<const char*, float> positions[] = {{"0.0001", 0.0001F}, {"0.0000", 0.0F}, {"garbage", -1.0F}};
  for (const auto& [position, nm] : positions) {
    mInstrument.values["POSITION"] = position;
    EXPECT_EQ(Wavelength().AtZeroOrder(), nm == 0.0F) << position;
    EXPECT_EQ(Wavelength().GetWavelength(), nm);
  }
}

TEST_F(Gratings, BusyAroundTheMoveAlsoWhenItFails) {
  BusyLog log(Wavelength());
  mInstrument.errors = {{"MOVETO", "E11"}, {"POSITION", "E02"}};
  EXPECT_EQ(ThrownBy([&] { Wavelength().SetWavelength(550.0F); }), 11);
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
  EXPECT_EQ(ThrownBy([&] { Wavelength().GetWavelength(); }), 8);
  EXPECT_TRUE(log.Take().empty());
  mInstrument.answers = 0;
  mInstrument.Take();
  EXPECT_EQ(ThrownBy([&] { Wavelength().SetWavelength(550.0F); }), 4);
  EXPECT_EQ(mInstrument.Take().size(), 1U) << "silence is not asked again";
}

TEST_F(Gratings, ChangesOfTheGratingReachTheClientsOfEveryWavelengthThatLives) {
  Wavelength();
  // On the heap: a notification to where it was touches freed memory, which the address sanitizer sees.
  auto second = std::make_unique<TMerakWavelength>(*mDevice, Grating());
  Grating().SetGrating(1);
  second.reset();
  {
    BusyLog log(Wavelength());
    Grating().SetGrating(0);
    EXPECT_EQ(log.Take(), (Lines{"idle", "idle"})) << "told twice; the wavelength itself is not busy";
  }
  mWavelength.reset();
  Grating().SetGrating(2);
}

TEST_F(Gratings, LimitsOfTheGratingInPlaceAndOfNone) {
  float min = -1.0F;
  float max = -1.0F;
  Wavelength().GetWavelengthLimits(-1, min, max);
  EXPECT_GT(max, 2800.0F) << "the second grating is in place";
  for (const int bad : {-2, 4, 255}) {
    EXPECT_EQ(ThrownBy([&] { Wavelength().GetWavelengthLimits(bad, min, max); }), 1);
  }
}

}  // namespace
