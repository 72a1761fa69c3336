#include "controller/TMerakOrbis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "controller/TMerakOrbisCache.h"
#include "controller/TMerakOrbisCom.h"
#include "platform/TickCount.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSx = "Tivan,CV-SX,SN,C,V3";

class TMerakOrbisTest : public testing::Test {
 protected:
  TMerakOrbisTest() { mDevice.responder = mController; }
  /// Opens a controller whose system information is this, and forgets what that sent.
  void Open(const std::string& systemInfo = "Tivan,CV-LX,SN1,Controller,V2.8") {
    mController.SetValue("SYSTEMINFO", systemInfo);
    ASSERT_EQ(mOrbis.Open(0), merak::kSuccess);
    Lines().clear();
  }
  std::vector<std::string>& Lines() { return mController.Lines(); }

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
  TMerakOrbis mOrbis{nullptr};
};

TEST_F(TMerakOrbisTest, OperationsThatNoExportedFunctionReachesSendTheirLines) {
  std::string reply;
  EXPECT_EQ(mOrbis.RawCommand("any text", reply), merak::kDeviceNotOpen);
  EXPECT_EQ(mOrbis.SetFilterMode("AUTO"), merak::kDeviceNotOpen);
  EXPECT_EQ(mDevice.written, "");
  Open();
  mController.SetAnswer("any text", "reply\rOK\r");
  EXPECT_EQ(mOrbis.RawCommand("any text", reply), merak::kSuccess);
  EXPECT_EQ(reply, "reply\r");
  mController.SetAnswer("any text", "E08\r");
  EXPECT_EQ(mOrbis.RawCommand("any text", reply), merak::kInvalidParameter);
  EXPECT_EQ(mOrbis.SetFilterMode("AUTO"), merak::kSuccess);
  EXPECT_EQ(mOrbis.SetShutterMode(1), merak::kSuccess);
  EXPECT_THAT(Lines(), ElementsAre("any text", "any text", "FILTER_MODE AUTO", "SHUTTER_MODE 1"));
}

TEST_F(TMerakOrbisTest, EepromInformationComesInGroupsOfFourOfWhichTheLastIsLeftOut) {
  Open();
  std::array<int, 3> first{};
  std::array<float, 3> second{};
  std::array<int, 3> third{};
  mController.SetValue("EEPROMINFO", "head,1,1.5,-2,x\n3,3.5,4,x\n5,5.5,6");
  EXPECT_EQ(mOrbis.GetEepromInfo(first, second, third), merak::kSuccess);
  EXPECT_THAT(first, ElementsAre(1, 3, 5));
  EXPECT_THAT(second, ElementsAre(1.5F, 3.5F, 5.5F));
  EXPECT_THAT(third, ElementsAre(-2, 4, 6));
  mController.SetValue("EEPROMINFO", "head,7,7.5,8,x\n9");
  EXPECT_EQ(mOrbis.GetEepromInfo(first, second, third), merak::kEepromError) << "too short";
  EXPECT_THAT(first, ElementsAre(7, 9, 5)) << "what was read is stored";
  EXPECT_THAT(second, ElementsAre(7.5F, 3.5F, 5.5F));
}

TEST_F(TMerakOrbisTest, TheModelCodeTellsTheTypeLxAndMxFirst) {
  const std::pair<std::string, int> types[] = {{"xMXx", TMerakOrbis::kTypeLxMx},
                                               {"SXMX", TMerakOrbis::kTypeLxMx},
                                               {"CV-SX", TMerakOrbis::kTypeSx},
                                               {"CV-300", TMerakOrbis::kTypeOther},
                                               {"lx", TMerakOrbis::kTypeOther}};
  for (const auto& [model, type] : types) {
    Open("Tivan," + model + ",SN,C,V1");
    EXPECT_EQ(mOrbis.GetSystemType(), type) << model;
    EXPECT_EQ(mOrbis.InternalShutterAvailable(), type == TMerakOrbis::kTypeSx) << model;
  }
}

TEST_F(TMerakOrbisTest, OnlyAnSxIsBidFarewellAndItsAnswerDoesNotMatter) {
  mController.SetAnswer("GOODBYE", "E01\r");
  Open(kSx);
  EXPECT_EQ(mOrbis.Close(), merak::kSuccess);
  EXPECT_THAT(Lines(), ElementsAre("GOODBYE"));
  Open();
  EXPECT_EQ(mOrbis.Close(), merak::kSuccess);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(TMerakOrbisTest, AControllerStaysOpenUnidentifiedButNotUngreeted) {
  mController.SetAnswer("SYSTEMINFO?", "E01\r");
  EXPECT_EQ(mOrbis.Open(0), merak::kUnknownError);
  EXPECT_TRUE(mOrbis.IsOpen());
  EXPECT_FALSE(mOrbis.HasEepromRecord());
  mController.SetAnswer("Hello", "E01\r");
  EXPECT_EQ(mOrbis.Open(0), merak::kSuccess);
  EXPECT_FALSE(mOrbis.IsOpen());
  EXPECT_FALSE(mDevice.isOpen);
}

TEST_F(TMerakOrbisTest, SystemInformationIsSplitIntoFieldsAndClearedByEveryQuestion) {
  Open("Tivan,LX,c,d,V3.5");
  mOrbis.Close();
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 3.5F) << "outlives a close";
  TMerakOrbis::SystemInfo info{"a", "b", "c", "d", "e"};
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), merak::kDeviceNotOpen);
  EXPECT_EQ(info.manufacturer, "");
  EXPECT_EQ(info.firmware, "");
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 0.0F);
  Open("Tivan,LX,c,d,V3.5");
  mController.SetValue("SYSTEMINFO", "Maker,,Model\nSerial");
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), merak::kSuccess);
  EXPECT_EQ(info.manufacturer, "Maker");
  EXPECT_EQ(info.model, "Model");
  EXPECT_EQ(info.serialNumber, "Serial");
  EXPECT_EQ(info.fourth, "");
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 0.0F);
}

TEST_F(TMerakOrbisTest, AFieldIsCutToTheBufferOfItsCaller) {
  constexpr std::size_t kLength = TMerakOrbis::kMaxSystemInfoLength;
  Open(std::string(kLength + 1, 'm') + ",LX,c,d,V3.5");
  std::array<std::array<char, kLength + 2>, 5> out{};
  out[0].fill('#');
  EXPECT_EQ(mOrbis.GetSystemInfoEx(out[0].data(), out[1].data(), out[2].data(), out[3].data(), out[4].data()),
            merak::kSuccess);
  EXPECT_EQ(std::string(out[0].data(), out[0].size()), std::string(kLength, 'm') + std::string("\0#", 2));
  EXPECT_STREQ(out[4].data(), "V3.5");
}

TEST_F(TMerakOrbisTest, AReplyThatNamesNoGratingIsAFailureAndNotRemembered) {
  Open();
  for (const char* value : {"", "none", "0", "-1", "-2147483648", "-99999999999"}) {
    mController.SetValue("GRATING", value);
    int grating = -7;
    EXPECT_EQ(mOrbis.GetGrating(grating), merak::kIoError) << value;
    EXPECT_EQ(grating, -7) << value;
  }
  mController.SetValue("GRATING", "2");
  int grating = -7;
  EXPECT_EQ(mOrbis.GetGrating(grating), merak::kSuccess);
  EXPECT_EQ(grating, 2);
}

TEST_F(TMerakOrbisTest, TotalStepsBeyondAnIntAreNone) {
  Open();
  unsigned long steps = 7;
  const std::pair<const char*, unsigned long> cases[] = {
      {"", 7}, {"2147483647", 2147483647}, {"-1", 0}, {"2147483648", 0}, {"99999999999999999999999", 0}};
  for (const auto& [text, expected] : cases) {
    mController.SetValue("TOTALSTEPS", text);
    EXPECT_EQ(mOrbis.GetTotalSteps(steps), merak::kSuccess);
    EXPECT_EQ(steps, expected) << text;
  }
}

TEST_F(TMerakOrbisTest, PeripheralsFillTheRoomGivenAndNoMore) {
  Open();
  mController.SetValue("PERIPHERAL", "SI1,,ABCDEFGHIJ\nSO2,FIL");
  std::array<TMerakOrbis::PeripheralName, 4> names{};
  names[3].fill('#');
  int none = -5;
  EXPECT_EQ(mOrbis.GetPeripherals(names.data(), none), merak::kSuccess);
  EXPECT_EQ(none, 0);
  int three = 3;
  EXPECT_EQ(mOrbis.GetPeripherals(names.data(), three), merak::kSuccess);
  EXPECT_EQ(three, 3);
  EXPECT_EQ(TMerakOrbis::PeripheralText(names[1]), "ABCDEFGH");
  EXPECT_EQ(names[3][0], '#');
}

TEST_F(TMerakOrbisTest, ATagCountsWhenAListedNameLiesInsideIt) {
  Open();
  mController.SetValue("PERIPHERAL", "SI,SO2,FILTER");
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 2);
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 1);
  EXPECT_EQ(mOrbis.CountPeripherals({"FIL"}), 0) << "not the other way round";
}

TEST_F(TMerakOrbisTest, ANewListOfPeripheralsCountsFromWhenItIsSentUntilAnSxIsOpened) {
  Open(kSx);
  mController.SetAnswer("PERIPHERAL SO1,SO2", "E08\r");
  EXPECT_EQ(mOrbis.SetPeripherals({"SO1", "SO2"}), merak::kInvalidParameter);
  Open();
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 2) << "a model without the cache neither empties it nor switches it off";
  EXPECT_THAT(Lines(), IsEmpty());
  mController.SetValue("PERIPHERAL", "SI1");
  Open(kSx);
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 0);
  EXPECT_THAT(Lines(), ElementsAre("PERIPHERAL?"));
}

// ---- Replies as no honest controller sends them ----

TEST_F(TMerakOrbisTest, AReplyIsReadWholeUpTo64KAndGivenUpBeyond) {
  constexpr std::size_t kLimit = corvane::ReplyWatch::kMaxLength;
  const std::string value(kLimit - 20, 'v');
  TMerakOrbisCom com(nullptr);
  ASSERT_EQ(com.Open(0, false), merak::kSuccess);
  mController.SetValue("X", value);
  std::string reply;
  EXPECT_EQ(com.Query("X", "", reply), merak::kSuccess);
  EXPECT_EQ(reply, "\n" + value + "\n");
  for (const std::string& bytes : {std::string(kLimit + 1, 'v'), Repeat(100, std::string(1000, 'T') + "\r")}) {
    ASSERT_EQ(com.Open(0, false), merak::kSuccess);
    mController.SetAnswer("X?", bytes);
    EXPECT_EQ(com.Query("X", "", reply), merak::kIoError);
    EXPECT_TRUE(com.IsSilent());
    EXPECT_LE(reply.size(), kLimit);
  }
}

TEST_F(TMerakOrbisTest, ValuesOfAnyKindStayInsideTheirObjects) {
  TMerakOrbis controller(nullptr);
  ASSERT_EQ(controller.OpenShortTimeouts(0), merak::kSuccess);
  for (const std::string& value :
       {std::string(60000, '9'), "-" + std::string(400, '9'), std::string(60000, ','), Repeat(20000, "N,"),
        std::string(300, 'S'), std::string("\0\0\0", 3), std::string("nan"), std::string("1e999,-1e999,1e999,2,3,4")}) {
    for (const char* word :
         {"PERIPHERAL", "SYSTEMINFO", "GRATINGS", "EEPROMINFO", "SAVEINFO", "TOTALSTEPS", "POSITION", "SLIT_MODE"}) {
      mController.SetValue(word, value);
    }
    std::array<TMerakOrbis::PeripheralName, 2> names{};
    int number = 2;
    controller.GetPeripherals(names.data(), number);
    ASSERT_GE(number, 0);
    ASSERT_LE(number, 2);
    TMerakOrbis::SystemInfo info;
    controller.GetSystemInfoEx(info);
    std::vector<float> lines;
    std::vector<std::string> blazes;
    controller.GetGratings(lines, blazes);
    ASSERT_LE(lines.size(), 4U);
    ASSERT_EQ(blazes.size(), lines.size());
    std::array<int, 3> ints{};
    std::array<float, 3> floats{};
    controller.GetEepromInfo(ints, floats, ints);
    controller.GetSaveInfo(1, number);
    unsigned long steps = 0;
    controller.GetTotalSteps(steps);
    ASSERT_LE(steps, 0x7FFFFFFFUL);
    controller.Position(floats[0]);
    std::string text;
    controller.GetSlitMode(1, text);
    ASSERT_LE(text.size(), TMerakOrbis::kMaxSlitModeLength);
  }
}

// A read that ran into its time-out repeats the character before: in the echo, where the value is cut off at the wrong
// place, or in the value itself.
TEST_F(TMerakOrbisTest, AReplyCutOrHeldUpAtAnyByteIsAFailureInBoundedTime) {
  using Ask = MerakResult (*)(TMerakOrbis&, int&);
  const std::pair<std::string, Ask> queries[] = {
      {"FILTER?", [](TMerakOrbis& o, int& value) { return o.GetFilter(value); }},
      {"SAVEINFO? 17", [](TMerakOrbis& o, int& value) { return o.GetSaveInfo(17, value); }}};
  for (const auto& [line, ask] : queries) {
    const std::string whole = ScriptedController::Reply(line, "200");
    mController.SetAnswer(line, "");
    for (std::size_t place = 0; place < 2 * whole.size(); ++place) {
      const std::size_t split = place / 2;
      TMerakOrbis controller(nullptr);
      ASSERT_EQ(controller.OpenShortTimeouts(0), merak::kSuccess);
      mDevice.Queue(whole.substr(0, split));
      if (place % 2 == 1) {
        mDevice.Queue(whole.substr(split), 150);
      }
      const std::uint64_t before = mTime.Slept();
      int value = -7;
      EXPECT_EQ(ask(controller, value), merak::kIoError) << line << place;
      EXPECT_EQ(value, -7) << line << place;
      EXPECT_LE(mTime.Slept() - before, 2'000'000U) << line << place;
    }
  }
}

TEST_F(TMerakOrbisTest, TheReplyBehindAPauseIsAsGoodAsEver) {
  const std::string whole = ScriptedController::Reply("FILTER?", "200");
  mController.SetAnswer("FILTER?", "");
  // Not before the last character: the final "OK" has become "OKK", and the reply does not end.
  for (std::size_t split = 0; split + 1 < whole.size(); ++split) {
    TMerakOrbis controller(nullptr);
    ASSERT_EQ(controller.OpenShortTimeouts(0), merak::kSuccess);
    mDevice.Queue(whole.substr(0, split));
    mDevice.Queue(whole.substr(split) + whole, 150);
    int value = -7;
    EXPECT_EQ(controller.GetFilter(value), merak::kSuccess) << split;
    EXPECT_EQ(value, 200) << split;
  }
}

TEST(TMerakOrbisCache, HoldsAValueUpToAndIncludingItsTimeoutCountedIn32Bits) {
  FakeTime time;
  TMerakOrbisCache cache;
  const auto after = [&](std::uint64_t milliseconds) {
    time.AdvanceMilliseconds(milliseconds);
    return cache.GetCacheValue(eCacheGratings);
  };
  InitialiseTickCount();
  cache.EnableCache(eCacheGratings, true, 3000);
  cache.SetCacheValue(eCacheGratings, "list");
  EXPECT_EQ(after(3000), "list");
  EXPECT_EQ(after(1), "");
  time.AdvanceMilliseconds((1ULL << 32U) - 4001);
  ASSERT_EQ(GetTickCount(), 0xFFFFFFFFU - 999);
  cache.SetCacheValue(eCacheGratings, "list");
  // The end of its life has wrapped already, so the value counts as expired until the ticks wrap too.
  EXPECT_EQ(after(0), "");
  EXPECT_EQ(after(1000), "list");
  EXPECT_EQ(after(2000), "list");
  EXPECT_EQ(after(1), "");
}

}  // namespace
