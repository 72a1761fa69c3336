#include "controller/TMerakOrbis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "ScriptedBus.h"
#include "controller/TMerakOrbisCache.h"
#include "controller/TMerakOrbisCom.h"
#include "controller/TTivanOnly_MerakOrbis.h"
#include "platform/TickCount.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kTypeTwo = "Tivan,CV-SX,SN,C,V3";

class TMerakOrbisTest : public testing::Test {
 protected:
  TMerakOrbisTest() { mDevice.responder = mController; }
  /// Opens a controller whose system information is this, and forgets what that sent.
  void Open(const std::string& systemInfo = "Tivan,CV-LX,SN1,Controller,V2.8") {
    mController.SetValue("SYSTEMINFO", systemInfo);
    ASSERT_EQ(mOrbis.Open(0), 0U);
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

TEST_F(TMerakOrbisTest, OperationsBesideTheExportedOnesSendTheirLinePassOnItsErrorAndAnswerThreeWhenClosed) {
  std::string text;
  std::array<int, 3> ints{};
  std::array<float, 3> floats{};
  const std::pair<std::string, std::function<MerakResult()>> cases[] = {
      {"FILTER_MODE AUTO", [&] { return mOrbis.SetFilterMode("AUTO"); }},
      {"SHUTTER_MODE 1", [&] { return mOrbis.SetShutterMode(1); }},
      {"POSITION?", [&] { return mOrbis.ResetPosition(); }},
      {"EEPROMINFO?", [&] { return mOrbis.GetEepromInfo(ints, floats, ints); }},
      {"PERIPHERAL A,B",
       [&] {
         return mOrbis.SetPeripherals(std::vector<std::string>{"A", "B"});
       }},
      {"any text", [&] { return mOrbis.RawCommand("any text", text); }},
  };
  for (const auto& [line, call] : cases) {
    EXPECT_EQ(call(), 3U) << line;
  }
  EXPECT_EQ(mDevice.written, "");
  Open();
  for (const auto& [line, call] : cases) {
    Lines().clear();
    mController.SetAnswer(line, "E08\r");
    EXPECT_EQ(call(), 6U) << line;
    EXPECT_THAT(Lines(), ElementsAre(line));
  }
}

TEST_F(TMerakOrbisTest, TypesAreToldByModelCodeWithLxAndMxFirstAndOnlyTypeTwoIsBidFarewell) {
  const std::pair<std::string, int> types[] = {{"xMXx", 1}, {"CV-SX", 2}, {"SXMX", 1}, {"CV-300", 3}, {"lx", 3}};
  mController.SetAnswer("GOODBYE", "E01\r");
  for (const auto& [model, type] : types) {
    Open("Tivan," + model + ",SN,C,V1");
    EXPECT_EQ(mOrbis.GetSystemType(), type) << model;
    EXPECT_EQ(mOrbis.InternalShutterAvailable(), type == 2);
    Lines().clear();
    EXPECT_EQ(mOrbis.Close(), 0U);
    EXPECT_EQ(Lines().size(), type == 2 ? 1U : 0U);
  }
  Open(kTypeTwo);
  mController.SetAnswer("GOODBYE", "");
  mController.SetAnswer("FILTERHOME", "");
  EXPECT_EQ(mOrbis.FilterHome(), 4U);
  const std::uint64_t before = mTime.Slept();
  EXPECT_EQ(mOrbis.Close(), 0U);
  EXPECT_LE(mTime.Slept() - before, 1'000'000U) << "shortly when it is silent";
  mController.SetAnswer("SYSTEMINFO?", "E01\r");
  EXPECT_EQ(mOrbis.Open(0), 1U);
  EXPECT_TRUE(mOrbis.IsOpen() && !mOrbis.HasEepromRecord()) << "an unknown model stays open without a record";
  mController.SetAnswer("Hello", "E01\r");
  EXPECT_EQ(mOrbis.Open(0), 0U) << "success, but closed";
  EXPECT_FALSE(mOrbis.IsOpen() || mDevice.isOpen);
}

TEST_F(TMerakOrbisTest, SystemInformationIsClearedFirstSplitAndCutAndItsVersionForgotten) {
  TMerakOrbis::SystemInfo info{"a", "b", "c", "d", "e"};
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), 3U);
  EXPECT_EQ(info.manufacturer + info.firmware, "");
  Open();
  mController.SetValue("SYSTEMINFO", "Maker,,Model\nThird");
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), 0U);
  EXPECT_EQ(info.manufacturer + "|" + info.model + "|" + info.serialNumber + "|" + info.fourth, "Maker|Model|Third|");
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 0.0F) << "a reply without a version forgets the one before";
  mController.SetValue("SYSTEMINFO", std::string(200, 'm') + ",a,b,c,V3.5");
  std::array<std::array<char, TMerakOrbis::kMaxSystemInfoLength + 2>, 5> out{};
  out[0].fill('#');
  EXPECT_EQ(mOrbis.GetSystemInfoEx(out[0].data(), out[1].data(), out[2].data(), out[3].data(), out[4].data()), 0U);
  EXPECT_EQ(std::string(out[0].data(), 81), std::string(79, 'm') + std::string("\0#", 2));
  // The version lasts over a close, but not over a question that a closed device cannot answer.
  mOrbis.Close();
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 3.5F);
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), 3U);
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 0.0F);
}

TEST_F(TMerakOrbisTest, UnreadableValuesLeaveTheOutputAndTotalStepsBeyondAnIntAreNone) {
  Open();
  mController.SetValue("POSITION", "");
  mController.SetValue("GRATING", "");
  int number = -7;
  EXPECT_EQ(mOrbis.GetGrating(number) + mOrbis.GetGrating(number), 0U);
  EXPECT_EQ(number, -7);
  EXPECT_EQ(mOrbis.ResetPosition(), 4U);
  EXPECT_THAT(Lines(), ElementsAre("GRATING?", "GRATING?", "POSITION?")) << "nothing was remembered";
  unsigned long steps = 7;
  const std::pair<const char*, unsigned long> cases[] = {
      {"", 7}, {"2147483647", 2147483647}, {"-1", 0}, {"2147483648", 0}, {"99999999999999999999999", 0}};
  for (const auto& [text, expected] : cases) {
    mController.SetValue("TOTALSTEPS", text);
    EXPECT_EQ(mOrbis.GetTotalSteps(steps), 0U);
    EXPECT_EQ(steps, expected) << text;
  }
}

TEST_F(TMerakOrbisTest, PeripheralsFillTheRoomGivenAndATagCountsWhenANameLiesInsideIt) {
  Open();
  mController.SetValue("PERIPHERAL", "SI1,,ABCDEFGHIJ\nSO2,FIL");
  std::array<TMerakOrbis::PeripheralName, 4> names{};
  names[3].fill('#');
  for (const int room : {-5, 3}) {
    int count = room;
    EXPECT_EQ(mOrbis.GetPeripherals(names.data(), count), 0U);
    EXPECT_EQ(count, std::max(room, 0));
  }
  EXPECT_EQ(TMerakOrbis::PeripheralText(names[1]), "ABCDEFGH");
  EXPECT_EQ(names[3][0], '#');
  mController.SetValue("PERIPHERAL", "SI,SO2,FILTER");
  EXPECT_EQ(mOrbis.GetInputSlitCount() * 10 + mOrbis.GetOutputSlitCount(), 21);
  EXPECT_EQ(mOrbis.CountPeripherals({"FIL"}), 0) << "not the other way round";
}

TEST_F(TMerakOrbisTest, TypeTwoCachesPeripheralsUntilItIsOpenedAnew) {
  Open(kTypeTwo);
  mController.SetValue("PERIPHERAL", "SI1");
  EXPECT_EQ(mOrbis.GetInputSlitCount() + mOrbis.GetInputSlitCount(), 2);
  EXPECT_THAT(Lines(), ElementsAre("PERIPHERAL?"));
  // A new list counts from when it is sent, even if the controller refuses it.
  mController.SetAnswer("PERIPHERAL SO1,SO2", "E08\r");
  EXPECT_EQ(mOrbis.SetPeripherals({"SO1", "SO2"}), 6U);
  // Opening a model without the cache neither empties it nor switches it off.
  mOrbis.Close();
  Open();
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 2);
  EXPECT_THAT(Lines(), IsEmpty());
  Open(kTypeTwo);
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 1);
  EXPECT_THAT(Lines(), ElementsAre("PERIPHERAL?"));
}

// ---- Replies as no honest controller sends them ----

TEST_F(TMerakOrbisTest, ReadsA64KReplyWholeAndRefusesALongerOne) {
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

TEST_F(TMerakOrbisTest, ValuesOfAnyKindStayInsideTheirObjects) {
  TMerakOrbis controller(nullptr);
  ASSERT_EQ(controller.OpenShortTimeouts(0), 0U);
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
    ASSERT_TRUE(number >= 0 && number <= 2);
    TMerakOrbis::SystemInfo info;
    controller.GetSystemInfoEx(info);
    std::vector<float> lines;
    std::vector<std::string> blazes;
    controller.GetGratings(lines, blazes);
    ASSERT_TRUE(lines.size() <= 4 && blazes.size() == lines.size());
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

TEST_F(TMerakOrbisTest, RepliesCutAtAnyByteEndInBoundedTime) {
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

TEST_F(TMerakOrbisTest, APauseLongerThanTheTimeoutNeverPassesAsAnEcho) {
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

// ---- Only the maker's own ----

class TTivanOnlyTest : public testing::Test {
 protected:
  static ScriptedController Controller(const std::string& systemInfo) {
    ScriptedController controller;
    controller.SetValue("SYSTEMINFO", systemInfo);
    return controller;
  }
  ScriptedBridge::Device& AddLx(const std::string& manufacturer = "Tivan") {
    return mBridge.Add(0x0403, 0xD491, Controller(manufacturer + ",CV-LX,SN,C,V2.8"));
  }
  ScriptedBridge::Device& AddSx(const std::string& manufacturer = "Tivan") {
    return mBridge.Add(0x136E, 0x0017, Controller(manufacturer + ",CV-SX,SN,C,V2.8"));
  }
  static int Count(TMerakOrbis& orbis) {
    int count = -1;
    EXPECT_EQ(orbis.GetDeviceCount(count), 0U);
    return count;
  }

  FakeTime mTime;
  ScriptedBridge mBridge;
  ScriptedBus mBus;
  TTivanOnly_MerakOrbis mOrbis{nullptr};
};

TEST_F(TTivanOnlyTest, CountsAndOpensBehindAControllerOnTheBus) {
  mBus.responder = Controller("Other,CV-LX,SN,C,V2.8");
  TTivanOnly_MerakOrbis orbis(&mBus);
  EXPECT_EQ(Count(orbis), 1);
  EXPECT_TRUE(mBus.bursts.empty()) << "alone it is not asked for its maker";
  mBus.responder = Controller("Tivan,CV-LX,SN,C,V2.8");
  ScriptedBridge::Device& first = AddLx();
  ScriptedBridge::Device& second = AddLx("TiVaN");
  // The maker's own product is taken for the one that the bus already reaches.
  ScriptedBridge::Device& sx = AddSx();
  EXPECT_EQ(Count(orbis), 3);
  EXPECT_EQ(orbis.Open(2), 0U);
  EXPECT_TRUE(second.isOpen);
  EXPECT_FALSE(first.isOpen);
  EXPECT_EQ(sx.opens, 0);
  // Found with the short time-outs, used with the long ones.
  EXPECT_EQ(second.timeouts.at(second.timeouts.size() - 2), std::pair(100U, 100U));
  EXPECT_EQ(second.timeouts.back(), std::pair(100000U, 1000U));
  EXPECT_EQ(orbis.Open(3), 2U);
  EXPECT_FALSE(orbis.IsOpen());
  // The first place of the bridge's list always reaches the bus.
  const int opens = first.opens;
  EXPECT_EQ(orbis.Open(1), 0U);
  EXPECT_TRUE(orbis.IsOpen());
  EXPECT_EQ(first.opens, opens);
}

TEST_F(TTivanOnlyTest, ForeignMakersAreClosedAgain) {
  ScriptedBridge::Device& cable = mBridge.Add(0x0403, 0x6001, ScriptedController());
  ScriptedBridge::Device& foreign = AddSx("Tivanx");
  AddSx().openStatus = FT_DEVICE_NOT_OPENED;
  ScriptedBridge::Device& own = AddSx("tivan");
  EXPECT_EQ(Count(mOrbis), 1);
  EXPECT_EQ(cable.opens, 0) << "another product is not even tried";
  EXPECT_EQ(mOrbis.Open(0), 0U);
  EXPECT_TRUE(own.isOpen);
  EXPECT_FALSE(foreign.isOpen);
  // Identified at open, asked for its maker, and bid farewell; once for the count and once for the open.
  const std::string visit = "Hello\rHello\rSYSTEMINFO?\rSYSTEMINFO?\rGOODBYE\r";
  EXPECT_EQ(foreign.written, visit + visit);
  EXPECT_EQ(mOrbis.Open(1), 2U);
}

TEST_F(TTivanOnlyTest, NeverEndsOnABridgeThatDoesNotSayWhoItIs) {
  ScriptedController mute;
  mute.SetAnswer("SYSTEMINFO?", "E01\r");
  ScriptedController silent;
  silent.FallSilent();
  for (const ScriptedController& controller : {mute, silent}) {
    mBridge.Add(0x136E, 0x0017, controller);
  }
  const std::uint64_t before = mTime.Slept();
  EXPECT_EQ(Count(mOrbis), 0);
  EXPECT_EQ(mOrbis.Open(0), 2U);
  EXPECT_FALSE(mOrbis.IsOpen() || mBridge.At(0).isOpen || mBridge.At(1).isOpen);
  EXPECT_LE(mTime.Slept() - before, 5'000'000U) << "a silent device costs seconds";
}

TEST_F(TTivanOnlyTest, AHeldBridgeKeepsItsPlaceInTheCount) {
  const ScriptedBridge::Device* const devices[] = {&AddLx(), &AddLx()};
  TTivanOnly_MerakOrbis second(nullptr);
  EXPECT_EQ(mOrbis.Open(0), 0U);
  EXPECT_EQ(second.Open(1), 0U);
  EXPECT_TRUE(devices[0]->isOpen && devices[1]->isOpen);
  // All that is left is the one that the asking object holds itself.
  EXPECT_EQ(Count(second), 1);
  // Index 0 skips what is held; a reopened object drops its own bridge first.
  second.Close();
  TTivanOnly_MerakOrbis third(nullptr);
  EXPECT_EQ(third.Open(0), 0U);
  EXPECT_TRUE(devices[1]->isOpen);
  EXPECT_EQ(mOrbis.Open(0), 0U);
  EXPECT_TRUE(devices[0]->isOpen);
}

TEST_F(TTivanOnlyTest, ABrokenListGivesOneAndAnUnreadableListNothing) {
  AddSx();
  int count = -1;
  mBridge.infoStatus = FT_OTHER_ERROR;
  EXPECT_EQ(Count(mOrbis), 0);
  EXPECT_EQ(mOrbis.Open(0), 2U);
  mBridge.createStatus = FT_INSUFFICIENT_RESOURCES;
  EXPECT_EQ(mOrbis.GetDeviceCount(count), 1U);
  EXPECT_EQ(mOrbis.Open(0), 1U);
}

}  // namespace
