#include "controller/TMerakControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "ScriptedBus.h"
#include "controller/TMerakControlI2C.h"
#include "controller/TMerakControlUSB.h"
#include "controller/TMerakOrbisCom.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Patience = corvane::ReplyWatch::Patience;
using Device = ScriptedBridge::Device;

/// An open bridge whose replies are read.
struct Line {
  Line() { transport.Open(0); }
  MerakResult Read(Patience patience = Patience::kLong) {
    transport.SetTimeouts(patience == Patience::kLong ? 100000 : 100, 1000);
    corvane::ReplyWatch watch(patience);
    const MerakResult result = transport.GetResponse(text, watch);
    gaveUp = watch.GaveUp();
    return result;
  }

  FakeTime time;
  ScriptedBridge bridge;
  Device& device = bridge.Add();
  TMerakControlUSB transport;
  std::string text = "old";
  bool gaveUp = false;
};

TEST(TMerakControl, TranslatesStatusesAndWholeErrorWords) {
  const MerakResult statuses[] = {0, 1, 2, 3, 4, 5, 6, 1, 7, 7, 7, 8, 8, 8, 8, 8, 6, 9, 1, 1};
  for (unsigned int status = 0; status < std::size(statuses); ++status) {
    EXPECT_EQ(TMerakControl::TranslateError(status), statuses[status]) << status;
  }
  const MerakResult words[] = {2, 12, 8, 6, 1, 2, 6, 6, 6, 2, 10, 11, 2, 1};
  for (std::size_t i = 0; i < std::size(words); ++i) {
    const std::string word = "E" + std::to_string(i / 10) + std::to_string(i % 10);
    EXPECT_EQ(TMerakControl::TranslateStringError(word), words[i]) << word;
    EXPECT_EQ(TMerakControl::TranslateStringError("\n" + word), 1U);
  }
  EXPECT_EQ(TMerakControl::TranslateStringError("Tivan_E13"), 13U);
  EXPECT_EQ(TMerakControl::TranslateStringError("Tivan_E14"), 0U);
}

TEST(TMerakControl, JoinsLinesUntilOkOrAnErrorWord) {
  const struct {
    std::string bytes;
    MerakResult result;
    std::string text;
  } replies[] = {
      {"POSITION?\r\n512.3000\r\r\nOK\r", 0, "POSITION?\n512.3000\n"},
      {"E03\r", 6, "E03"},
      {"X\nE03\r", 1, "X\nE03"},  // the code is that of the whole text
      {"Tivan_E14\r", 0, "Tivan_E14"},
      {"Tivan_E13\r", 13, "Tivan_E13"},
      {"Tivan_E\r14\r", 0, "Tivan_E14"},
      // The protocol has no other mark: labels and serial numbers should not end so.
      {"LABEL?\r\nBOOK\r", 0, "LABEL?\nBO"},
      {"SERIAL?\r\nCV-E12\r", 1, "SERIAL?\nCV-E12"},
  };
  for (const auto& reply : replies) {
    Line line;
    line.device.Queue(reply.bytes + "rest");
    EXPECT_EQ(line.Read(), reply.result) << reply.bytes;
    EXPECT_EQ(line.text, reply.text);
    EXPECT_EQ(line.device.Waiting(), 4U);
    EXPECT_FALSE(line.gaveUp);
  }
}

TEST(TMerakControl, EveryWaitEnds) {
  const struct {
    const char* name;
    Patience patience;
    std::function<void(Device&)> talk;
    std::uint64_t atLeast, atMost;
  } waits[] = {
      {"two silent reads", Patience::kLong, [](Device&) {}, 200000, 200000},
      {"dripping", Patience::kLong, [](Device& d) { d.Queue(std::string(1000, 'x'), 0, 50000); }, 0, 400000},
      {"no end", Patience::kLong, [](Device& d) { d.Queue(std::string(999, '\r'), 0, 1000); }, 120000, 122000},
      {"a silent second", Patience::kShort, [](Device&) {}, 1000, 1000},
      {"a character begins it anew", Patience::kShort, [](Device& d) { d.Queue("a", 950); }, 1900, 2100},
      {"talk", Patience::kShort, [](Device& d) { d.Queue(std::string(100, 'x'), 0, 90); }, 5000, 5100},
      // Slow enough for a read to run into its time-out between two lines.
      {"slow talk", Patience::kShort, [](Device& d) { d.Queue(std::string(100, '\r'), 0, 900); }, 0, 5200},
  };
  for (const auto& wait : waits) {
    Line line;
    wait.talk(line.device);
    EXPECT_EQ(line.Read(wait.patience), 4U) << wait.name;
    EXPECT_TRUE(line.gaveUp) << wait.name;
    EXPECT_GE(line.time.Slept() / 1000, wait.atLeast) << wait.name;
    EXPECT_LE(line.time.Slept() / 1000, wait.atMost) << wait.name;
  }
}

TEST(TMerakControl, AnUnnoticedDeadLineDoesNotSpin) {
  Line line;
  line.device.readsReturnAtOnce = true;
  EXPECT_EQ(line.Read(), 4U);
  EXPECT_TRUE(line.gaveUp);
  // At most one read a millisecond.
  EXPECT_LE(static_cast<std::uint64_t>(line.device.reads), line.time.Slept() / 1000 + 1);
  EXPECT_LE(line.text.size(), corvane::ReplyWatch::kMaxLength);
}

TEST(TMerakControl, AReadThatBringsNothingRepeatsTheCharacterBefore) {
  Line line;
  line.device.Queue("OK\r", 130000);
  EXPECT_EQ(line.Read(), 0U) << "a move that answers after two minutes";
  EXPECT_EQ(line.text, std::string(1, '\0'));
  line.device.Queue("AB");
  line.device.Queue("C\rOK\r", 100001);
  EXPECT_EQ(line.Read(), 0U);
  EXPECT_EQ(line.text, "ABBC");
}

TEST(TMerakControlI2C, CountsTheBytesBeforeACarriageReturnAndStoresItAllTheSame) {
  ScriptedBus bus;
  bus.output = "\rab\rcd" + std::string(1000, 'x');
  const struct {
    unsigned int asked, received;
    std::string buffer;
  } reads[] = {{1, 0, "\r."}, {5, 2, "ab\rcd."}, {1000, 1000, std::string(1000, 'x')}};
  for (const auto& read : reads) {
    std::string buffer(1001, '.');
    unsigned int received = 9;
    EXPECT_EQ(TMerakControlI2C(&bus).Read(buffer.data(), read.asked, &received), 0U);
    EXPECT_EQ(received, read.received);
    EXPECT_TRUE(buffer.starts_with(read.buffer));
  }
}

TEST(TMerakControlI2C, DiscardsOneStaleLineThenSendsTheWholeLineInOneBurst) {
  ScriptedBus bus;
  TMerakControlI2C transport(&bus);
  bus.output = "stale\rnext";
  EXPECT_EQ(transport.Write("Hello\r", 6, nullptr), 0U);
  EXPECT_THAT(bus.bursts, ElementsAre("Hello\r"));
  EXPECT_EQ(bus.output, "next");
  bus.endless = 'x';
  bus.reads.clear();
  EXPECT_EQ(transport.Write("x\r", 2, nullptr), 0U) << "clearing an output without end is given up";
  EXPECT_LE(bus.reads.size(), 65536U);
  bus.writeStatus = 20081;
  EXPECT_EQ(transport.Write("x", 1, nullptr), 4U);
}

TEST(TMerakControlUSB, LeavesTheMakersProductInTheBridgesTable) {
  ScriptedBridge bridge;
  const TMerakControlUSB transport;
  // The bridge has room for one pair, so the order decides.
  EXPECT_THAT(bridge.products, ElementsAre(Pair(0x0403U, 0xD493U), Pair(0x0403U, 0xD491U), Pair(0x136EU, 0x0017U)));
}

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
};

TEST_F(TMerakOrbisComTest, OpensABridgeWithTimeoutsIdlePurgesAndGreeting) {
  mController.SetAnswer("Hello", "E01\r");
  EXPECT_EQ(mCom.Open(0, true), 0U) << "whatever becomes of the greeting";
  EXPECT_EQ(mDevice.written, "Hello\r");
  EXPECT_EQ(mCom.RestoreLongTimeouts(), 0U);
  EXPECT_THAT(mDevice.timeouts, ElementsAre(Pair(100U, 100U), Pair(100000U, 1000U)));
  EXPECT_THAT(mDevice.purges, ElementsAre(4U, 8U));
  EXPECT_EQ(mCom.Close(), 0U);
  EXPECT_EQ(mCom.Close(), 3U);
  EXPECT_EQ(mCom.Open(5, false), 1U);
  EXPECT_EQ(mCom.Command("X"), 3U) << "a failed open leaves nothing open";
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
  com.SetTrace(false);
  EXPECT_EQ(com.Open(1, false), 0U);
  EXPECT_TRUE(mBridge.At(1).isOpen);
  mBus.absent = true;
  EXPECT_EQ(com.Open(0, false), 0U);
  EXPECT_TRUE(mDevice.isOpen && !mBridge.At(1).isOpen);
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

TEST_F(TMerakOrbisComTest, TellsSilenceFromFailureAndWaitsAsItsTimeoutsSay) {
  mController.SetAnswer("X", "");
  for (const bool shortTimeouts : {true, false}) {
    mCom.Open(0, shortTimeouts);
    const std::uint64_t before = mTime.Slept();
    EXPECT_EQ(mCom.Command("X"), 4U);
    EXPECT_EQ(mTime.Slept() - before, shortTimeouts ? 1'000'000U : 200'000'000U);
    EXPECT_TRUE(mCom.IsSilent());
  }
  EXPECT_EQ(mCom.Command("Y"), 0U);
  EXPECT_FALSE(mCom.IsSilent());
  const std::pair<FT_STATUS, MerakResult> failures[] = {{FT_IO_ERROR, 4}, {FT_INVALID_HANDLE, 1}};
  for (const auto& [status, result] : failures) {
    mDevice.readStatus = status;
    EXPECT_EQ(mCom.Command("Y"), result);
    EXPECT_FALSE(mCom.IsSilent());
  }
}

TEST_F(TMerakOrbisComTest, TheBusFailsAtOnceWithoutDataAndIsSilentWhenItsOutputNeverEnds) {
  mBus.responder = mController;
  TMerakOrbisCom com(&mBus);
  ASSERT_EQ(com.Open(0, false), 0U);
  mController.SetAnswer("X", "");
  EXPECT_EQ(com.Command("X"), 4U) << "at once: the bus has no waiting of its own";
  EXPECT_FALSE(com.IsSilent());
  mBus.endless = '\0';
  EXPECT_EQ(com.Command("X"), 4U);
  EXPECT_TRUE(com.IsSilent());
}

TEST_F(TMerakOrbisComTest, TracesWhatItDoesWithItsTime) {
  mController.SetAnswer("MOVETO 1", "doneOK\r");
  mController.SetValue("FILTER", "3");
  mCom.SetTrace(true);
  // A line ended by a carriage return is followed by 1 ms of rest.
  EXPECT_EQ(Traced([&] {
              mCom.Open(0, false);
              mDevice.answerDelayMs = 1005;
              mCom.Command("MOVETO", "1");
              mDevice.answerDelayMs = 0;
              mCom.Query("FILTER", "", mReply);
              mDevice.writeStatus = FT_IO_ERROR;
              mCom.Command("X");
              mCom.Close();
            }),
            "OPN+ Device : 0\nOPN- OK\nC+ Hello\r\nTook 0.0 seconds\nC-\n"
            "C+ MOVETO 1\r\nTook 1.5 seconds\nC-done\n"
            "Q+ FILTER?\r\nTook 0.2 seconds\nQ=FILTER?\n3\n\n"
            "C+ X\r\nC=\nCLS+\nCLS- Ok\n");
  mCom.SetTrace(false);
}

}  // namespace
