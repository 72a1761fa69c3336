#include "components/TCorvaneMerakGrating.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <utility>

#include "components/TCorvaneMerakEeprom.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "components/TMerakSpectrographDevice.h"
#include "components/TMerakWavelength.h"
#include "support/ScriptedInstrument.h"

namespace {

constexpr int kFailure = TCorvaneException::kFailure;

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
  Controller().SetWaveToStepsEnable(0);
  Grating().Reset();
  EXPECT_EQ(mInstrument.Take(), (Lines{"GRATING 1", "GRATINGHOME"}));
}

TEST_F(Gratings, ARefusedGratingIsNotHomed) {
  mInstrument.errors["GRATING"] = "E06";
  EXPECT_EQ(ThrownBy([&] { Grating().UnsafeReset(); }), merak::kInvalidParameter);
  EXPECT_EQ(mInstrument.Take(), Lines{"GRATING 1"});
}

TEST_F(Gratings, ChangesOfOffsetsAreBusy) {
  BusyLog log(Grating());
  Grating().SetGratingOffset(0, 1);
  Grating().SetDetectorOffset(1);
  Grating().GratingOffsetAutoAdjust();
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle", "busy", "idle", "busy", "idle"}));
  Grating().GratingOffsetCancelAutoAdjust();
  Grating().SetTurret(0);
  EXPECT_EQ(log.Take(), Lines{});
}

TEST_F(Gratings, BuiltInGratingOffsetsAreKeptWhateverBecomesOfTheApproach) {
  mInstrument.errors["POSITION"] = "E04";
  Grating().SetGratingOffset(2, -13);
  EXPECT_EQ(mInstrument.Take(), Lines{"POSITION?"});
  EXPECT_EQ(Grating().GetGratingOffset(2), -13);
}

TEST_F(Gratings, DetectorOffsetIsThatOfThePortsInUse) {
  mInstrument.values["EXITPORT"] = "1";
  Grating().SetDetectorOffset(45);
  EXPECT_EQ(Grating().GetDetectorOffset(0, 1), 45);
  EXPECT_EQ(Grating().GetDetectorOffset(), 45);
}

TEST_F(Gratings, DetectorOffsetIsNotStoredForPortsThatAreOnlyGuessed) {
  Grating();
  Controller().SetWaveToStepsEnable(1);
  mInstrument.values["EXITPORT"] = "garbage";
  EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(46); }), merak::kIoError);
  EXPECT_EQ(ThrownBy([&] { Grating().GetDetectorOffset(); }), merak::kIoError);
  mInstrument.errors["ENTRANCEPORT"] = "E05";
  EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(46); }), merak::kDeviceNotFound);
  EXPECT_EQ(mInstrument.Take().back(), "ENTRANCEPORT?") << "nothing moved";
  EXPECT_EQ(Grating().GetDetectorOffset(0, 0), 0);
}

TEST_F(Gratings, IndicesBeyondTheTablesThrow) {
  mInstrument.eeprom.At(363) = 255;
  EXPECT_EQ(Grating().GetNumberGratings(), 255) << "as the instrument claims";
  TCorvaneMerakEeprom eeprom(Controller());
  float number = 0.0F;
  const char* blaze = nullptr;
  for (const int bad : {-1, 4, 254, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(ThrownBy([&] { Grating().GetGratingInfo(bad, number, blaze, number, number); }), kFailure) << bad;
    EXPECT_EQ(ThrownBy([&] { Grating().GetGratingOffset(bad); }), kFailure) << bad;
    EXPECT_EQ(ThrownBy([&] { Grating().SetGratingOffset(bad, 3); }), kFailure) << bad;
  }
  EXPECT_EQ(ThrownBy([&] { Grating().SetGratingOffset(3, 3); }), kFailure) << "no room in this family's record";
  for (const int bad : {-1, 16}) {
    EXPECT_EQ(ThrownBy([&] { eeprom.GetGratingInfo(bad, number, blaze); }), kFailure) << bad;
  }
  EXPECT_EQ(ThrownBy([&] { eeprom.GetGratingInfo(15, number, blaze); }), merak::kSuccess);
}

TEST_F(Gratings, BlazeTextsOfTheEepromAreCut) {
  Grating();
  Controller().SetGratingBlaze(0, 2, "a blaze text of some length");
  float lines = 0.0F;
  const char* blaze = nullptr;
  TCorvaneMerakEeprom eeprom(Controller());
  eeprom.GetGratingInfo(2, lines, blaze);
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

TEST_F(Gratings, ZeroOrderIsExactlyZero) {
  const std::pair<const char*, float> positions[] = {{"0.0001", 0.0001F}, {"0.0000", 0.0F}, {"garbage", -1.0F}};
  for (const auto& [position, nm] : positions) {
    mInstrument.values["POSITION"] = position;
    EXPECT_EQ(Wavelength().AtZeroOrder(), nm == 0.0F) << position;
    EXPECT_EQ(Wavelength().GetWavelength(), nm);
  }
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
    EXPECT_EQ(ThrownBy([&] { Wavelength().GetWavelengthLimits(bad, min, max); }), kFailure) << bad;
  }
}

TEST_F(Gratings, DispersionOfAWindowIsCutInStepsOf512Pixels) {
  const struct {
    int first, last;
    float low, high;
  } windows[] = {{0, 1023, 550.0F, 600.0F},   {0, 1024, 550.0F, 650.0F},    {511, 512, 550.0F, 600.0F},
                 {512, 1535, 600.0F, 650.0F}, {-511, 1536, 550.0F, 700.0F}, {-512, 1, 500.0F, 600.0F},
                 {1024, 0, 650.0F, 550.0F}};
  for (const auto& window : windows) {
    float low = 0.0F;
    float high = 0.0F;
    Wavelength().GetDispersionAt(600.0F, low, high, 0, window.first, window.last);
    EXPECT_EQ(low, window.low) << window.first;
    EXPECT_EQ(high, window.high) << window.last;
  }
}

}  // namespace
