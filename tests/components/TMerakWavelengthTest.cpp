#include "components/TMerakWavelength.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "components/Instrument.h"
#include "components/TCorvaneMerakGrating.h"
#include "components/TMerakSpectrographDevice.h"

namespace {

class Wavelength : public testing::Test {
 protected:
  Wavelength() {
    mInstrument.eeprom.Put(67, 0.0F);
    mDevice = std::make_unique<TMerakSpectrographDevice>(mInstrument.Connect());
    mGrating = std::make_unique<TCorvaneMerakGrating>(*mDevice);
    mWavelength = std::make_unique<TMerakWavelength>(*mDevice, *mGrating);
    mInstrument.Take();
  }

  Instrument mInstrument;
  std::unique_ptr<TMerakSpectrographDevice> mDevice;
  std::unique_ptr<TCorvaneMerakGrating> mGrating;
  std::unique_ptr<TMerakWavelength> mWavelength;
};

TEST_F(Wavelength, ZeroOrderIsExactlyZeroAndGarbageBelowIt) {
  const std::pair<const char*, bool> positions[] = {{"546.1", false}, {"0.0001", false}, {"0.0000", true}};
  for (const auto& [position, atZero] : positions) {
    mInstrument.values["POSITION"] = position;
    EXPECT_EQ(mWavelength->AtZeroOrder(), atZero) << position;
  }
  mInstrument.values["POSITION"] = "garbage";
  EXPECT_EQ(mWavelength->GetWavelength(), -1.0F);
}

TEST_F(Wavelength, BusyAroundTheMoveAlsoWhenItFails) {
  BusyLog log(*mWavelength);
  mWavelength->SetWavelength(550.0F);
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
  mInstrument.errors = {{"MOVETO", "E11"}, {"POSITION", "E02"}};
  EXPECT_EQ(ThrownBy([&] { mWavelength->SetWavelength(550.0F); }), 11);
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
  EXPECT_EQ(ThrownBy([&] { mWavelength->GetWavelength(); }), 8);
  EXPECT_TRUE(log.Take().empty());
  mInstrument.answers = 0;
  mInstrument.Take();
  EXPECT_EQ(ThrownBy([&] { mWavelength->SetWavelength(550.0F); }), 4);
  EXPECT_EQ(log.Take(), (Lines{"busy", "idle"}));
  EXPECT_EQ(mInstrument.Take().size(), 1U) << "silence is not asked again";
}

TEST_F(Wavelength, ChangesOfTheGratingReachTheClientsOfEveryWavelengthThatLives) {
  // On the heap: a notification to where it was touches freed memory, which the address sanitizer sees.
  auto second = std::make_unique<TMerakWavelength>(*mDevice, *mGrating);
  mGrating->SetGrating(1);
  second.reset();
  {
    BusyLog log(*mWavelength);
    mGrating->SetGrating(0);
    EXPECT_EQ(log.Take(), (Lines{"idle", "idle"})) << "told twice; the wavelength itself is not busy";
  }
  mWavelength.reset();
  mGrating->SetGrating(2);
}

TEST_F(Wavelength, DispersionIsAFixedSpan) {
  constexpr int kLeast = std::numeric_limits<int>::min();
  float low = 0.0F;
  float high = 0.0F;
  const auto at = [&](int first, int last) {
    mWavelength->GetDispersionAt(600.0F, low, high, 0, first, last);
    return std::pair(low, high);
  };
  EXPECT_EQ(at(0, 1023), std::pair(550.0F, 600.0F));
  EXPECT_EQ(at(0, 1024), std::pair(550.0F, 650.0F));
  EXPECT_EQ(at(512, 1), std::pair(600.0F, 600.0F)) << "divided towards zero";
  EXPECT_EQ(at(-600, 0), std::pair(500.0F, 550.0F));
  EXPECT_LT(at(kLeast, kLeast).second, 0.0F);
  mInstrument.errors["POSITION"] = "E00";
  EXPECT_EQ(ThrownBy([&] { mWavelength->GetDispersion(low, high); }), 2);
}

TEST_F(Wavelength, LimitsOfAGratingAndOfTheCurrentOne) {
  float min = -1.0F;
  float max = -1.0F;
  mWavelength->GetWavelengthLimits(0, min, max);
  EXPECT_EQ(min, 0.0F);
  EXPECT_EQ(max, 1443.3756F);
  EXPECT_TRUE(mInstrument.Take().empty());
  mWavelength->GetWavelengthLimits(-1, min, max);
  EXPECT_EQ(max, 2886.7513F) << "the second grating is in place";
  EXPECT_EQ(mInstrument.Take(), Lines{"GRATING?"});
  for (const int bad : {-2, 4, 255}) {
    EXPECT_EQ(ThrownBy([&] { mWavelength->GetWavelengthLimits(bad, min, max); }), 1);
  }
  EXPECT_EQ(mWavelength->GetCurrentWaveStepPosition(), -999999);
}

}  // namespace
