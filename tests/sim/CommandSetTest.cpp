#include "controller/ControllerInstrument.h"

#include <gmock/gmock.h>

#include <sstream>

#include "controller/CommandSet.h"
#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

/// What the lines, separated by semicolons, are answered: a value, "OK" for a command carried out, or the error word.
std::string Answers(ControllerInstrument& instrument, const std::string& lines) {
  std::string answers;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line, ';');) {
    const Reply reply = Execute(instrument, line);
    answers += (answers.empty() ? "" : ";") + (reply.kind == Reply::Kind::kDone ? "OK" : reply.text);
  }
  return answers;
}

// What the library never sends, or does not look at.
TEST(CommandSet, AnswersAsTheFirmwareDoes) {
  ControllerInstrument mx(*LoadScenario(SCENARIOS "/mx").i2c);
  ControllerInstrument sx(*LoadScenario(SCENARIOS "/sx").i2c);
  const struct {
    ControllerInstrument& instrument;
    const char *lines, *answers;
  } session[] = {
      {mx, "GRATING 3;MOVETO 5000;GRATING 1;POSITION?", "OK;OK;OK;0.0000"},  // beyond its reach: zero order
      {mx, "MOVETO 930.7;MOVETO 930.8;MOVETO -0.1;POSITION?", "OK;E03;E03;930.7000"},
      {mx, "GRATING 3;MOVETO 600;Step?;EXITPORT 1;EXITPORT?;MOVETO 600;Step?", "OK;OK;981377;OK;1;OK;981412"},
      {mx, "EXITPORT 2;EXITPORT 0;GRATINGHOME;POSITION?;Step?", "E03;OK;OK;0.0000;960022"},
      {mx, "GRATING 1;TURRET 2;TURRET?;MOVETO 500;TURRET 3;MOVETO 500",
       "OK;OK;2;OK;OK;E03"},  // nothing is mounted as the third
      {sx, "CONFIG_SYSTEM_DATA 83,a, b,c;CONFIG_SYSTEM_DATA? 83", "OK;a, b,c"},
      {sx, "CONFIG_SYSTEM_DATA 83,;CONFIG_SYSTEM_DATA? 83;CONFIG_SYSTEM_DATA 83", "OK;;E03"},
      {sx, "CONFIG_SYSTEM_DATA? 128;CONFIG_SYSTEM_DATA 128,5;CONFIG_SYSTEM_DATA? x", "E02;E02;E03"},
      {sx, "GRATING 2;MOVETO 0;Step?;CONFIG_SYSTEM_DATA 56,20;MOVETO 0;Step?", "OK;OK;360009;OK;OK;360020"},
      {sx, "TURRET 99;TURRET?;CONFIG_SYSTEM_DATA 114,1;GRATINGS?;TURRET 4", "OK;99;OK;1,1200.00,500;E03"},
      {sx, "CONFIG_SYSTEM_DATA 7,x;GRATING 1;CONFIG_SYSTEM_DATA 122,;GRATINGS?;POSITION?", "OK;OK;OK;;E10"},
      {sx, "SAVEINFO? 1;ENTRANCEPORT?;ENTRANCEPORT 1;PORT_INPUT?;PORT_OUTPUT 1;GOODBYE", "E01;0;E12;E12;E12;OK"},
  };
  for (const auto& [instrument, lines, answers] : session) {
    EXPECT_EQ(Answers(instrument, lines), answers) << lines;
  }
}

TEST(CommandSet, RejectedLinesNameTheReasonAndChangeNothing) {
  InstrumentDescription description = DefaultInstrument();
  description.parts.filterWheel = description.parts.focusMirror = false;
  description.parts.entranceFlipper = description.parts.exitFlipper = false;
  ControllerInstrument instrument(description);
  const std::string before = instrument.Memory().ToHex();
  const std::pair<const char*, std::vector<const char*>> rejected[] = {
      {"E01", {" ", "step?", "STEP_ABS 5", "Hello?", "SYSTEMINFO", "CONFIG_SYSTEM_DATA? 1"}},
      {"E02", {"SAVEINFO? 0", "SAVEINFO? 1025", "SAVEINFO 5000,1"}},
      {"E03",
       {"MOVETO", "MOVETO 5,5", "MOVETO nan", "MOVETO 1e9", "GRATING 4", "GRATING 1.5", "GRATING 99999999999",
        "Step_abs 1440000", "Step_abs -1", "SAVEINFO 1,256", "SLIT_WIDTH 1, 2501", "SLIT_WIDTH 1, 9"}},
      {"E05", {"FILTER?", "FILTER 1", "FILTERHOME", "FILTER_MODE?"}},
      {"E09", {"SLIT_WIDTH? 2", "SLITHOME 5", "SLIT_MODE? 0"}},
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

}  // namespace
}  // namespace corvane::sim
