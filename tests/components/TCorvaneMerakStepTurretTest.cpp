#include "components/TCorvaneMerakStepTurret.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "components/optics/TStepperWaveToSteps.h"
#include "components/optics/TWavelengthConversion.h"
#include "support/ScriptedInstrument.h"

namespace {

class StepTurret : public testing::Test {
 protected:
  /// Reads the EEPROM as the test has prepared it by now.
  TCorvaneMerakStepTurret& Turret() {
    if (mTurret == nullptr) {
      mInstrument.UseSteps();
      mController = mInstrument.Connect();
      mController->ReadEeprom();
      mInstrument.Take();
      mTurret = std::make_unique<TCorvaneMerakStepTurret>(*mController);
    }
    return *mTurret;
  }
  int GratingAt(int step) {
    mInstrument.values["Step"] = std::to_string(step);
    int grating = 0;
    EXPECT_EQ(Turret().GetGrating(grating), 0U);
    return grating;
  }
  /// Where the turret is sent for this grating's zero order.
  std::string Home(int grating) {
    Turret();
    mInstrument.Take();
    EXPECT_EQ(Turret().SetGrating(grating, TMCorvaneGratingStrategy::kGoHome), 0U);
    return mInstrument.Take().at(3);
  }
  void SetPorts(const std::string& port) { mInstrument.values["EXITPORT"] = mInstrument.values["ENTRANCEPORT"] = port; }
  void SetStarts(int first, int second, int third) {
    mInstrument.eeprom.Put(305, first);
    mInstrument.eeprom.Put(309, second);
    mInstrument.eeprom.Put(313, third);
  }

  Instrument mInstrument;
  std::unique_ptr<TMerakOrbis> mController;
  std::unique_ptr<TCorvaneMerakStepTurret> mTurret;
};

TEST_F(StepTurret, WavelengthFollowsGratingPortsAndStructure) {
  // Grating 2 has 600 lines: twice the wavelength for the same angle.
  mInstrument.values["Step"] = "12150";
  SetPorts("1");
  mInstrument.eeprom.Put(317 + 12, 7);
  mInstrument.eeprom.Put(284, 10.0F);
  mInstrument.eeprom.Put(276, 1.5707964F);
  mInstrument.eeprom.Put(280, 1e12F);
  EXPECT_EQ(Turret().SetWavelength(2400.0F), 0U);
  EXPECT_EQ(mInstrument.Take().at(7), "Step_abs 15097") << "12100 + 7 + 3000 - 10";
  mController->SetStructureVersion("1.3");
  EXPECT_EQ(Turret().SetWavelength(2400.0F), 0U);
  EXPECT_EQ(mInstrument.Take().at(7), "Step_abs 15110") << "one entrance only, and the correction is added";
  mController->SetWaveToStepsCoeff(0, std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(Turret().SetWavelength(500.0F), 0U);
  EXPECT_EQ(mInstrument.Take().at(7), "Step_abs 12100") << "hostile optics go to zero order";
}

TEST_F(StepTurret, FailedMoveKeepsTheWavelengthFailedReadsDoNotCount) {
  mInstrument.errors["Step_abs"] = "E10";
  EXPECT_EQ(Turret().SetWavelength(500.0F), 10U);
  EXPECT_EQ(mController->GetCurrentWavelength(), 600.0F);
  mInstrument.errors = {{"Step", "E04"}, {"EXITPORT", "E04"}, {"ENTRANCEPORT", "E04"}, {"SAVEINFO", "E02"}};
  EXPECT_EQ(Turret().SetWavelength(1200.0F), 0U);
  EXPECT_EQ(mController->GetCurrentWavelength(), 1200.0F);
}

TEST_F(StepTurret, PositionThatCannotBeReadMovesAndStoresNothing) {
  // The third: replies without the query's echo, which the third time are taken for an empty one.
  const std::pair<const char*, MerakResult> replies[] = {{"garbage", 4}, {"", 4}, {"OK\rOK\rOK", 4}, {"E10", 10}};
  for (const auto& [reply, result] : replies) {
    Turret();
    mInstrument.values["Step"] = reply;
    mInstrument.errors[reply[0] == 'O' || reply[0] == 'E' ? "Step" : "none"] = reply;
    EXPECT_NE(Turret().SetGratingOffset(1, 40), 0U);
    EXPECT_EQ(mController->GetActiveTurretGratingOffset(0), 0);
    mInstrument.Take();
    mController->SetDetectorOffset(0, 0, 0);
    EXPECT_EQ(Turret().SetDetectorOffset(0, 0, 60), result) << reply;
    EXPECT_EQ(mInstrument.Take(), (Lines{"TOTALSTEPS?", "Step?"})) << "no move";
    int grating = 77;
    EXPECT_NE(Turret().GetGrating(grating), 0U);
    EXPECT_EQ(grating, 77);
  }
}

TEST_F(StepTurret, FindsTheGratingBelowThePosition) {
  const std::pair<int, int> places[] = {{100, 1}, {12099, 1}, {12100, 2}, {24100, 3}};
  for (const auto& [step, grating] : places) {
    EXPECT_EQ(GratingAt(step), grating) << step;
  }
  EXPECT_EQ(GratingAt(99), 3) << "one revolution on, beyond every grating";
  // Unwrapped with the port known so far, compared with the port just read: 300 lies below all three.
  mController->SetDetectorOffset(0, 1, 500);
  mInstrument.values["EXITPORT"] = "1";
  EXPECT_EQ(GratingAt(300), 3);
  EXPECT_EQ(GratingAt(600), 1);
}

TEST_F(StepTurret, PositionsAboveANegativeZeroAreNegative) {
  SetStarts(-200, 0, 100);
  const std::pair<int, int> places[] = {{35800, 1}, {35999, 1}, {0, 2}, {35799, 3}};
  for (const auto& [step, grating] : places) {
    EXPECT_EQ(GratingAt(step), grating) << step;
  }
  mInstrument.errors["TOTALSTEPS"] = "E04";
  EXPECT_EQ(GratingAt(35800), 3) << "nothing is wrapped without the number of steps";
}

TEST_F(StepTurret, ReportedPortsThatCannotBeLeaveTheHeldOnes) {
  mInstrument.eeprom.Put(317 + 12, 500);
  for (const char* port : {"1", "2", "-1", "3", "256", "garbage", ""}) {
    SetPorts(port);
    EXPECT_EQ(Home(1), "Step_abs 600") << port;
  }
  SetPorts("0");
  EXPECT_EQ(Home(1), "Step_abs 100");
}

TEST_F(StepTurret, StepsAreWrappedOnceIntoARevolution) {
  SetStarts(-3100, 12000, 35000);
  EXPECT_EQ(Home(1), "Step_abs 32900");
  mController->SetCurrentWavelength(4800.0F);
  mInstrument.Take();
  // Grating 3 has 300 lines: 4800 nm is 3000 steps, 38000 in all.
  Turret().SetGrating(3, TMCorvaneGratingStrategy::kKeepWavelength);
  EXPECT_EQ(mInstrument.Take().at(3), "Step_abs 2000");
  mController->SetGratingStart(0, 2, 36000);
  EXPECT_EQ(Home(3), "Step_abs 0") << "a whole revolution is no position";
}

TEST_F(StepTurret, GratingOffsetMovesTheTurretOnlyWithTheCurrentGrating) {
  EXPECT_EQ(Turret().SetGratingOffset(2, 25), 0U);
  EXPECT_EQ(mInstrument.Take().size(), 4U) << "grating 1 is in place: asked, stored, not moved";
  EXPECT_EQ(mController->GetActiveTurretGratingOffset(1), 25);
  EXPECT_EQ(Turret().SetGratingOffset(1, 40), 0U);
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 190");
  EXPECT_EQ(Turret().SetGratingOffset(1, -30), 0U);
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 80") << "150 - 70";
}

TEST_F(StepTurret, DetectorOffsetMovesTheTurretOnlyWithItsPorts) {
  mInstrument.values["Step"] = "35990";
  EXPECT_EQ(Turret().SetDetectorOffset(1, 0, 500), 0U);
  EXPECT_TRUE(mInstrument.Take().empty());
  Turret().SetCurrentEntrancePort(1);
  EXPECT_EQ(Turret().SetDetectorOffset(1, 0, -35591), 0U);
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 35899") << "35990 - 36091, wrapped upwards";
  for (const int bad : {-1, 2}) {
    const MerakResult results[] = {Turret().SetDetectorOffset(bad, 0, 1), Turret().SetDetectorOffset(0, bad, 1),
                                   Turret().SetCurrentExitPort(bad), Turret().SetCurrentEntrancePort(bad)};
    EXPECT_THAT(results, testing::Each(6U));
  }
  // Differences beyond int do not wrap round to a position.
  Turret().SetDetectorOffset(1, 0, std::numeric_limits<int>::min());
  Turret().SetDetectorOffset(1, 0, std::numeric_limits<int>::max());
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 2147483647");
  for (const int bad : {0, 4, 255, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Turret().SetGrating(bad, TMCorvaneGratingStrategy::kGoHome), 1U);
    EXPECT_EQ(Turret().SetGratingOffset(bad, 1), 1U);
  }
}

TEST_F(StepTurret, WithoutARecordOffsetsMoveNothing) {
  // A controller that could not be identified stays open: the turret could be driven, by offsets that nothing keeps.
  mInstrument.errors["SYSTEMINFO"] = "E04";
  auto controller = mInstrument.Connect();
  ASSERT_TRUE(controller->IsOpen());
  ASSERT_FALSE(controller->HasEepromRecord());
  TCorvaneMerakStepTurret turret(*controller);
  EXPECT_EQ(turret.SetGratingOffset(1, 40), 3U);
  EXPECT_EQ(turret.SetDetectorOffset(0, 0, 60), 3U);
  EXPECT_TRUE(mInstrument.Take().empty());
}

// ---- From wavelengths to steps ----

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
/// p = x / 2400.
constexpr float kLinear[5] = {0.0F, 0.0F, 0.0F, 1.0F / 2400.0F, 0.0F};

std::int64_t Steps(float x, int offset, int version, unsigned long total, float amplitude = 0.0F, float phase = 0.0F,
                   float frequency = 0.0F, const float* coefficients = kLinear) {
  return TStepperWaveToSteps(coefficients, amplitude, phase, frequency, total).ToSteps(x, offset, version);
}

TEST(TStepperWaveToSteps, RoundsAwayFromZeroOnBothSides) {
  EXPECT_EQ(Steps(1200.0F, 77, 1, 36000), 77 + 3000);
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36005), 3000) << "3000.4";
  EXPECT_EQ(Steps(-1200.0F, 0, 2, 36007), -3001) << "-3000.6";
  EXPECT_EQ(Steps(2400.0F, -5, 2, 36000), 9000 - 5) << "p = 1 is still within reach";
}

TEST(TStepperWaveToSteps, StaysAtTheZeroPositionBelowOneAndOutOfReach) {
  for (const int version : {1, 3}) {
    for (const float x : {0.5F, -0.99F, 2880.0F, -2880.0F}) {
      EXPECT_EQ(Steps(x, 42, version, 36000), 42) << x;
    }
    for (const float hostile : {kNaN, kInfinity, -kInfinity}) {
      const float coefficients[5] = {0.0F, 0.0F, 0.0F, 0.0F, hostile};
      EXPECT_EQ(Steps(500.0F, 42, version, 36000, 0, 0, 0, coefficients), 42);
      EXPECT_EQ(Steps(hostile, 42, version, 36000), 42);
      EXPECT_EQ(Steps(500.0F, 42, version, 36000, hostile, 0.1F, 100.0F), 42);
      EXPECT_EQ(Steps(500.0F, 42, version, 36000, 1.0F, hostile, 100.0F), 42);
    }
  }
}

TEST(TStepperWaveToSteps, SineCorrectionChangesSignWithTheStructure) {
  // A period so long that the sine is that of the phase alone: 10 * sin(pi / 2).
  constexpr float kQuarter = 1.5707964F;
  EXPECT_EQ(Steps(1200.0F, 500, 1, 36000, 10.0F, kQuarter, 1e12F), 3510);
  EXPECT_EQ(Steps(1200.0F, 500, 2, 36000, 10.0F, kQuarter, 1e12F), 3490);
  EXPECT_EQ(Steps(1200.0F, 500, 1, 36000, -4000.0F, kQuarter, 1e12F), 500)
      << "the older one is cut at the zero position";
  EXPECT_EQ(Steps(1200.0F, 500, 2, 36000, 4000.0F, kQuarter, 1e12F), -500) << "the newer one is not";
  EXPECT_EQ(Steps(-1200.0F, 500, 1, 36000), 500);
  // The period is in steps: 3000 steps are a quarter of 12000.
  EXPECT_EQ(Steps(1200.0F, 0, 1, 36000, 10.0F, 0.0F, 12000.0F), 3010);
  EXPECT_EQ(Steps(1200.0F, 0, 1, 36000, 10.0F, 1.0F, 0.0F), 3000) << "without a period there is no correction";
}

TEST(TStepperWaveToSteps, PolynomialIsSummedInSinglePrecisionFromTheConstantUp) {
  const float c[5] = {3.1e-15F, -2.7e-11F, 1.3e-8F, 3.9e-4F, 0.0123F};
  const std::pair<float, std::int64_t> places[] = {{3.3F, 8650108442}, {133.3F, 41061808357}, {1111.1F, 282526511078}};
  for (const auto& [x, steps] : places) {
    EXPECT_EQ(Steps(x, 0, 2, 4'000'000'000'000UL, 0, 0, 0, c), steps) << x;
  }
}

TEST(TStepperWaveToSteps, NumbersBeyond64BitsAreBounded) {
  constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
  EXPECT_EQ(static_cast<std::uint64_t>(Steps(2400.0F, 0, 2, kMost)) >> 61, 1U) << "2^62, a quarter revolution";
  const std::int64_t beyond = Steps(1200.0F, 0, 2, 36000, -1e19F, 1.5707964F, 1e12F);
  EXPECT_LT(beyond, 0);
  EXPECT_NEAR(static_cast<double>(static_cast<std::uint64_t>(beyond)), 1e19, 1e13)
      << "2^63 and above come out as the unsigned image";
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36000, -3e38F, 1.5707964F, 1e12F), -1);
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36000, 3e38F, 1.5707964F, 1e12F), std::numeric_limits<std::int64_t>::min());
}

TEST(TWavelengthConversion, MicrometresAreDividedAndAShiftOfZeroIsTheExcitationUnchecked) {
  using C = TWavelengthConversion;
  EXPECT_EQ(C::ToNm(0.7F, C::kWavelength, C::kMicrometres, 0.0F), 0.7F / 0.001F);
  EXPECT_NEAR(C::ToNm(1000.0F, C::kRamanShift, C::kMicrometres, 532.0F), 561.893F, 1e-3F) << "whatever the unit";
  EXPECT_EQ(C::ToNm(0.0F, C::kRamanShift, C::kMicrometres, -3.0F), -3.0F);
}

}  // namespace
