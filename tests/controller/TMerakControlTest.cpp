#include "controller/TMerakControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

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

TEST(TMerakControl, AnErrorWordIsTheWholeTextOrUnknown) {
  const MerakResult codes[] = {2, 12, 8, 6, 1, 2, 6, 6, 6, 2, 10, 11, 2};  // E00 to E12, as the controllers have them
  for (std::size_t i = 0; i < std::size(codes); ++i) {
    const std::string word = (i < 10 ? "E0" : "E") + std::to_string(i);
    EXPECT_EQ(TMerakControl::TranslateStringError(word), codes[i]) << word;
    EXPECT_EQ(TMerakControl::TranslateStringError("\n" + word), merak::kUnknownError);
  }
  EXPECT_EQ(TMerakControl::TranslateStringError("E13"), merak::kUnknownError);
}

TEST(TMerakControl, JoinsLinesUntilOkOrAnErrorWord) {
  const struct {
    std::string bytes;
    MerakResult result;
    std::string text;
  } replies[] = {
      {"POSITION?\r\n512.3000\r\r\nOK\r", merak::kSuccess, "POSITION?\n512.3000\n"},
      {"E03\r", merak::kInvalidParameter, "E03"},
      {"X\nE03\r", merak::kUnknownError, "X\nE03"},  // the code is that of the whole text
      {"Tivan_E13\r", merak::kNoText, "Tivan_E13"},
      {"Tivan_E\r14\r", merak::kSuccess, "Tivan_E14"},
      // The protocol has no other mark: labels and serial numbers should not end so.
      {"LABEL?\r\nBOOK\r", merak::kSuccess, "LABEL?\nBO"},
      {"SERIAL?\r\nCV-E12\r", merak::kUnknownError, "SERIAL?\nCV-E12"},
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
    std::uint64_t atLeast;
    std::uint64_t atMost;
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
    EXPECT_EQ(line.Read(wait.patience), merak::kIoError) << wait.name;
    EXPECT_TRUE(line.gaveUp) << wait.name;
    EXPECT_GE(line.time.Slept() / 1000, wait.atLeast) << wait.name;
    EXPECT_LE(line.time.Slept() / 1000, wait.atMost) << wait.name;
  }
}

TEST(TMerakControl, AnUnnoticedDeadLineDoesNotSpin) {
  Line line;
  line.device.readsReturnAtOnce = true;
  EXPECT_EQ(line.Read(), merak::kIoError);
  EXPECT_TRUE(line.gaveUp);
  // At most one read a millisecond.
  EXPECT_LE(static_cast<std::uint64_t>(line.device.reads), line.time.Slept() / 1000 + 1);
  EXPECT_LE(line.text.size(), corvane::ReplyWatch::kMaxLength);
}

TEST(TMerakControl, AReadThatBringsNothingRepeatsTheCharacterBefore) {
  Line line;
  line.device.Queue("OK\r", 130000);
  EXPECT_EQ(line.Read(), merak::kSuccess) << "a move that answers after two minutes";
  EXPECT_EQ(line.text, std::string(1, '\0'));
  line.device.Queue("AB");
  line.device.Queue("C\rOK\r", 100001);
  EXPECT_EQ(line.Read(), merak::kSuccess);
  EXPECT_EQ(line.text, "ABBC");
}

TEST(TMerakControlI2C, CountsTheBytesBeforeACarriageReturnAndStoresItAllTheSame) {
  ScriptedBus bus;
  bus.output = "\rab\rcd" + std::string(1000, 'x');
  const struct {
    unsigned int asked;
    unsigned int received;
    std::string buffer;
  } reads[] = {{1, 0, "\r."}, {5, 2, "ab\rcd."}, {1000, 1000, std::string(1000, 'x')}};
  for (const auto& read : reads) {
    std::string buffer(1001, '.');
    unsigned int received = 9;
    EXPECT_EQ(TMerakControlI2C(&bus).Read(buffer.data(), read.asked, &received), unsigned{FT_OK});
    EXPECT_EQ(received, read.received);
    EXPECT_TRUE(buffer.starts_with(read.buffer));
  }
}

TEST(TMerakControlI2C, DiscardsOneStaleLineThenSendsTheWholeLineInOneBurst) {
  ScriptedBus bus;
  bus.output = "stale\rnext";
  EXPECT_EQ(TMerakControlI2C(&bus).Write("Hello\r", 6, nullptr), unsigned{FT_OK});
  EXPECT_THAT(bus.bursts, ElementsAre("Hello\r"));
  EXPECT_EQ(bus.output, "next");
  bus.reads.clear();
  bus.endless = 'x';
  EXPECT_EQ(TMerakControlI2C(&bus).Write("x\r", 2, nullptr), unsigned{FT_OK}) << "a stale line without end is given up";
  EXPECT_LE(bus.reads.size(), 65536U);
}

TEST(TMerakControlUSB, LeavesTheMakersProductInTheBridgesTable) {
  ScriptedBridge bridge;
  const TMerakControlUSB transport;
  // The bridge has room for one pair, so the order decides.
  EXPECT_THAT(bridge.products,
              ElementsAre(ScriptedBridge::kSecondLxProduct, ScriptedBridge::kLxProduct, ScriptedBridge::kSxProduct));
}

// The bridge is without a latency timer.
TEST(TMerakControlUSB, RemarksWhatBecameOfALatencyThatWasAskedFor) {
  const std::pair<const char*, std::string> remarks[] = {
      {"1", "LAT- Err : 17"},         {"255", "LAT- Err : 17"},      {"", "LAT- Ignored : "},
      {"0", "LAT- Ignored : 0"},      {"256", "LAT- Ignored : 256"}, {"-1", "LAT- Ignored : -1"},
      {"1.5", "LAT- Ignored : 1.5"},  {"2ms", "LAT- Ignored : 2ms"}, {" 2", "LAT- Ignored :  2"},
      {"fast", "LAT- Ignored : fast"}};
  for (const auto& [text, remark] : remarks) {
    ScriptedBridge bridge;
    bridge.Add();
    TMerakControlUSB transport;
    setenv("CORVANE_USB_LATENCY_MS", text, 1);
    EXPECT_EQ(transport.Open(0), FT_OK) << text;
    unsetenv("CORVANE_USB_LATENCY_MS");
    EXPECT_EQ(transport.Remark(), remark) << text;
  }
}

class TMerakOrbisComTest : public testing::Test {
 protected:
  TMerakOrbisComTest() { mDevice.responder = mController; }
  FakeTime mTime;
  ScriptedController mController;
  ScriptedBridge mBridge;
  ScriptedBridge::Device& mDevice = mBridge.Add();
  ScriptedBus mBus;
  TMerakOrbisCom mCom{nullptr};
};

TEST_F(TMerakOrbisComTest, OpensABridgeWithTimeoutsIdlePurgesAndGreeting) {
  mController.SetAnswer("Hello", "E01\r");
  EXPECT_EQ(mCom.Open(0, true), merak::kSuccess) << "whatever becomes of the greeting";
  EXPECT_EQ(mDevice.written, "Hello\r");
  EXPECT_EQ(mCom.RestoreLongTimeouts(), merak::kSuccess);
  EXPECT_THAT(mDevice.timeouts, ElementsAre(Pair(100U, 100U), Pair(100'000U, 1'000U)));
  EXPECT_THAT(mDevice.purges, ElementsAre(4U, 8U));
}

TEST_F(TMerakOrbisComTest, AControllerOnTheBusIsIndexZeroAndOnlyLookedFor) {
  const ScriptedBridge::Device& second = mBridge.Add();
  TMerakOrbisCom com(&mBus);
  EXPECT_EQ(com.Open(0, true), merak::kSuccess);
  EXPECT_THAT(mBus.reads, ElementsAre(16));
  EXPECT_THAT(mBus.bursts, IsEmpty());
  EXPECT_EQ(mDevice.opens, 0);
  EXPECT_EQ(com.Open(1, false), merak::kSuccess);
  EXPECT_TRUE(second.isOpen);
  mBus.absent = true;
  EXPECT_EQ(com.Open(0, false), merak::kSuccess);
  EXPECT_TRUE(mDevice.isOpen);
  EXPECT_FALSE(second.isOpen) << "what was open before is closed";
}

TEST_F(TMerakOrbisComTest, AQueryStripsItsEchoAndDropsUpToThreeRepliesWithoutIt) {
  mCom.Open(0, false);
  const struct {
    std::string bytes;
    MerakResult result;
    std::string reply;
  } cases[] = {
      {"FILTER?\r\n40\r\nOK\r", merak::kSuccess, "\n40\n"},
      // Told by the word alone, in any case; a reply of nothing but the echo stays.
      {"filter?OK\r", merak::kSuccess, "filter?"},
      {"stale\r\nOK\rOK\rFILTER?\r\n3\r\nOK\r", merak::kSuccess, "\n3\n"},
      {"Tivan_E14\rFILTER?\r\n4\r\nOK\r", merak::kSuccess, "\n4\n"},  // succeeds and has no echo
      {"E03\r", merak::kInvalidParameter, "E03"},
      {"FILTER?\r\nE03\r", merak::kUnknownError, "\nE03"},
      {"a\rOK\rb\rOK\rc\rOK\rFILTER?\r\n5\r\nOK\r", merak::kSuccess, ""},
  };
  for (const auto& query : cases) {
    mController.SetAnswer("FILTER?", query.bytes);
    std::string reply = "old";
    EXPECT_EQ(mCom.Query("FILTER", "", reply), query.result) << query.bytes;
    EXPECT_EQ(reply, query.reply);
    EXPECT_FALSE(mCom.IsSilent());
  }
}

TEST_F(TMerakOrbisComTest, AFailureOfTheBridgeIsNoSilence) {
  mCom.Open(0, false);
  mDevice.readStatus = FT_IO_ERROR;
  EXPECT_EQ(mCom.Command("Y"), merak::kIoError);
  EXPECT_FALSE(mCom.IsSilent());
  mDevice.readStatus = FT_INVALID_HANDLE;
  EXPECT_EQ(mCom.Command("Y"), merak::kUnknownError);
  EXPECT_FALSE(mCom.IsSilent());
}

TEST_F(TMerakOrbisComTest, TracesWhatItDoesWithItsTime) {
  mController.SetAnswer("MOVETO 1", "doneOK\r");
  mController.SetValue("FILTER", "3");
  mCom.SetTrace(true);
  std::string reply;
  testing::internal::CaptureStdout();
  // A line ended by a carriage return is followed by 1 ms of rest.
  mCom.Open(0, false);
  mDevice.answerDelayMs = 1005;
  mCom.Command("MOVETO", "1");
  mDevice.answerDelayMs = 0;
  mCom.Query("FILTER", "", reply);
  mDevice.writeStatus = FT_IO_ERROR;
  mCom.Command("X");
  mCom.Close();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "OPN+ Device : 0\nOPN- OK\nC+ Hello\r\nTook 0.0 seconds\nC-\n"
            "C+ MOVETO 1\r\nTook 1.5 seconds\nC-done\n"
            "Q+ FILTER?\r\nTook 0.2 seconds\nQ=FILTER?\n3\n\n"
            "C+ X\r\nC=\nCLS+\nCLS- Ok\n");
}

}  // namespace
