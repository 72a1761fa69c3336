#include "controller/MotionController.h"

#include <gmock/gmock.h>

#include "controller/Scenario.h"

namespace corvane::sim {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

class ControllerLine : public testing::Test {
 protected:
  void Send(std::string_view text) {
    mController.FromHost({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  }
  std::string Receive() {
    std::vector<std::uint8_t> buffer(1UL << 22U);
    buffer.resize(mController.ToHost(buffer));
    return {buffer.begin(), buffer.end()};
  }
  std::string Exchange(std::string_view text) {
    Send(text);
    mNow += std::chrono::seconds(10);
    return Receive();
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

TEST_F(ControllerLine, EndlessAndBinaryLinesAndUnreadRepliesAreBounded) {
  EXPECT_EQ(Exchange(std::string(100000, 'A') + "\r"), "E01\r");
  std::string bytes;
  for (int i = 0; i < 256; ++i) {
    bytes.push_back(static_cast<char>(i));
  }
  EXPECT_EQ(Exchange(bytes + "\r"), "E01\rE01\r") << "a carriage return is among them";
  for (int i = 0; i < 300000; ++i) {
    Send("SYSTEMINFO?\r");
  }
  EXPECT_LE(Receive().size(), 1UL << 20U);
  EXPECT_LE(mController.Lines().size(), 200000U);
  EXPECT_EQ(Exchange("Hello\r"), "OK\r") << "and goes on";
}

TEST_F(ControllerLine, AReplyIsDueWhenTheMotionHasEnded) {
  Send("MOVETO 600\rFILTER 2\r");
  EXPECT_EQ(mController.UntilOutput(), milliseconds(40));
  mNow += microseconds(39999);
  EXPECT_EQ(Receive(), "");
  mNow += microseconds(1);
  EXPECT_EQ(Receive(), "OK\r");
  EXPECT_EQ(mController.UntilOutput(), milliseconds(60)) << "motions follow each other";
}

TEST_F(ControllerLine, FaultsHitTheLineTheyAreArmedFor) {
  Arm(R"({"command": "MOVETO", "error": "E11"})");
  Arm(R"({"command": "FILTER?", "occurrence": 2, "reply": "X\nE03\r"})");
  Arm(R"({"command": "GRATING?", "silence": true, "repeat": true})");
  Arm(R"({"command": "Hello", "stale": "left\r"})");
  EXPECT_EQ(Exchange("MOVETO 700\rPOSITION?\r"), "E11\rPOSITION?\r\n500.0000\r\nOK\r") << "a refused move is none";
  EXPECT_EQ(Exchange("MOVETO 700\rFILTER?\r"), "OK\rFILTER?\r\n1\r\nOK\r");
  EXPECT_EQ(Exchange("FILTER?\r"), "X\nE03\r");
  EXPECT_EQ(Exchange("GRATING?\rGRATING?\r"), "");
  EXPECT_EQ(Exchange("Hello\rHello\r"), "left\rOK\rOK\r");
  EXPECT_EQ(mController.FaultHits(), 5);
}

TEST_F(ControllerLine, SplitAndSlowRepliesArriveInTime) {
  Arm(R"({"split": {"at": 4, "gap": 30}})");
  Send("FILTER?\r");
  EXPECT_EQ(Receive(), "FILT");
  mNow += milliseconds(30);
  EXPECT_EQ(Receive(), "ER?\r\n1\r\nOK\r");
  Arm(R"({"slow": 2})");
  Send("Hello\r");
  EXPECT_EQ(Receive(), "");
  mNow += milliseconds(5);
  EXPECT_EQ(Receive(), "OK") << "two of three characters";
}

}  // namespace
}  // namespace corvane::sim
