#include "controller/TMerakControl.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "controller/TMerakControlUSB.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

using Patience = TReplyWatch::Patience;
using Device = ScriptedBridge::Device;

/// An open bridge whose replies are read.
struct Line {
  Line() { transport.Open(0); }
  MerakResult Read(Patience patience = Patience::kLong) {
    transport.SetTimeouts(patience == Patience::kLong ? 100000 : 100, 1000);
    TReplyWatch watch(patience);
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
  EXPECT_EQ(TMerakControl::TranslateError(0xFFFFFFFFU), 1U);
  const MerakResult words[] = {2, 12, 8, 6, 1, 2, 6, 6, 6, 2, 10, 11, 2, 1};
  for (std::size_t i = 0; i < std::size(words); ++i) {
    const std::string word = "E" + std::to_string(i / 10) + std::to_string(i % 10);
    EXPECT_EQ(TMerakControl::TranslateStringError(word), words[i]) << word;
    EXPECT_EQ(TMerakControl::TranslateStringError("\n" + word), 1U);
  }
  EXPECT_EQ(TMerakControl::TranslateStringError("Tivan_E13"), 13U);
  EXPECT_EQ(TMerakControl::TranslateStringError("Tivan_E14"), 0U);
  EXPECT_EQ(TMerakControl::TranslateStringError(""), 1U);
}

TEST(TMerakControl, TellsErrorWordsByTheEndOfTheText) {
  MerakResult code = 99;
  EXPECT_TRUE(TMerakControl::CheckForError("POSITION?\nE03", code));
  EXPECT_EQ(code, 6U);
  EXPECT_TRUE(TMerakControl::CheckForError("xTivan_E13", code));
  EXPECT_EQ(code, 13U);
  // A long word anywhere makes the last nine characters count.
  EXPECT_TRUE(TMerakControl::CheckForError("Tivan_Eabcdefg E03", code));
  EXPECT_EQ(code, 1U);
  for (const char* text : {"", "E", "E0", "E0x", "e03", "E031", "Tivan_E", "Tivan_E1", "Tivan_E1x"}) {
    code = 99;
    EXPECT_FALSE(TMerakControl::CheckForError(text, code)) << text;
    EXPECT_EQ(code, 0U);
  }
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

TEST(TMerakControl, TransportErrorEndsTheReply) {
  Line line;
  line.device.readStatus = FT_IO_ERROR;
  EXPECT_EQ(line.Read(), 4U);
  line.device.readStatus = FT_INVALID_HANDLE;
  EXPECT_EQ(line.Read(), 1U);
  EXPECT_FALSE(line.gaveUp);
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
  EXPECT_LE(line.text.size(), TReplyWatch::kMaxLength);
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

}  // namespace
