#include "components/TCorvaneMerakGrating.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "components/Instrument.h"
#include "components/TCorvaneMerakEeprom.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "components/TMerakSpectrographDevice.h"

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
  TMerakOrbis& Controller() { return mDevice->GetMerakOrbis(); }

  Instrument mInstrument;
  std::unique_ptr<TMerakSpectrographDevice> mDevice;
  std::unique_ptr<TCorvaneMerakGrating> mGrating;
};

TEST_F(Gratings, SelectionCountsFromOneRemembersAndFollowsTheFlagAtEveryCall) {
  EXPECT_EQ(Grating().GetGrating(), 1);
  EXPECT_EQ(Grating().GetGrating(), 1);
  EXPECT_EQ(mInstrument.Take(), Lines{"GRATING?"}) << "asked once";
  Controller().SetWaveToStepsEnable(1);
  Grating().Reset();
  EXPECT_EQ(mInstrument.Take().at(3), "Step_abs 100");
  EXPECT_EQ(mInstrument.eeprom.FloatAt(289), 0.0F) << "zero order is the current wavelength now";
  EXPECT_EQ(Grating().GetGrating(), 0);
  EXPECT_EQ(mInstrument.Take().size(), 4U);
  Controller().SetWaveToStepsEnable(0);
  Grating().SetGrating(2);
  EXPECT_EQ(Grating().GetGrating(), 2);
  Grating().Reset();
  EXPECT_EQ(mInstrument.Take(), (Lines{"GRATING 3", "GRATING 1", "GRATINGHOME"}));
  mInstrument.errors["GRATING"] = "E06";
  EXPECT_EQ(ThrownBy([&] { Grating().UnsafeReset(); }), 6);
  EXPECT_EQ(mInstrument.Take(), Lines{"GRATING 1"}) << "no homing after a refused grating";
}

TEST_F(Gratings, MotionIsBusyAndIdleAgainBeforeAFailureLeaves) {
  BusyLog log(Grating());
  const std::function<void()> motions[] = {
      [&] { Grating().SetGrating(0); }, [&] { Grating().Reset(); }, [&] { Grating().SetGratingOffset(0, 1); },
      [&] { Grating().SetDetectorOffset(1); }, [&] { Grating().GratingOffsetAutoAdjust(); }};
  for (const bool fails : {false, true}) {
    if (fails) {
      mInstrument.errors["GRATING"] = "E10";
    }
    for (const auto& motion : motions) {
      const bool selects = &motion - motions < 2;
      EXPECT_EQ(ThrownBy(motion), fails && selects ? 10 : 0) << &motion - motions;
      EXPECT_EQ(log.Take(), (Lines{"busy", "idle"})) << &motion - motions;
    }
  }
  Grating().GratingOffsetCancelAutoAdjust();
  Grating().GetGrating();
  Grating().SetTurret(0);
  EXPECT_TRUE(log.Take().empty());
}

TEST_F(Gratings, BuiltInOffsetsReapproachTheWavelengthWhateverComesOfIt) {
  Grating().SetGratingOffset(2, -12);
  EXPECT_EQ(mInstrument.Take(), (Lines{"POSITION?", "MOVETO 546.1000"}));
  Grating().SetDetectorOffset(1, 1, 9);
  EXPECT_EQ(mInstrument.Take(), (Lines{"POSITION?", "MOVETO 546.1000"}));
  EXPECT_EQ(Grating().GetDetectorOffset(1, 1), 9);
  mInstrument.errors["POSITION"] = "E04";
  Grating().SetGratingOffset(2, -13);
  EXPECT_EQ(mInstrument.Take(), Lines{"POSITION?"});
  EXPECT_EQ(Grating().GetGratingOffset(2), -13);
  mInstrument.errors.clear();
  Grating().SetDetectorOffset(2, 0, 77);
  EXPECT_EQ(mInstrument.Take().size(), 2U) << "approached anew although nothing was stored";
  EXPECT_EQ(Grating().GetDetectorOffset(2, 0), 0);
}

TEST_F(Gratings, DetectorOffsetOfThePortsInUse) {
  mInstrument.values["EXITPORT"] = "1";
  mInstrument.eeprom.Put(317 + 4, 44);
  EXPECT_EQ(Grating().GetDetectorOffset(), 44);
  EXPECT_EQ(mInstrument.Take(), (Lines{"ENTRANCEPORT?", "EXITPORT?"}));
  Grating().SetDetectorOffset(45);
  EXPECT_EQ(Grating().GetDetectorOffset(0, 1), 45);
  mInstrument.errors["ENTRANCEPORT"] = "E05";
  EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(46); }), 2) << "not stored for a port that is only guessed";
  EXPECT_EQ(ThrownBy([&] { Grating().GetDetectorOffset(); }), 2);
  EXPECT_EQ(Grating().GetDetectorOffset(0, 1), 45);
  mInstrument.errors.clear();
  Controller().SetWaveToStepsEnable(1);
  mInstrument.Take();
  for (const char* word : {"ENTRANCEPORT", "EXITPORT"}) {
    const std::string number = std::exchange(mInstrument.values[word], "garbage");
    EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(46); }), 4) << word;
    EXPECT_EQ(ThrownBy([&] { Grating().GetDetectorOffset(); }), 4) << word;
    mInstrument.values[word] = number;
  }
  EXPECT_EQ(mInstrument.Take().back(), "EXITPORT?") << "nothing moved for a guessed port";
  EXPECT_EQ(Grating().GetDetectorOffset(0, 0), 0);
  EXPECT_EQ(Grating().GetDetectorOffset(0, 1), 45);
  EXPECT_EQ(ThrownBy([&] { Grating().SetDetectorOffset(2, 0, 1); }), 6);
}

TEST_F(Gratings, InfoComesFromTheRecordWithATextOfItsOwn) {
  TCorvaneMerakGrating& grating = Grating();
  Controller().SetGratingBlaze(0, 2, "a blaze text of some length");
  float number = 0.0F;
  const char* first = nullptr;
  const char* last = nullptr;
  grating.GetGratingInfo(0, number, first, number, number);
  grating.GetGratingInfo(2, number, last, number, number);
  EXPECT_STREQ(first, "400nm");
  TCorvaneMerakEeprom eeprom(Controller());
  eeprom.GetGratingInfo(2, number, last);
  EXPECT_STREQ(last, "a blaze text of");
  EXPECT_TRUE(mInstrument.Take().empty());
}

TEST_F(Gratings, IndicesBeyondTheTablesThrowAndHarmNothing) {
  mInstrument.eeprom.At(363) = 255;
  EXPECT_EQ(Grating().GetNumberGratings(), 255) << "as the instrument claims";
  TCorvaneMerakEeprom eeprom(Controller());
  float number = 0.0F;
  const char* blaze = nullptr;
  for (const int bad : {-1, 4, 254, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(ThrownBy([&] { Grating().GetGratingInfo(bad, number, blaze, number, number); }), 1);
    EXPECT_EQ(ThrownBy([&] { Grating().GetGratingOffset(bad); }), 1);
    EXPECT_EQ(ThrownBy([&] { Grating().SetGratingOffset(bad, 3); }), 1);
  }
  EXPECT_EQ(ThrownBy([&] { Grating().SetGratingOffset(3, 3); }), 1) << "no room in this family's record";
  EXPECT_EQ(ThrownBy([&] { eeprom.GetGratingInfo(16, number, blaze); }), 1);
  EXPECT_EQ(ThrownBy([&] { eeprom.GetGratingInfo(-1, number, blaze); }), 1);
  eeprom.GetGratingInfo(15, number, blaze);
  EXPECT_EQ(number, 0.0F);
  EXPECT_STREQ(blaze, "");
}

TEST_F(Gratings, TurretIsStoredAtOnceOrRefused) {
  Grating().SetTurret(2);
  EXPECT_EQ(mInstrument.Take(), Lines{"SAVEINFO 554,2"});
  EXPECT_EQ(Grating().GetNumberGratings(), 0);
  for (const int bad : {-1, 3}) {
    EXPECT_EQ(ThrownBy([&] { Grating().SetTurret(bad); }), -1);
  }
  EXPECT_TRUE(mInstrument.Take().empty());
  mInstrument.errors["SAVEINFO"] = "E02";
  EXPECT_EQ(ThrownBy([&] { Grating().SetTurret(0); }), 8);
}

TEST_F(Gratings, GreatestWavelengthOfAGrating) {
  mInstrument.eeprom.Put(67, 0.0F);
  mInstrument.eeprom.Put(341, 0.0F);
  Grating();
  const TCorvaneMerakGratingInfo info(Controller());
  EXPECT_EQ(info.GetMaxWave(0), 1443.3756F);
  EXPECT_EQ(info.GetMaxWave(1), 2886.7513F);
  EXPECT_EQ(info.GetMaxWave(2), 0.0F) << "no rulings";
  // The angle is rounded to single precision, which shows at 13.4 degrees and more so near a right angle; its cosine is
  // not, which shows at 60 degrees.
  const std::pair<float, float> angles[] = {{13.4F, 1404.08105F}, {89.99F, 0.252010345F}, {60.0F, 721.687805F}};
  for (const auto& [degrees, nm] : angles) {
    Controller().SetAngularDev(degrees);
    EXPECT_EQ(info.GetMaxWave(0), nm) << degrees;
  }
}

}  // namespace
