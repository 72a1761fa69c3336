#include "controller/CommandSet.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <utility>

#include "controller/ControllerInstrument.h"
#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

/// Of lines and their answers: a value, "OK" for a command carried out, or the error word.
void ExpectAnswers(ControllerInstrument& instrument, std::initializer_list<std::pair<const char*, const char*>> list) {
  for (const auto& [line, answer] : list) {
    const Reply reply = Execute(instrument, line);
    EXPECT_EQ(reply.kind == Reply::Kind::kDone ? "OK" : reply.text, answer) << line;
  }
}

// What the library never sends, or does not look at.
struct CommandSet : testing::Test {
  ControllerInstrument mx{*LoadScenario(SCENARIOS "/mx").i2c};
  ControllerInstrument sx{*LoadScenario(SCENARIOS "/sx").i2c};
};

TEST_F(CommandSet, AGratingThatDoesNotReachTheWavelengthGoesToZeroOrder) {
  ExpectAnswers(mx, {{"GRATING 3", "OK"}, {"MOVETO 5000", "OK"}, {"GRATING 1", "OK"}, {"POSITION?", "0.0000"}});
}

TEST_F(CommandSet, ValuesBeyondTheReachOfAPartAreRefused) {
  ExpectAnswers(mx, {{"GRATING 1", "OK"}, {"MOVETO 930.7", "OK"}, {"MOVETO 930.8", "E03"}, {"MOVETO -0.1", "E03"}});
  ExpectAnswers(mx, {{"POSITION?", "930.7000"}, {"SLIT_WIDTH 1, 9", "E03"}, {"SLIT_WIDTH 1, 2501", "E03"}});
}

TEST_F(CommandSet, EachExitPortHasItsZeroOrder) {
  ExpectAnswers(mx, {{"GRATING 3", "OK"}, {"MOVETO 600", "OK"}, {"Step?", "981377"}});
  ExpectAnswers(mx, {{"EXITPORT 1", "OK"}, {"EXITPORT?", "1"}, {"MOVETO 600", "OK"}, {"Step?", "981412"}});
  ExpectAnswers(mx, {{"EXITPORT 2", "E03"}, {"EXITPORT 0", "OK"}, {"GRATINGHOME", "OK"}, {"Step?", "960022"}});
}

TEST_F(CommandSet, ATurretWithoutGratingsTakesNoMove) {
  ExpectAnswers(mx, {{"TURRET 2", "OK"}, {"TURRET?", "2"}, {"MOVETO 500", "OK"}});
  ExpectAnswers(mx, {{"TURRET 3", "OK"}, {"MOVETO 500", "E03"}});
}

TEST_F(CommandSet, TextsAreEverythingBehindTheFirstComma) {
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA 83,a, b,c", "OK"}, {"CONFIG_SYSTEM_DATA? 83", "a, b,c"}});
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA 83,", "OK"}, {"CONFIG_SYSTEM_DATA? 83", ""}});
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA 83", "E03"}, {"CONFIG_SYSTEM_DATA? x", "E03"}});
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA? 128", "E02"}, {"CONFIG_SYSTEM_DATA 128,5", "E02"}});
}

TEST_F(CommandSet, AnOffsetWrittenToATextMovesZeroOrder) {
  ExpectAnswers(sx, {{"GRATING 2", "OK"}, {"MOVETO 0", "OK"}, {"Step?", "360009"}});
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA 56,20", "OK"}, {"MOVETO 0", "OK"}, {"Step?", "360020"}});
}

TEST_F(CommandSet, OfAnUnlistedTurretAnSxKnowsWhatItsRecordSaysOfTheFirst) {
  ExpectAnswers(sx, {{"TURRET 99", "OK"}, {"TURRET?", "99"}, {"TURRET 4", "E03"}});
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA 114,1", "OK"}, {"GRATINGS?", "1,1200.00,500"}});
  ExpectAnswers(sx, {{"CONFIG_SYSTEM_DATA 122,", "OK"}, {"GRATINGS?", ""}, {"POSITION?", "E10"}});
}

TEST(CommandSetOfABare, RejectedLinesNameTheReasonAndChangeNothing) {
  ControllerInstrument bare(*LoadScenario(SCENARIOS "/bare").i2c);
  const std::string memory = bare.Memory().ToHex();
  ExpectAnswers(bare, {{" ", "E01"}, {"step?", "E01"}, {"STEP_ABS 5", "E01"}, {"Hello?", "E01"}});
  ExpectAnswers(bare, {{"SAVEINFO? 0", "E02"}, {"SAVEINFO? 1025", "E02"}, {"SAVEINFO 5000,1", "E02"}});
  ExpectAnswers(bare, {{"MOVETO", "E03"}, {"MOVETO 5,5", "E03"}, {"MOVETO nan", "E03"}, {"MOVETO 1e9", "E03"}});
  ExpectAnswers(bare, {{"GRATING 4", "E03"}, {"GRATING 1.5", "E03"}, {"GRATING 99999999999", "E03"}});
  ExpectAnswers(bare, {{"Step_abs 1440000", "E03"}, {"Step_abs -1", "E03"}, {"SAVEINFO 1,256", "E03"}});
  ExpectAnswers(bare, {{"FILTER?", "E05"}, {"FILTERHOME", "E05"}, {"SLIT_WIDTH? 1", "E09"}, {"SLITHOME 5", "E09"}});
  ExpectAnswers(bare, {{"FOCUS?", "E12"}, {"MOVE_FOCUS 0,1", "E12"}, {"EXITPORT 0", "E12"}, {"PORT_INPUT?", "E12"}});
  EXPECT_EQ(bare.Memory().ToHex(), memory);
  ExpectAnswers(bare, {{"POSITION?", "500.0000"}, {"EXITPORT?", "0"}});
}

}  // namespace
}  // namespace corvane::sim
