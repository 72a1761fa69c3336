#include "controller/MotionController.h"

#include <gmock/gmock.h>

#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

class ControllerLine : public testing::Test {
 protected:
  void Send(std::string_view text) {
    mController.FromHost({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  }
  std::string Receive(milliseconds after) {
    mNow += after;
    std::vector<std::uint8_t> buffer(1UL << 22U);
    buffer.resize(mController.ToHost(buffer));
    return {buffer.begin(), buffer.end()};
  }
  std::string Exchange(std::string_view text) {
    Send(text);
    return Receive(std::chrono::seconds(10));
  }
  void Arm(const char* json) { mController.Arm(ParseReplyFault(json)); }

  microseconds mNow{1000};
  SimulationLog mLog;
  MotionController mController{DefaultInstrument(), &mLog, "unit", [this] { return mNow; }};
};

TEST_F(ControllerLine, FramesRepliesHoweverTheLinesAreSplit) {
  EXPECT_EQ(Exchange("SAVEINFO 5,77\rSAVEINFO? 5\rHello\rFILTER 9\r\rFIL"),
            "OK\rSAVEINFO? 5\r\n77\r\nOK\rOK\rE03\rE01\r");
  EXPECT_EQ(Exchange("TER?\r"), "FILTER?\r\n1\r\nOK\r");
  EXPECT_THAT(mLog.Text(), testing::EndsWith("unit > FILTER?\nunit < FILTER?\\r\\n1\\r\\nOK\\r\n"));
}

TEST_F(ControllerLine, OverlongAndBinaryLinesAreUnknownWords) {
  EXPECT_EQ(Exchange(std::string(100000, 'A') + "\r"), "E01\r");
  EXPECT_EQ(Exchange(std::string("\0\x01\xFF\r\x80\r", 6)), "E01\rE01\r");
}

TEST_F(ControllerLine, AHostThatNeverReadsDoesNotFillTheMemory) {
  for (int i = 0; i < 300000; ++i) {
    Send("SYSTEMINFO?\r");
  }
  EXPECT_LE(Receive(milliseconds(0)).size(), 1UL << 20U);
  EXPECT_LE(mController.Lines().size(), 200000U);
  EXPECT_EQ(Exchange("Hello\r"), "OK\r");
}

TEST_F(ControllerLine, FaultsHitTheLineTheyAreArmedFor) {
  Arm(R"({"command": "FILTER?", "occurrence": 2, "reply": "X\nE03\r"})");
  Arm(R"({"command": "GRATING?", "silence": true, "repeat": true})");
  Arm(R"({"command": "Hello", "stale": "left\r"})");
  EXPECT_EQ(Exchange("FILTER?\rFILTER?\r"), "FILTER?\r\n1\r\nOK\rX\nE03\r");
  EXPECT_EQ(Exchange("GRATING?\rGRATING?\r"), "");
  EXPECT_EQ(Exchange("Hello\rHello\r"), "left\rOK\rOK\r");
  EXPECT_EQ(mController.FaultHits(), 4);
}

TEST_F(ControllerLine, AReplyComesWithAnotherValueWithNoneCutOrOnceMore) {
  Arm(R"({"value": "x"})");
  Arm(R"({"occurrence": 2, "echo": true})");
  Arm(R"({"occurrence": 3, "cut": 9})");
  Arm(R"({"occurrence": 5, "previous": true})");
  EXPECT_EQ(Exchange("FILTER?\r"), "FILTER?\r\nx\r\nOK\r");
  EXPECT_EQ(Exchange("FILTER?\r"), "FILTER?\r\nOK\r");
  EXPECT_EQ(Exchange("FILTER?\r"), "FILTER?\r\n");
  EXPECT_EQ(Exchange("GRATING?\rFILTER 3\r"), "GRATING?\r\n1\r\nOK\rGRATING?\r\n1\r\nOK\r");
  EXPECT_EQ(Exchange("FILTER?\r"), "FILTER?\r\n3\r\nOK\r");
}

TEST_F(ControllerLine, ALineAnsweredByAnErrorWordIsNotCarriedOut) {
  Arm(R"({"command": "MOVETO", "error": "E11"})");
  EXPECT_EQ(Exchange("MOVETO 700\r"), "E11\r");
  EXPECT_EQ(Exchange("POSITION?\r"), "POSITION?\r\n500.0000\r\nOK\r");
  EXPECT_EQ(Exchange("MOVETO 700\r"), "OK\r");
}

TEST_F(ControllerLine, ASplitReplyPauses) {
  Arm(R"({"split": {"at": 4, "gap": 30}})");
  Send("FILTER?\r");
  EXPECT_EQ(Receive(milliseconds(0)), "FILT");
  EXPECT_EQ(Receive(milliseconds(30)), "ER?\r\n1\r\nOK\r");
}

TEST_F(ControllerLine, AMoveIsAnsweredWhenItHasEnded) {
  Send("MOVETO 600\r");
  EXPECT_EQ(Receive(milliseconds(39)), "");
  EXPECT_EQ(Receive(milliseconds(1)), "OK\r");
}

}  // namespace
}  // namespace corvane::sim
