// An instrument whose turret the library steps itself. Where a step is not told, a call ends with a failure and the
// turret stands where it stood; where a call succeeds, the turret stands where it belongs.
#include <CorvaneCIF.h>

#include <algorithm>

#include "InstrumentFixture.h"

using nlohmann::json;

namespace {

constexpr float kStart = 546.0F;

struct Move {
  const char* name;
  unsigned int (*call)();
};

void PrintTo(const Move& move, std::ostream* out) {
  *out << move.name;
}

class StepMode : public Instrument, public testing::WithParamInterface<Move> {
 protected:
  void SetUp() override {
    // The first zero order lies below step 0: no position means a grating without the number of steps of a turn.
    const json gratings = {
        {{"lines", 1200}, {"start", -3000}}, {{"lines", 600}, {"start", 470000}}, {{"lines", 150}, {"start", 940000}}};
    ASSERT_NO_FATAL_FAILURE(
        Open({{"record", {{"waveToStepsEnabled", true}}}, {"turrets", {{{"gratings", gratings}}}}}));
  }

  void GoToStart() {
    ASSERT_EQ(CorvaneSetGratingOffset(0, 1, 0), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneSetDetectorOffset(0, 0), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneSetGrating(0, 1), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneSetWavelength(0, kStart), CORVANE_SUCCESS);
  }
};

TEST_P(StepMode, MovesToTheRightPlaceOrNotAtAll) {
  ASSERT_NO_FATAL_FAILURE(GoToStart());
  const double start = Lab().TrueCentre();
  const std::size_t before = Lab().Lines().size();
  ASSERT_EQ(GetParam().call(), CORVANE_SUCCESS);
  const double target = Lab().TrueCentre();
  EXPECT_NE(target, start);
  const std::vector<std::string> lines = LinesSince(before);

  for (const std::string word : {"Step?", "TOTALSTEPS?"}) {
    const auto asked = std::count(lines.begin(), lines.end(), word);
    EXPECT_TRUE(asked > 0 || word == "Step?");
    const json faults[] = {
        {{"error", "E04"}}, {{"reply", word + "\r\n\r\nOK\r"}}, {{"reply", word + "\r\n-1\r\nOK\r"}}};
    for (json fault : faults) {
      for (int number = 1; number <= asked; ++number) {
        fault.update({{"command", word}, {"occurrence", number}});
        SCOPED_TRACE(fault.dump());
        ASSERT_NO_FATAL_FAILURE(GoToStart());
        Lab().ArmReplyFault(fault);
        EXPECT_EQ(GetParam().call(), CORVANE_COMMUNICATION_ERROR);
        EXPECT_EQ(Lab().TrueCentre(), start);
        float nm = 0;
        EXPECT_EQ(CorvaneGetWavelength(0, &nm), CORVANE_SUCCESS);
        EXPECT_EQ(nm, kStart);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, StepMode,
                         testing::Values(Move{"SetWavelength", [] { return CorvaneSetWavelength(0, 700.0F); }},
                                         Move{"GotoZeroOrder", [] { return CorvaneGotoZeroOrder(0); }},
                                         Move{"SetGrating", [] { return CorvaneSetGrating(0, 2); }},
                                         Move{"Reset", [] { return CorvaneWavelengthReset(0); }},
                                         Move{"SetGratingOffset", [] { return CorvaneSetGratingOffset(0, 1, 90); }},
                                         Move{"SetDetectorOffset", [] { return CorvaneSetDetectorOffset(0, 90); }}),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
