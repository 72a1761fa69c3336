// The focus mirror while the controller does not list its parts: no exception, and no move past an end.
#include <CorvaneCIF.h>

#include "InstrumentFixture.h"

namespace {

class LostList : public Instrument {
 protected:
  void SetUp() override {
    ASSERT_NO_FATAL_FAILURE(Open({{"parts", {{"focusMirror", {{"totalSteps", 1000}}}}}}));
    ASSERT_EQ(CorvaneSetFocusMirror(0, 900), CORVANE_SUCCESS);
  }
  void LoseList(int number) {
    Lab().ArmReplyFault({{"command", "PERIPHERAL?"}, {"occurrence", number}, {"error", "E04"}});
  }
  void ExpectAt(int expected) {
    int position = 0;
    EXPECT_EQ(CorvaneGetFocusMirror(0, &position), CORVANE_SUCCESS);
    EXPECT_EQ(position, expected);
  }
};

TEST_F(LostList, LeavesNoTravelToMoveIn) {
  LoseList(1);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 50), CORVANE_P2_INVALID);
  ExpectAt(900);
}

TEST_F(LostList, LeavesNoPositionToMoveFrom) {
  LoseList(2);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 50), CORVANE_COMMUNICATION_ERROR);
  Lab().ArmReplyFault({{"command", "PERIPHERAL?"}, {"occurrence", 2}, {"reply", "PERIPHERAL?\r\n\r\nOK\r"}});
  EXPECT_EQ(CorvaneSetFocusMirror(0, 500), CORVANE_COMMUNICATION_ERROR);
  ExpectAt(900);
}

TEST_F(LostList, IsAFailureOfTheMoveItself) {
  LoseList(3);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 50), CORVANE_COMMUNICATION_ERROR);
  ExpectAt(900);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 50), CORVANE_SUCCESS);
  ExpectAt(950);
}

}  // namespace
