#include "components/TCorvaneMerakStepTurret.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "components/optics/TStepperWaveToSteps.h"
#include "components/optics/TWavelengthConversion.h"
#include "support/ScriptedInstrument.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

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
    EXPECT_EQ(Turret().GetGrating(grating), merak::kSuccess);
    return grating;
  }
  /// The one move since the last call; "" without one.
  std::string TakeMove() {
    Lines moves = mInstrument.Take();
    std::erase_if(moves, [](const std::string& line) { return line.find("Step_abs") != 0; });
    EXPECT_LE(moves.size(), 1U);
    return moves.empty() ? "" : moves.front();
  }
  /// Where the turret is sent for this grating's zero order.
  std::string Home(int grating) {
    EXPECT_EQ(Turret().SetGrating(grating, TMCorvaneGratingStrategy::kGoHome), merak::kSuccess);
    return TakeMove();
  }
  void SetPorts(const std::string& port) {
    mInstrument.values["EXITPORT"] = port;
    mInstrument.values["ENTRANCEPORT"] = port;
  }
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
  // Grating 2 has 600 lines: twice the wavelength for the same angle. Its sine correction is of 10 steps everywhere.
  mInstrument.values["Step"] = "12150";
  SetPorts("1");
  mInstrument.eeprom.Put(317 + 12, 7);
  mInstrument.eeprom.Put(284, 10.0F);
  mInstrument.eeprom.Put(276, 1.5707964F);
  mInstrument.eeprom.Put(280, 1e12F);
  EXPECT_EQ(Turret().SetWavelength(2400.0F), merak::kSuccess);
  EXPECT_EQ(TakeMove(), "Step_abs 15097") << "12100 + 7 + 3000 - 10";
  mController->SetStructureVersion("1.3");
  EXPECT_EQ(Turret().SetWavelength(2400.0F), merak::kSuccess);
  EXPECT_EQ(TakeMove(), "Step_abs 15110") << "one entrance only, and the correction is added";
}

TEST_F(StepTurret, AFailedMoveKeepsTheWavelength) {
  mInstrument.errors["Step_abs"] = "E10";
  EXPECT_EQ(Turret().SetWavelength(500.0F), merak::kCoarseTurretError);
  EXPECT_EQ(mController->GetCurrentWavelength(), 600.0F);
}

TEST_F(StepTurret, PortsThatCannotBeReadDoNotKeepTheWavelengthFromBeingSet) {
  Turret();
  mInstrument.errors = {{"EXITPORT", "E04"}, {"ENTRANCEPORT", "E04"}};
  EXPECT_EQ(Turret().SetWavelength(1200.0F), merak::kSuccess);
  EXPECT_EQ(mController->GetCurrentWavelength(), 1200.0F);
}

TEST_F(StepTurret, NumbersThatNameNoPositionAreFailures) {
  Turret();
  const std::pair<const char*, const char*> numbers[] = {
      {"Step", "garbage"}, {"Step", "-1"},           {"Step", "36000"},           {"TOTALSTEPS", "garbage"},
      {"TOTALSTEPS", "0"}, {"TOTALSTEPS", "-36000"}, {"TOTALSTEPS", "4000000000"}};
  for (const auto& [word, value] : numbers) {
    SCOPED_TRACE(std::string(word) + " " + value);
    const std::string sound = std::exchange(mInstrument.values[word], value);
    int grating = 77;
    EXPECT_EQ(Turret().GetGrating(grating), merak::kIoError);
    EXPECT_EQ(grating, 77);
    EXPECT_EQ(Turret().SetGratingOffset(1, 40), merak::kIoError);
    EXPECT_EQ(mController->GetActiveTurretGratingOffset(0), 0) << "not stored";
    EXPECT_EQ(Turret().SetDetectorOffset(0, 0, 60), merak::kIoError);
    mController->SetDetectorOffset(0, 0, 0);
    EXPECT_EQ(TakeMove(), "");
    mInstrument.values[word] = sound;
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
  mController->SetGratingStart(0, 2, 36000);
  EXPECT_EQ(Home(3), "Step_abs 0") << "a whole revolution is no position";
  mController->SetGratingStart(0, 2, 35000);
  mController->SetCurrentWavelength(4800.0F);
  Turret().SetGrating(3, TMCorvaneGratingStrategy::kKeepWavelength);
  EXPECT_EQ(TakeMove(), "Step_abs 2000") << "3000 steps with its 300 lines, 38000 in all";
}

TEST_F(StepTurret, GratingOffsetMovesTheTurretOnlyWithTheCurrentGrating) {
  EXPECT_EQ(Turret().SetGratingOffset(2, 25), merak::kSuccess);
  EXPECT_EQ(TakeMove(), "") << "grating 1 is in place";
  EXPECT_EQ(mController->GetActiveTurretGratingOffset(1), 25);
  EXPECT_EQ(Turret().SetGratingOffset(1, 40), merak::kSuccess);
  EXPECT_EQ(TakeMove(), "Step_abs 190");
  EXPECT_EQ(Turret().SetGratingOffset(1, -30), merak::kSuccess);
  EXPECT_EQ(TakeMove(), "Step_abs 80") << "150 - 70";
}

TEST_F(StepTurret, DetectorOffsetMovesTheTurretOnlyWithItsPorts) {
  mInstrument.values["Step"] = "35990";
  EXPECT_EQ(Turret().SetDetectorOffset(1, 0, 500), merak::kSuccess);
  EXPECT_EQ(mInstrument.Take(), Lines{});
  Turret().SetCurrentEntrancePort(1);
  EXPECT_EQ(Turret().SetDetectorOffset(1, 0, -35591), merak::kSuccess);
  EXPECT_EQ(TakeMove(), "Step_abs 35899") << "35990 - 36091, wrapped upwards";
}

TEST_F(StepTurret, DifferencesBeyondIntDoNotWrapRoundToAPosition) {
  Turret().SetDetectorOffset(0, 0, std::numeric_limits<int>::min());
  mInstrument.Take();
  Turret().SetDetectorOffset(0, 0, std::numeric_limits<int>::max());
  EXPECT_EQ(TakeMove(), "Step_abs 2147483647");
}

TEST_F(StepTurret, PortsAndGratingsThatDoNotExistAreRefused) {
  for (const int bad : {-1, 2}) {
    EXPECT_EQ(Turret().SetDetectorOffset(bad, 0, 1), merak::kInvalidParameter) << bad;
    EXPECT_EQ(Turret().SetDetectorOffset(0, bad, 1), merak::kInvalidParameter) << bad;
  }
  for (const int bad : {0, 4, 255, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Turret().SetGrating(bad, TMCorvaneGratingStrategy::kGoHome), merak::kUnknownError) << bad;
    EXPECT_EQ(Turret().SetGratingOffset(bad, 1), merak::kUnknownError) << bad;
  }
}

TEST_F(StepTurret, WithoutARecordOffsetsMoveNothing) {
  // A controller that could not be identified stays open: the turret could be driven, by offsets that nothing keeps.
  mInstrument.errors["SYSTEMINFO"] = "E04";
  auto controller = mInstrument.Connect();
  ASSERT_TRUE(controller->IsOpen());
  ASSERT_FALSE(controller->HasEepromRecord());
  TCorvaneMerakStepTurret turret(*controller);
  EXPECT_EQ(turret.SetGratingOffset(1, 40), merak::kDeviceNotOpen);
  EXPECT_EQ(turret.SetDetectorOffset(0, 0, 60), merak::kDeviceNotOpen);
  EXPECT_EQ(mInstrument.Take(), Lines{});
}

// ---- From wavelengths to steps ----

/// p = x / 2400.
constexpr float kLinear[5] = {0.0F, 0.0F, 0.0F, 1.0F / 2400.0F, 0.0F};
/// With a period so long that the sine is that of the phase alone, 1.
constexpr float kQuarter = 1.5707964F;
constexpr float kEndless = 1e12F;

struct Conversion {
  float x = 0.0F;
  int offset = 0;
  int version = 2;
  unsigned long total = 36000;
  float amplitude = 0.0F;
  float phase = 0.0F;
  float frequency = 0.0F;
  const float* coefficients = kLinear;
};

std::int64_t Steps(const Conversion& c) {
  return TStepperWaveToSteps(c.coefficients, c.amplitude, c.phase, c.frequency, c.total)
      .ToSteps(c.x, c.offset, c.version);
}

TEST(TStepperWaveToSteps, RoundsAwayFromZeroOnBothSides) {
  EXPECT_EQ(Steps({.x = 1200.0F, .offset = 77, .version = 1}), 77 + 3000);
  EXPECT_EQ(Steps({.x = 1200.0F, .total = 36005}), 3000) << "3000.4";
  EXPECT_EQ(Steps({.x = -1200.0F, .total = 36007}), -3001) << "-3000.6";
}

TEST(TStepperWaveToSteps, StaysAtTheZeroPositionBelowOneAndOutOfReach) {
  for (const int version : {1, 3}) {
    for (const float x : {0.5F, -0.99F, 2400.5F, -2400.5F}) {
      EXPECT_EQ(Steps({.x = x, .offset = 42, .version = version}), 42) << x;
    }
  }
  EXPECT_EQ(Steps({.x = 1.0F, .offset = 42}), 42 + 2);
  EXPECT_EQ(Steps({.x = 2400.0F, .offset = 42}), 42 + 9000) << "p = 1 is still within reach";
}

TEST(TStepperWaveToSteps, StaysAtTheZeroPositionWithHostileNumbers) {
  for (const float hostile : {kNaN, kInfinity, -kInfinity}) {
    const float coefficients[5] = {0.0F, 0.0F, 0.0F, 0.0F, hostile};
    EXPECT_EQ(Steps({.x = 500.0F, .offset = 42, .coefficients = coefficients}), 42);
    EXPECT_EQ(Steps({.x = hostile, .offset = 42}), 42);
    for (const int version : {1, 2}) {
      EXPECT_EQ(Steps({500.0F, 42, version, 36000, hostile, 0.1F, 100.0F}), 42);
      EXPECT_EQ(Steps({500.0F, 42, version, 36000, 1.0F, hostile, 100.0F}), 42);
    }
  }
}

TEST(TStepperWaveToSteps, SineCorrectionFollowsTheStructureAndItsPeriodInSteps) {
  const std::pair<Conversion, std::int64_t> cases[] = {
      {{1200.0F, 500, 1, 36000, 10.0F, kQuarter, kEndless}, 3510},
      {{1200.0F, 500, 2, 36000, 10.0F, kQuarter, kEndless}, 3490},
      // The older structure alone is cut at the zero position.
      {{1200.0F, 500, 1, 36000, -4000.0F, kQuarter, kEndless}, 500},
      {{1200.0F, 500, 2, 36000, 4000.0F, kQuarter, kEndless}, -500},
      {{.x = -1200.0F, .offset = 500, .version = 1}, 500},
      // 3000 steps are a quarter of the period; without one there is no correction.
      {{1200.0F, 0, 1, 36000, 10.0F, 0.0F, 12000.0F}, 3010},
      {{1200.0F, 0, 1, 36000, 10.0F, 1.0F, 0.0F}, 3000},
  };
  for (const auto& [conversion, steps] : cases) {
    EXPECT_EQ(Steps(conversion), steps);
  }
}

TEST(TStepperWaveToSteps, PolynomialIsSummedInSinglePrecisionFromTheConstantUp) {
  const float c[5] = {3.1e-15F, -2.7e-11F, 1.3e-8F, 3.9e-4F, 0.0123F};
  const std::pair<float, std::int64_t> places[] = {{3.3F, 8650108442}, {133.3F, 41061808357}, {1111.1F, 282526511078}};
  for (const auto& [x, steps] : places) {
    EXPECT_EQ(Steps({.x = x, .total = 4'000'000'000'000UL, .coefficients = c}), steps) << x;
  }
}

TEST(TStepperWaveToSteps, NumbersBeyond64BitsAreBounded) {
  constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
  EXPECT_EQ(Steps({.x = 2400.0F, .total = kMost}), 4'611'686'018'427'387'884) << "2^62 but for a rounding";
  const std::int64_t beyond = Steps({1200.0F, 0, 2, 36000, -1e19F, kQuarter, kEndless});
  EXPECT_LT(beyond, 0);
  EXPECT_NEAR(static_cast<double>(static_cast<std::uint64_t>(beyond)), 1e19, 1e13)
      << "2^63 and above come out as the unsigned image";
  EXPECT_EQ(Steps({1200.0F, 0, 2, 36000, -3e38F, kQuarter, kEndless}), -1);
  EXPECT_EQ(Steps({1200.0F, 0, 2, 36000, 3e38F, kQuarter, kEndless}), std::numeric_limits<std::int64_t>::min());
}

// ---- Units ----

using Wave = TWavelengthConversion;

TEST(TWavelengthConversion, WavelengthsInEveryUnit) {
  const struct {
    Wave::eWaveUnit unit;
    float value, nm;
  } rows[] = {{Wave::kMicrometres, 0.7F, 0.7F / 0.001F},
              {Wave::kWavenumbers, 20000.0F, 1.0F / (1e-7F * 20000.0F)},
              {Wave::kElectronVolts, 2.0F, 619.926F},
              {Wave::kNanometres, 450.0F, 450.0F},
              {static_cast<Wave::eWaveUnit>(7), 450.0F, 450.0F}};
  for (const auto& row : rows) {
    EXPECT_EQ(Wave::ToNm(row.value, Wave::kWavelength, row.unit, 0.0F), row.nm) << row.unit;
    EXPECT_FLOAT_EQ(Wave::FromNm(row.nm, Wave::kWavelength, row.unit, 0.0F), row.value) << row.unit;
    EXPECT_EQ(Wave::ToNm(0.0F, Wave::kWavelength, row.unit, 0.0F), Wave::kInvalid) << row.unit;
    EXPECT_EQ(Wave::FromNm(0.0F, Wave::kWavelength, row.unit, 0.0F), Wave::kInvalid) << row.unit;
  }
}

TEST(TWavelengthConversion, RamanShiftsAreWavenumbersWhateverTheUnit) {
  EXPECT_NEAR(Wave::ToNm(1000.0F, Wave::kRamanShift, Wave::kMicrometres, 532.0F), 561.893F, 1e-3F);
  EXPECT_NEAR(Wave::FromNm(561.893F, Wave::kRamanShift, Wave::kElectronVolts, 532.0F), 1000.0F, 0.05F);
  EXPECT_EQ(Wave::FromNm(532.0F, Wave::kRamanShift, Wave::kNanometres, 532.0F), 0.0F);
  EXPECT_EQ(Wave::ToNm(1000.0F, Wave::kRamanShift, Wave::kNanometres, 0.0F), Wave::kInvalid);
  EXPECT_EQ(Wave::FromNm(532.0F, Wave::kRamanShift, Wave::kNanometres, 0.0F), Wave::kInvalid);
  EXPECT_EQ(Wave::ToNm(0.0F, Wave::kRamanShift, Wave::kNanometres, -3.0F), -3.0F) << "the excitation, unchecked";
  EXPECT_EQ(Wave::ToNm(1000.0F, static_cast<Wave::eWaveType>(2), Wave::kNanometres, 532.0F), Wave::kInvalid);
}

}  // namespace
