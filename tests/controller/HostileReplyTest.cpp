// Replies as no honest controller sends them: endless, cut anywhere, full of zero bytes, counts and texts of any size.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "controller/TMerakOrbis.h"
#include "controller/TMerakOrbisCom.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

class HostileReply : public testing::Test {
 protected:
  HostileReply() { mDevice.responder = mController; }
  static std::string Repeat(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) {
      all += text;
    }
    return all;
  }

  FakeTime mTime;
  ScriptedController mController;
  ScriptedBridge mBridge;
  ScriptedBridge::Device& mDevice = mBridge.Add();
};

TEST_F(HostileReply, ReadsA64KReplyWholeAndRefusesALongerOne) {
  constexpr std::size_t kLimit = 65536;
  TMerakOrbisCom com(nullptr);
  ASSERT_EQ(com.Open(0, false), 0U);
  const std::string value(kLimit - 20, 'v');
  mController.SetValue("X", value);
  std::string reply;
  EXPECT_EQ(com.Query("X", "", reply), 0U);
  EXPECT_EQ(reply, "\n" + value + "\n");
  for (const std::string& bytes : {std::string(kLimit + 1, 'v'), Repeat(100, std::string(1000, 'T') + "\r")}) {
    com.Open(0, false);
    mController.SetAnswer("X?", bytes);
    EXPECT_EQ(com.Query("X", "", reply), 4U);
    EXPECT_TRUE(com.IsSilent());
    EXPECT_LE(reply.size(), kLimit);
  }
}

/// Every reading operation of an open controller, one after the other.
void ReadEverything(TMerakOrbis& controller) {
  std::array<TMerakOrbis::PeripheralName, 2> names{};
  int count = 2;
  controller.GetPeripherals(names.data(), count);
  ASSERT_LE(count, 2);
  ASSERT_GE(count, 0);
  controller.GetInputSlitCount();
  std::array<std::array<char, TMerakOrbis::kMaxSystemInfoLength + 1>, 5> fields{};
  controller.GetSystemInfoEx(fields[0].data(), fields[1].data(), fields[2].data(), fields[3].data(), fields[4].data());
  std::vector<float> lines;
  std::vector<std::string> blazes;
  controller.GetGratings(lines, blazes);
  ASSERT_LE(lines.size(), 4U);
  ASSERT_EQ(lines.size(), blazes.size());
  std::array<int, 3> ints{};
  std::array<float, 3> floats{};
  controller.GetEepromInfo(ints, floats, ints);
  int number = 0;
  controller.GetSaveInfo(1, number);
  unsigned long steps = 0;
  controller.GetTotalSteps(steps);
  ASSERT_LE(steps, 0x7FFFFFFFUL);
  float wavelength = 0;
  controller.Position(wavelength);
  std::string text;
  controller.GetSlitMode(1, text);
  ASSERT_LE(text.size(), TMerakOrbis::kMaxSlitModeLength);
  controller.RawCommand("X", text);
}

TEST_F(HostileReply, ValuesOfAnyKindStayInsideTheirObjects) {
  TMerakOrbis controller(nullptr);
  ASSERT_EQ(controller.OpenShortTimeouts(0), 0U);
  for (const std::string& value :
       {std::string(60000, '9'), "-" + std::string(400, '9'), std::string(60000, ','), Repeat(20000, "N,"),
        std::string(300, 'S'), std::string("\0\0\0", 3), std::string("nan"), std::string("1e999,-1e999,1e999,2,3,4")}) {
    for (const char* word :
         {"PERIPHERAL", "SYSTEMINFO", "GRATINGS", "EEPROMINFO", "SAVEINFO", "TOTALSTEPS", "POSITION", "SLIT_MODE"}) {
      mController.SetValue(word, value);
    }
    ReadEverything(controller);
  }
}

TEST_F(HostileReply, RepliesCutAtAnyByteEndInBoundedTime) {
  const std::string word = "SYSTEMINFO?";
  const std::string whole = ScriptedController::Reply(word, "Tivan,CV-LX,SN1,C,V2.8");
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    TMerakOrbis controller(nullptr);
    mController.SetAnswer(word, "");
    ASSERT_EQ(controller.OpenShortTimeouts(0), 1U);
    mController.SetAnswer(word, whole.substr(0, cut));
    const std::uint64_t before = mTime.Slept();
    TMerakOrbis::SystemInfo info;
    EXPECT_EQ(controller.GetSystemInfoEx(info), 4U) << cut;
    EXPECT_TRUE(controller.IsSilent());
    EXPECT_EQ(info.manufacturer, "");
    EXPECT_LE(mTime.Slept() - before, 2'000'000U);
  }
}

TEST_F(HostileReply, RepliesSplitAtAnyByteAreReadWhole) {
  const std::string word = "SYSTEMINFO?";
  const std::string whole = ScriptedController::Reply(word, "Tivan,CV-LX,SN1,C,V2.8");
  TMerakOrbis controller(nullptr);
  ASSERT_EQ(controller.Open(0), 0U);
  mController.SetAnswer(word, "");
  for (std::size_t split = 0; split <= whole.size(); ++split) {
    mDevice.Queue(whole.substr(0, split));
    mDevice.Queue(whole.substr(split), 5000);
    TMerakOrbis::SystemInfo info;
    EXPECT_EQ(controller.GetSystemInfoEx(info), 0U) << split;
    EXPECT_EQ(info.manufacturer, "Tivan") << split;
    EXPECT_EQ(info.firmware, "V2.8") << split;
  }
}

TEST_F(HostileReply, APauseLongerThanTheTimeoutNeverPassesAsAnEcho) {
  // A read that ran into its time-out repeats the character before: in the echo, where the value is cut off at the
  // wrong place, or in the value itself.
  using Ask = MerakResult (*)(TMerakOrbis&, int&);
  const std::pair<std::string, Ask> queries[] = {
      {"FILTER?", [](TMerakOrbis& o, int& value) { return o.GetFilter(value); }},
      {"SAVEINFO? 17", [](TMerakOrbis& o, int& value) { return o.GetSaveInfo(17, value); }}};
  for (const auto& [line, ask] : queries) {
    const std::string whole = ScriptedController::Reply(line, "200");
    mController.SetAnswer(line, "");
    for (std::size_t split = 0; split < whole.size(); ++split) {
      TMerakOrbis controller(nullptr);
      ASSERT_EQ(controller.OpenShortTimeouts(0), 0U);
      mDevice.Queue(whole.substr(0, split));
      mDevice.Queue(whole.substr(split), 150);
      int value = -7;
      EXPECT_EQ(ask(controller, value), 4U) << line << split;
      EXPECT_EQ(value, -7) << line << split;
      if (split + 1 == whole.size()) {
        continue;  // The final "OK" has become "OKK": the reply does not end.
      }
      // The reply behind the spoilt one is as good as ever.
      mDevice.Queue(whole.substr(0, split));
      mDevice.Queue(whole.substr(split) + whole, 150);
      EXPECT_EQ(ask(controller, value), 0U) << line << split;
      EXPECT_EQ(value, 200) << line << split;
    }
  }
}

TEST_F(HostileReply, APauseSpoilsNeitherACommandNorTheQueryAfterIt) {
  TMerakOrbis controller(nullptr);
  ASSERT_EQ(controller.Open(0), 0U);
  mDevice.answerDelayMs = 110'000;
  EXPECT_EQ(controller.MoveTo(500.0F), 0U);
  mDevice.answerDelayMs = 0;
  mController.SetValue("FILTER", "4");
  int filter = 0;
  EXPECT_EQ(controller.GetFilter(filter), 0U);
  EXPECT_EQ(filter, 4);
}

TEST_F(HostileReply, SilenceAndEndlessTalkAtOpenCostSeconds) {
  mController.FallSilent();
  TMerakOrbis controller(nullptr);
  EXPECT_EQ(controller.OpenShortTimeouts(0), 0U);
  EXPECT_FALSE(controller.IsOpen());
  const std::uint64_t silence = mTime.Slept();
  EXPECT_LE(silence, 3'000'000U);
  mDevice.Queue(Repeat(20'000, "$GPS\r"), 0, 1);
  EXPECT_EQ(controller.OpenShortTimeouts(0), 0U);
  EXPECT_FALSE(controller.IsOpen());
  EXPECT_LE(mTime.Slept() - silence, 11'000'000U);
}

}  // namespace
