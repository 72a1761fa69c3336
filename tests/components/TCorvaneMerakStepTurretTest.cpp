#include "components/TCorvaneMerakStepTurret.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "components/Instrument.h"

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

TEST_F(StepTurret, WavelengthGoesOutAsOneStepPosition) {
  mInstrument.eeprom.Put(293, 20);
  mInstrument.eeprom.Put(317, 3);
  EXPECT_EQ(Turret().SetWavelength(1200.0F), 0U);
  const Lines lines = mInstrument.Take();
  ASSERT_EQ(lines.size(), 12U);
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 8),
            (Lines{"TOTALSTEPS?", "Step?", "TOTALSTEPS?", "EXITPORT?", "ENTRANCEPORT?", "EXITPORT?", "ENTRANCEPORT?",
                   "Step_abs 3123"}));
  EXPECT_EQ(mInstrument.eeprom.FloatAt(289), 1200.0F) << "kept as the current wavelength";
  float nm = 0.0F;
  EXPECT_EQ(Turret().GetWavelength(nm), 0U);
  EXPECT_EQ(nm, 1200.0F);
  EXPECT_TRUE(mInstrument.Take().empty());

  Turret().SetWavelength(1200.0F);
  EXPECT_EQ(mInstrument.Take().size(), 8U) << "the same wavelength is not written again";
}

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
  int grating = 77;
  EXPECT_EQ(Turret().GetGrating(grating), 1U);
  EXPECT_EQ(grating, 77);
}

TEST_F(StepTurret, PositionThatCannotBeReadMovesNothing) {
  Turret();
  // Garbage, nothing, and replies without the query's echo, which the third time are taken for an empty one.
  const char* const noEcho = "OK\rOK\rOK";
  for (const char* reply : {"garbage", "", "-", noEcho}) {
    if (reply == noEcho) {
      mInstrument.errors["Step"] = reply;
    }
    mInstrument.values["Step"] = reply;
    int grating = 77;
    EXPECT_EQ(Turret().GetGrating(grating), 4U) << reply;
    EXPECT_EQ(grating, 77);
    EXPECT_EQ(Turret().SetGratingOffset(1, 40), 4U);
    EXPECT_EQ(mController->GetActiveTurretGratingOffset(0), 0) << "nothing is stored when the grating is unknown";
    mInstrument.Take();
    mController->SetDetectorOffset(0, 0, 0);
    EXPECT_EQ(Turret().SetDetectorOffset(0, 0, 60), 4U);
    EXPECT_EQ(mInstrument.Take(), (Lines{"TOTALSTEPS?", "Step?"})) << "no move";
  }
  mInstrument.errors["Step"] = "E10";
  EXPECT_EQ(Turret().SetDetectorOffset(0, 0, 61), 10U);
  EXPECT_EQ(mInstrument.Take(), (Lines{"TOTALSTEPS?", "Step?"})) << "the code of the read, and no move";
}

TEST_F(StepTurret, FindsTheGratingBelowThePosition) {
  EXPECT_EQ(GratingAt(100), 1);
  EXPECT_EQ(mInstrument.Take(), (Lines{"Step?", "TOTALSTEPS?", "EXITPORT?", "ENTRANCEPORT?"}));
  EXPECT_EQ(GratingAt(12099), 1);
  EXPECT_EQ(GratingAt(12100), 2);
  EXPECT_EQ(GratingAt(24100), 3);
  EXPECT_EQ(GratingAt(99), 3) << "one revolution on, beyond every grating";
}

TEST_F(StepTurret, PositionsAboveANegativeZeroAreNegative) {
  SetStarts(-200, 0, 100);
  EXPECT_EQ(GratingAt(35800), 1) << "-200";
  EXPECT_EQ(GratingAt(35999), 1) << "-1";
  EXPECT_EQ(GratingAt(0), 2);
  EXPECT_EQ(GratingAt(35799), 3);
  // Without the number of steps nothing is wrapped, and -200 is not reached.
  mInstrument.errors["TOTALSTEPS"] = "E04";
  EXPECT_EQ(GratingAt(35800), 3);
}

TEST_F(StepTurret, PositionBelowEveryZeroIsTheLastGrating) {
  // Unwrapped with the port known so far, compared with the port just read: 300 lies below all three.
  mInstrument.eeprom.Put(317 + 4, 500);
  mInstrument.values["EXITPORT"] = "1";
  EXPECT_EQ(GratingAt(300), 3);
  EXPECT_EQ(GratingAt(600), 1);
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

TEST_F(StepTurret, SetGratingUsesTheGratingAskedFor) {
  EXPECT_EQ(Turret().SetGrating(2, TMCorvaneGratingStrategy::kGoHome), 0U);
  const Lines lines = mInstrument.Take();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 4),
            (Lines{"TOTALSTEPS?", "EXITPORT?", "ENTRANCEPORT?", "Step_abs 12100"}));
  EXPECT_EQ(mInstrument.eeprom.FloatAt(289), 0.0F);
  for (const int bad : {0, 4, -7, 255, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(Turret().SetGrating(bad, TMCorvaneGratingStrategy::kGoHome), 1U);
    EXPECT_TRUE(mInstrument.Take().empty());
    EXPECT_EQ(Turret().SetGratingOffset(bad, 1), 1U);
    mInstrument.Take();
  }
}

TEST_F(StepTurret, GratingOffsetMovesTheTurretOnlyWithTheCurrentGrating) {
  EXPECT_EQ(Turret().SetGratingOffset(2, 25), 0U);
  EXPECT_EQ(mInstrument.Take().size(), 4U) << "grating 1 is in place: asked, stored, not moved";
  EXPECT_EQ(mController->GetActiveTurretGratingOffset(1), 25);

  EXPECT_EQ(Turret().SetGratingOffset(1, 40), 0U);
  EXPECT_EQ(Turret().SetGratingOffset(1, -30), 0U);
  const Lines lines = mInstrument.Take();
  ASSERT_EQ(lines.size(), 14U);
  EXPECT_EQ(Lines(lines.begin() + 4, lines.begin() + 7), (Lines{"TOTALSTEPS?", "Step?", "Step_abs 190"}));
  EXPECT_EQ(lines.back(), "Step_abs 80") << "150 - 70";
  mInstrument.errors["Step"] = "E09";
  EXPECT_EQ(Turret().SetGratingOffset(1, 0), 2U);
  EXPECT_EQ(mController->GetActiveTurretGratingOffset(0), -30) << "nothing is stored when the grating is unknown";
}

TEST_F(StepTurret, DetectorOffsetMovesTheTurretOnlyWithItsPorts) {
  mInstrument.values["Step"] = "35990";
  EXPECT_EQ(Turret().SetDetectorOffset(1, 0, 500), 0U);
  EXPECT_TRUE(mInstrument.Take().empty());
  EXPECT_EQ(Turret().SetDetectorOffset(0, 0, 60), 0U);
  EXPECT_EQ(mInstrument.Take(), (Lines{"TOTALSTEPS?", "Step?", "Step_abs 50"}));
  EXPECT_EQ(Turret().SetCurrentEntrancePort(1), 0U);
  EXPECT_EQ(Turret().SetDetectorOffset(1, 0, -35591), 0U);
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 35899") << "35990 - 36091, wrapped upwards";
  for (const int bad : {-1, 2}) {
    EXPECT_EQ(Turret().SetDetectorOffset(bad, 0, 1), 6U);
    EXPECT_EQ(Turret().SetDetectorOffset(0, bad, 1), 6U);
    EXPECT_EQ(Turret().SetCurrentExitPort(bad), 6U);
    EXPECT_EQ(Turret().SetCurrentEntrancePort(bad), 6U);
  }
  // Differences beyond int do not wrap round to a position.
  Turret().SetDetectorOffset(1, 0, std::numeric_limits<int>::min());
  mInstrument.Take();
  Turret().SetDetectorOffset(1, 0, std::numeric_limits<int>::max());
  EXPECT_EQ(mInstrument.Take().back(), "Step_abs 2147483647");
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

}  // namespace
