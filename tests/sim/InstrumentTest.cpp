#include "controller/Instrument.h"

#include <gmock/gmock.h>

#include <sstream>

#include "controller/CommandSet.h"
#include "controller/Scenario.h"

namespace corvane::sim {
namespace {

/// What the lines, separated by semicolons, are answered: a value, "OK" for a command carried out, or the error word.
std::string Answers(Instrument& instrument, const std::string& lines) {
  std::string answers;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line, ';');) {
    const Reply reply = Execute(instrument, line);
    answers += (answers.empty() ? "" : ";") + (reply.kind == Reply::Kind::kDone ? "OK" : reply.text);
  }
  return answers;
}

TEST(CommandSet, AnInstrumentWithEveryPartDrivesThemAll) {
  Instrument instrument(*LoadScenario(SCENARIOS "/mx").i2c);
  constexpr const char* kSession[][2] = {
      {"SYSTEMINFO?", "Tivan,CV-MX,CV2002,MC2,V2.93"},
      {"PERIPHERAL?", "SI1,SI2,SO1,SO2,IPD,IPS,EPD,EPS,FIL,FOC"},
      {"GRATINGS?", "3,1800.00,400,0,1200.00,500,480000,300.00,1000,960000"},
      {"EEPROMINFO?", "1,1,1800.00,0,0,2,1200.00,480000,-14,3,300.00,960000,22"},
      {"MOVETO 612.1250;GRATING 3;POSITION?", "OK;OK;612.1250"},
      {"MOVETO 5000;GRATING 1;POSITION?", "OK;OK;0.0000"},  // beyond its reach: zero order
      {"MOVETO 930.7;MOVETO 930.8;MOVETO -0.1;POSITION?", "OK;E03;E03;930.7000"},
      {"GRATING 3;MOVETO 600;Step?;EXITPORT 1;EXITPORT?;MOVETO 600;Step?", "OK;OK;981377;OK;1;OK;981412"},
      {"EXITPORT 2;EXITPORT 0;GRATINGHOME;POSITION?;Step?", "E03;OK;OK;0.0000;960022"},
      {"Step_abs 0;GRATING?;TOTALSTEPS?", "OK;1;1440000"},
      {"FILTER 6;FILTER?;FILTER 7;FILTERHOME;FILTER?", "OK;6;E03;OK;1"},
      {"MOVE_FOCUS 0,250;MOVE_FOCUS 1,25;FOCUS?;MOVE_FOCUS 1,226;FOCUS?", "OK;OK;225;E03;225"},
      {"MOVE_FOCUS 0,2147483648;FOCUS_HOME;FOCUS?;FOCUS_TOTALSTEPS?", "E03;OK;0;4800"},
      {"SLIT_MODE? 4;SLIT_WIDTH 4, 24000;SLIT_WIDTH? 4", "SLIT-I24;OK;24000"},
      {"SLIT_WIDTH 1, 2500;SLITHOME 1;SLIT_WIDTH? 1", "OK;OK;10"},
      {"PORT_INPUT?;PORT_OUTPUT 3;PORT_INPUT?", "5;OK;53"},
      {"SHUTTER_MODE 1;SHUTTER_MODE?;SHUTTER_MODE 2", "OK;1;E03"},
      {"TURRET 2;TURRET?;MOVETO 500;TURRET 3;MOVETO 500", "OK;2;OK;OK;E03"},  // nothing is mounted as the third
  };
  for (const auto& [lines, answers] : kSession) {
    EXPECT_EQ(Answers(instrument, lines), answers) << lines;
  }
}

TEST(CommandSet, RejectedLinesNameTheReasonAndChangeNothing) {
  InstrumentDescription description = DefaultInstrument();
  description.parts.filterWheel = description.parts.focusMirror = false;
  description.parts.entranceFlipper = description.parts.exitFlipper = false;
  Instrument instrument(description);
  const std::string before = instrument.Memory().ToHex();
  const std::pair<const char*, std::vector<const char*>> rejected[] = {
      {"E01", {" ", "hello", "step?", "STEP_ABS 5", "Hello?", "SYSTEMINFO", "CONFIG_SYSTEM_DATA? 1"}},
      {"E02", {"SAVEINFO? 0", "SAVEINFO? 1025", "SAVEINFO 5000,1"}},
      {"E03",
       {"MOVETO", "MOVETO x", "MOVETO 5,5", "MOVETO nan", "MOVETO 1e9", "GRATING 4", "GRATING 1.5",
        "GRATING 99999999999", "Step_abs 1440000", "Step_abs -1", "SAVEINFO 1,256", "SAVEINFO 1", "SLIT_WIDTH 1, 2501",
        "SLIT_WIDTH 1, 9", "PORT_OUTPUT 16", "TURRET 4"}},
      {"E05", {"FILTER?", "FILTER 1", "FILTERHOME", "FILTER_MODE?"}},
      {"E09", {"SLIT_WIDTH? 2", "SLIT_WIDTH 4, 100", "SLITHOME 5", "SLIT_MODE? 0"}},
      {"E12", {"FOCUS?", "FOCUS_TOTALSTEPS?", "MOVE_FOCUS 0,1", "FOCUS_HOME", "EXITPORT 0", "ENTRANCEPORT 1"}},
  };
  for (const auto& [error, lines] : rejected) {
    for (const char* const line : lines) {
      EXPECT_EQ(Answers(instrument, line), error) << line;
    }
  }
  EXPECT_EQ(instrument.Memory().ToHex(), before);
  EXPECT_EQ(Answers(instrument, "POSITION?;PERIPHERAL?;EXITPORT?"), "500.0000;SI1,SO1,IPD,EPD;0");
}

TEST(CommandSet, RecordsWithoutSenseAnswerPositionUnknown) {
  InstrumentDescription description = DefaultInstrument();
  description.memoryPatches = {{67, {0, 0, 0xC0, 0x7F}}};  // angular deviation: not a number
  Instrument instrument(description);
  EXPECT_EQ(Answers(instrument, "POSITION?;MOVETO 500"), "E10;E03");
  EXPECT_TRUE(instrument.TrueCentre().has_value()) << "the optics are as they were";
}

TEST(Instrument, AnOffsetInTheRecordCancelsAMechanicalError) {
  InstrumentDescription description = DefaultInstrument();
  description.drive.zeroErrors = {1000, 0, 0};
  Instrument instrument(description);
  EXPECT_EQ(Answers(instrument, "MOVETO 550;POSITION?"), "OK;550.0000") << "the firmware does not know";
  EXPECT_LT(*instrument.TrueCentre(), 545.0);
  EXPECT_EQ(Answers(instrument, "SAVEINFO 293,232;SAVEINFO 294,3;MOVETO 550"), "OK;OK;OK");  // 1000 steps
  EXPECT_NEAR(*instrument.TrueCentre(), 550.0, 1e-4);
}

TEST(Instrument, SurvivesAnyMemory) {
  for (int byte = 0; byte < 256; ++byte) {
    for (const int first : {1, 31}) {  // with and without the structure version, and beyond the end
      InstrumentDescription description = DefaultInstrument();
      description.memoryPatches = {{first, std::vector<unsigned char>(2000, static_cast<unsigned char>(byte))}};
      Instrument instrument(description);
      for (int grating = 0; grating < 5; ++grating) {
        instrument.SelectGrating(grating);
        instrument.MoveTo(500.0);
        instrument.Wavelength();
        EXPECT_GE(instrument.Step(), 0);
        EXPECT_LT(instrument.Step(), instrument.TotalSteps());
      }
      EXPECT_TRUE(instrument.StepTo(1439999));
      EXPECT_FALSE(instrument.StepTo(1440000));
      EXPECT_FALSE(instrument.StepTo(-1));
    }
  }
}

}  // namespace
}  // namespace corvane::sim
