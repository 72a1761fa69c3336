#include "controller/TMerakOrbisCom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "ScriptedBus.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class TMerakOrbisComTest : public testing::Test {
 protected:
  TMerakOrbisComTest() { mDevice.responder = mController; }
  /// What the call prints.
  static std::string Traced(const std::function<void()>& call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
  }

  FakeTime mTime;
  ScriptedController mController;
  ScriptedBridge mBridge;
  ScriptedBridge::Device& mDevice = mBridge.Add();
  ScriptedBus mBus;
  TMerakOrbisCom mCom{nullptr};
  std::string mReply = "old";
  int mCount = -5;
};

TEST_F(TMerakOrbisComTest, OpensABridgeWithTimeoutsIdlePurgesAndGreeting) {
  mController.SetAnswer("Hello", "E01\r");
  EXPECT_EQ(mCom.Open(0, true), 0U) << "whatever becomes of the greeting";
  EXPECT_FALSE(mCom.IsAvailable());
  EXPECT_EQ(mDevice.written, "Hello\rHello\r");
  EXPECT_EQ(mCom.RestoreLongTimeouts(), 0U);
  EXPECT_THAT(mDevice.timeouts, ElementsAre(Pair(100U, 100U), Pair(100000U, 1000U)));
  EXPECT_THAT(mDevice.purges, ElementsAre(4U, 8U));
  EXPECT_EQ(mCom.Close(), 0U);
  EXPECT_FALSE(mDevice.isOpen);
  EXPECT_EQ(mCom.Close(), 3U);
  EXPECT_EQ(mCom.Open(5, false), 1U);
  EXPECT_EQ(mCom.Command("X"), 3U) << "a failed open leaves nothing open";
  EXPECT_EQ(mCom.Query("X", "", mReply), 3U);
  EXPECT_EQ(mCom.Basic("X", mReply), 3U);
}

TEST_F(TMerakOrbisComTest, IndexZeroIsTheControllerOnTheBusWhenThereIsOne) {
  mBridge.Add();
  TMerakOrbisCom com(&mBus);
  com.SetTrace(true);
  // One look whether a controller is there. Nothing is set up or told, and no bridge is touched.
  EXPECT_EQ(Traced([&] { com.Open(0, true); }), "");
  EXPECT_THAT(mBus.reads, ElementsAre(16));
  EXPECT_THAT(mBus.bursts, IsEmpty());
  EXPECT_EQ(mDevice.opens, 0);
  EXPECT_THAT(mDevice.timeouts, IsEmpty());
  EXPECT_THAT(mDevice.purges, IsEmpty());
  com.SetTrace(false);
  // Any other index is a bridge.
  EXPECT_EQ(com.Open(1, false), 0U);
  EXPECT_TRUE(mBridge.At(1).isOpen);
  mBus.absent = true;
  EXPECT_EQ(com.Open(0, false), 0U);
  EXPECT_TRUE(mDevice.isOpen);
  EXPECT_FALSE(mBridge.At(1).isOpen);
}

TEST_F(TMerakOrbisComTest, AQueryStripsItsEchoAndDropsUpToThreeRepliesWithoutIt) {
  mCom.Open(0, false);
  const struct {
    std::string bytes;
    MerakResult result;
    std::string reply;
  } cases[] = {
      {"FILTER?\r\n40\r\nOK\r", 0, "\n40\n"},
      // Told by the word alone, in any case; a reply of nothing but the echo stays.
      {"filter?OK\r", 0, "filter?"},
      {"stale\r\nOK\rOK\rFILTER?\r\n3\r\nOK\r", 0, "\n3\n"},
      {"Tivan_E14\rFILTER?\r\n4\r\nOK\r", 0, "\n4\n"},  // succeeds and has no echo
      {"E03\r", 6, "E03"},
      {"FILTER?\r\nE03\r", 1, "\nE03"},
      {"a\rOK\rb\rOK\rc\rOK\rFILTER?\r\n5\r\nOK\r", 0, ""},
  };
  for (const auto& query : cases) {
    mController.SetAnswer("FILTER?", query.bytes);
    EXPECT_EQ(mCom.Query("FILTER", "", mReply), query.result) << query.bytes;
    EXPECT_EQ(mReply, query.reply);
    EXPECT_FALSE(mCom.IsSilent());
  }
}

TEST_F(TMerakOrbisComTest, ARawReplyGetsACarriageReturnAlsoOnError) {
  mCom.Open(0, false);
  mController.SetAnswer("A", "value\nOK\r");
  EXPECT_EQ(mCom.Basic("A", mReply), 0U);
  EXPECT_EQ(mReply, "value\n\r");
  mController.SetAnswer("A", "E02\r");
  EXPECT_EQ(mCom.Basic("A", mReply), 8U);
  EXPECT_EQ(mReply, "E02\r");
  mDevice.writeStatus = FT_FAILED_TO_WRITE_DEVICE;
  mReply = "kept";
  EXPECT_EQ(mCom.Basic("A", mReply), 7U);
  EXPECT_EQ(mReply, "kept");
}

TEST_F(TMerakOrbisComTest, TellsSilenceFromFailureAndWaitsAsItsTimeoutsSay) {
  mCom.Open(0, true);
  mController.SetAnswer("X", "");
  std::uint64_t before = mTime.Slept();
  EXPECT_EQ(mCom.Command("X"), 4U);
  EXPECT_EQ(mTime.Slept() - before, 1'000'000U);
  EXPECT_TRUE(mCom.IsSilent());
  mCom.RestoreLongTimeouts();
  before = mTime.Slept();
  EXPECT_EQ(mCom.Command("X"), 4U);
  EXPECT_EQ(mTime.Slept() - before, 200'000'000U);
  EXPECT_EQ(mCom.Command("Y"), 0U);
  EXPECT_FALSE(mCom.IsSilent());
  mDevice.readStatus = FT_IO_ERROR;
  EXPECT_EQ(mCom.Command("Y"), 4U);
  EXPECT_FALSE(mCom.IsSilent());
}

TEST_F(TMerakOrbisComTest, WorksOverTheBus) {
  mController.SetValue("POSITION", "512.3000");
  mBus.responder = mController;
  TMerakOrbisCom com(&mBus);
  ASSERT_EQ(com.Open(0, false), 0U);
  EXPECT_EQ(com.Query("POSITION", "", mReply), 0U);
  EXPECT_EQ(mReply, "\n512.3000\n");
  EXPECT_THAT(mBus.bursts, ElementsAre("POSITION?\r"));
  mController.SetAnswer("X", "");
  EXPECT_EQ(com.Command("X"), 4U) << "at once: the bus has no waiting of its own";
  EXPECT_FALSE(com.IsSilent());
  mBus.endless = '\0';
  EXPECT_EQ(com.Command("X"), 4U);
  EXPECT_TRUE(com.IsSilent());
}

TEST_F(TMerakOrbisComTest, TracesWhatItDoesWithItsTime) {
  EXPECT_EQ(Traced([&] { mCom.Open(0, false); }), "");
  mController.SetAnswer("MOVETO 1", "doneOK\r");
  mController.SetValue("FILTER", "3");
  mCom.SetTrace(true);
  const std::string good = Traced([&] {
    mCom.Open(0, false);
    mDevice.answerDelayMs = 1005;
    mCom.Command("MOVETO", "1");
    mDevice.answerDelayMs = 0;
    mCom.Query("FILTER", "", mReply);
    mCom.Basic("MOVETO 1", mReply);
    mCom.GetDeviceCount(mCount);
  });
  // A line ended by a carriage return is followed by 1 ms of rest.
  EXPECT_EQ(good,
            "OPN+ Device : 0\nOPN- OK\nC+ Hello\r\nTook 0.0 seconds\nC-\n"
            "C+ MOVETO 1\r\nTook 1.5 seconds\nC-done\n"
            "Q+ FILTER?\r\nTook 0.2 seconds\nQ=FILTER?\n3\n\n"
            "B+\nB+ MOVETO 1\r\nTook 0.0 seconds\nB-done\r\n"
            "CNT+ \nCNT- Count : 1\n");
  mDevice.writeStatus = FT_IO_ERROR;
  mDevice.openStatus = FT_DEVICE_NOT_OPENED;
  mBridge.numberStatus = FT_OTHER_ERROR;
  const std::string bad = Traced([&] {
    mCom.Command("X");
    mCom.Query("X", "", mReply);
    mCom.Basic("X", mReply);
    mCom.Close();
    mCom.Open(0, false);
    mCom.GetDeviceCount(mCount);
  });
  EXPECT_EQ(bad,
            "C+ X\r\nC=\nQ+ X?\r\nQ=\nB+\nB+ X\r\nB=\nCLS+\nCLS- Ok\n"
            "OPN+ Device : 0\nOPN- Err : 1\nCNT+ \nCNT- Err : 18\n");
  mCom.SetTrace(false);
}

}  // namespace
