#include "controller/TMerakOrbis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>
#include <vector>

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

  FakeTime mTime;
  ScriptedController mController;
  ScriptedBridge mBridge;
  ScriptedBridge::Device& mDevice = mBridge.Add();
  TMerakOrbis mOrbis{nullptr};
};

struct WireCase {
  std::string line;
  std::function<MerakResult(TMerakOrbis&)> call;
};

/// Every operation that is one line and takes its parameters as they come.
const std::vector<WireCase>& WireCases() {
  static int number = 0;
  static unsigned long steps = 0;
  static unsigned char byte = 0;
  static float wavelength = 0;
  static std::string text;
  static const std::vector<WireCase> cases = {
      {"SYSTEMINFO?", [](TMerakOrbis& o) { return o.GetSystemInfo(text); }},
      {"SAVEINFO? 17", [](TMerakOrbis& o) { return o.GetSaveInfo(17, number); }},
      {"SAVEINFO 17,255", [](TMerakOrbis& o) { return o.SaveInfo(17, 255); }},
      {"MOVETO 612.1250", [](TMerakOrbis& o) { return o.MoveTo(612.125F); }},
      {"MOVETO -0.5000", [](TMerakOrbis& o) { return o.MoveTo(-0.5F); }},
      {"GRATINGHOME", [](TMerakOrbis& o) { return o.GratingHome(); }},
      {"GRATING 2", [](TMerakOrbis& o) { return o.Grating(2); }},
      {"Step?", [](TMerakOrbis& o) { return o.GetStep(number); }},
      {"Step_abs 12345", [](TMerakOrbis& o) { return o.StepAbs(12345); }},
      {"EXITPORT?", [](TMerakOrbis& o) { return o.GetExitPort(number); }},
      {"EXITPORT 1", [](TMerakOrbis& o) { return o.SetExitPort(1); }},
      {"ENTRANCEPORT?", [](TMerakOrbis& o) { return o.GetEntrancePort(number); }},
      {"ENTRANCEPORT 0", [](TMerakOrbis& o) { return o.SetEntrancePort(0); }},
      {"FILTER?", [](TMerakOrbis& o) { return o.GetFilter(number); }},
      {"FILTER 6", [](TMerakOrbis& o) { return o.SetFilter(6); }},
      {"FILTERHOME", [](TMerakOrbis& o) { return o.FilterHome(); }},
      {"FILTER_MODE?", [](TMerakOrbis& o) { return o.GetFilterMode(text); }},
      {"FILTER_MODE AUTO", [](TMerakOrbis& o) { return o.SetFilterMode("AUTO"); }},
      {"FOCUS?", [](TMerakOrbis& o) { return o.GetMirrorFocus(number); }},
      {"FOCUS_TOTALSTEPS?", [](TMerakOrbis& o) { return o.GetFocusMirrorMaxSteps(number); }},
      {"MOVE_FOCUS 1,250", [](TMerakOrbis& o) { return o.SetMirrorFocus(-250); }},
      {"MOVE_FOCUS 0,250", [](TMerakOrbis& o) { return o.SetMirrorFocus(250); }},
      {"MOVE_FOCUS 1,2147483648", [](TMerakOrbis& o) { return o.SetMirrorFocus(INT_MIN); }},
      {"FOCUS_HOME", [](TMerakOrbis& o) { return o.FocusMirrorHome(); }},
      {"SLIT_MODE? 3", [](TMerakOrbis& o) { return o.GetSlitMode(3, text); }},
      {"SLIT_MODE 3,FAST", [](TMerakOrbis& o) { return o.SetSlitMode(3, "FAST"); }},
      {"SLIT_WIDTH? 4", [](TMerakOrbis& o) { return o.GetSlitWidth(4, number); }},
      {"SLIT_WIDTH 2, 1000", [](TMerakOrbis& o) { return o.SetSlitWidth(2, 1000); }},
      {"SLITHOME 1", [](TMerakOrbis& o) { return o.SlitHome(1); }},
      {"PORT_OUTPUT 3", [](TMerakOrbis& o) { return o.SetPortState(3); }},
      {"PORT_INPUT?", [](TMerakOrbis& o) { return o.GetPortState(number); }},
      {"CONFIG_SYSTEM_DATA? 82", [](TMerakOrbis& o) { return o.GetConfigSystemData(82, text); }},
      {"CONFIG_SYSTEM_DATA 82,a b", [](TMerakOrbis& o) { return o.SetConfigSystemData(82, "a b"); }},
      {"TURRET?", [](TMerakOrbis& o) { return o.GetTurret(number); }},
      {"TURRET 2", [](TMerakOrbis& o) { return o.SetTurret(2); }},
      {"SHUTTER_MODE?", [](TMerakOrbis& o) { return o.GetShutterMode(number); }},
      {"SHUTTER_MODE 1", [](TMerakOrbis& o) { return o.SetShutterMode(1); }},
      {"TOTALSTEPS?", [](TMerakOrbis& o) { return o.GetTotalSteps(steps); }},
      {"POSITION?", [](TMerakOrbis& o) { return o.Position(wavelength); }},
      {"POSITION?", [](TMerakOrbis& o) { return o.ResetPosition(); }},
      {"GRATING?", [](TMerakOrbis& o) { return o.GetGrating(number); }},
      {"GRATINGS?", [](TMerakOrbis& o) { return o.GetRawGratings(text); }},
      {"any text", [](TMerakOrbis& o) { return o.RawCommand("any text", text); }},
      {"SAVEINFO? 21", [](TMerakOrbis& o) { return o.ReadEepromByte(21, byte); }},
      {"SAVEINFO 21,200", [](TMerakOrbis& o) { return o.WriteEepromByte(21, 200); }},
  };
  return cases;
}

TEST_F(TMerakOrbisTest, EveryOperationSendsItsLinePassesOnItsErrorAndAnswersThreeWhenClosed) {
  for (const WireCase& wire : WireCases()) {
    EXPECT_EQ(wire.call(mOrbis), 3U) << wire.line;
  }
  EXPECT_EQ(mDevice.written, "");
  Open();
  for (const WireCase& wire : WireCases()) {
    Lines().clear();
    mController.SetAnswer(wire.line, "E08\r");
    EXPECT_EQ(wire.call(mOrbis), 6U) << wire.line;
    EXPECT_THAT(Lines(), ElementsAre(wire.line));
  }
}

TEST_F(TMerakOrbisTest, OpenGreetsTwiceAndAsksForTheModelAndTheDestructorCloses) {
  {
    TMerakOrbis other(nullptr);
    EXPECT_EQ(other.Open(0), 0U);
    EXPECT_EQ(mDevice.written, "Hello\rHello\rSYSTEMINFO?\r");
    EXPECT_TRUE(other.HasEepromRecord());
    EXPECT_EQ(other.GetFirmwareVersion(), 2.8F);
    EXPECT_TRUE(mDevice.isOpen);
  }
  EXPECT_FALSE(mDevice.isOpen);
}

TEST_F(TMerakOrbisTest, AnUnansweredGreetingClosesAndAnUnknownModelStaysOpenWithoutARecord) {
  mController.SetAnswer("Hello", "E01\r");
  EXPECT_EQ(mOrbis.Open(0), 0U) << "success, but closed";
  EXPECT_FALSE(mOrbis.IsOpen());
  EXPECT_FALSE(mDevice.isOpen);
  mController.SetAnswer("Hello", "OK\r");
  mController.SetAnswer("SYSTEMINFO?", "E01\r");
  EXPECT_EQ(mOrbis.Open(0), 1U);
  EXPECT_TRUE(mOrbis.IsOpen());
  EXPECT_FALSE(mOrbis.HasEepromRecord());
  EXPECT_EQ(mOrbis.ReadEeprom(), 3U);
  EXPECT_EQ(mOrbis.Close(), 0U);
  EXPECT_FALSE(mDevice.isOpen);
}

TEST_F(TMerakOrbisTest, TellsTypesByModelCodeWithLxAndMxFirst) {
  const std::pair<std::string, int> types[] = {{"CV-LX", 1}, {"xMXx", 1},   {"CV-SX", 2},
                                               {"SXMX", 1},  {"CV-300", 3}, {"lx", 3}};
  for (const auto& [model, type] : types) {
    Open("Tivan," + model + ",SN,C,V1");
    EXPECT_EQ(mOrbis.GetSystemType(), type) << model;
    EXPECT_EQ(mOrbis.InternalShutterAvailable(), type == 2);
  }
}

TEST_F(TMerakOrbisTest, OnlyTypeTwoIsBidFarewellAndShortlyWhenItIsSilent) {
  Open();
  EXPECT_EQ(mOrbis.Close(), 0U);
  EXPECT_THAT(Lines(), IsEmpty());
  Open(kTypeTwo);
  mController.SetAnswer("GOODBYE", "E01\r");
  EXPECT_EQ(mOrbis.Close(), 0U);
  EXPECT_THAT(Lines(), ElementsAre("GOODBYE"));
  EXPECT_FALSE(mOrbis.IsOpen());
  Open(kTypeTwo);
  mController.FallSilent();
  EXPECT_EQ(mOrbis.FilterHome(), 4U);
  const std::uint64_t before = mTime.Slept();
  EXPECT_EQ(mOrbis.Close(), 0U);
  EXPECT_LE(mTime.Slept() - before, 1'000'000U);
}

TEST_F(TMerakOrbisTest, SystemInformationIsClearedFirstSplitAndCut) {
  TMerakOrbis::SystemInfo info{"a", "b", "c", "d", "e"};
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), 3U);
  EXPECT_EQ(info.manufacturer + info.firmware, "");

  Open();
  mController.SetValue("SYSTEMINFO", "Maker,,Model\nThird");
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), 0U);
  EXPECT_EQ(info.manufacturer + "|" + info.model + "|" + info.third + "|" + info.fourth, "Maker|Model|Third|");
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 0.0F) << "a reply without a version forgets the one before";

  mController.SetValue("SYSTEMINFO", std::string(200, 'm') + ",a,b,c,V3.5");
  std::array<std::array<char, TMerakOrbis::kMaxSystemInfoLength + 2>, 5> out{};
  out[0].fill('#');
  EXPECT_EQ(mOrbis.GetSystemInfoEx(out[0].data(), out[1].data(), out[2].data(), out[3].data(), out[4].data()), 0U);
  EXPECT_EQ(std::string(out[0].data()), std::string(79, 'm'));
  EXPECT_EQ(out[0][80], '#');
  EXPECT_EQ(std::string(out[4].data()), "V3.5");

  // The version lasts over a close, but not over a question that a closed device cannot answer.
  EXPECT_EQ(mOrbis.Close(), 0U);
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 3.5F);
  EXPECT_EQ(mOrbis.GetSystemInfoEx(info), 3U);
  EXPECT_EQ(mOrbis.GetFirmwareVersion(), 0.0F);
}

TEST_F(TMerakOrbisTest, ListsFillWhatTheyHave) {
  Open();
  std::vector<float> lines;
  std::vector<std::string> blazes;
  mController.SetValue("GRATINGS", "3,1200.5,500,x,600.25,750,y,300,1000");
  EXPECT_EQ(mOrbis.GetGratings(lines, blazes), 0U);
  EXPECT_THAT(lines, ElementsAre(1200.5F, 600.25F, 300.0F));
  EXPECT_THAT(blazes, ElementsAre("500", "750", "1000"));
  mController.SetValue("GRATINGS", "1\n1200,500");
  EXPECT_EQ(mOrbis.GetGratings(lines, blazes), 0U);
  EXPECT_THAT(lines, ElementsAre(1200.0F, 0.0F, 0.0F));
  EXPECT_THAT(blazes, ElementsAre("500", "", ""));
  std::array<int, 3> first{};
  std::array<float, 3> second{};
  std::array<int, 3> third{};
  mController.SetValue("EEPROMINFO", "n,1,0.5,2,z,3,1.5,4");
  EXPECT_EQ(mOrbis.GetEepromInfo(first, second, third), 8U) << "short";
  EXPECT_THAT(first, ElementsAre(1, 3, 0));
  EXPECT_THAT(third, ElementsAre(2, 4, 0));
  mController.SetValue("EEPROMINFO", "n,1,0.5,2,z,3,1.5,4,z,5,2.5,6");
  EXPECT_EQ(mOrbis.GetEepromInfo(first, second, third), 0U);
  EXPECT_THAT(first, ElementsAre(1, 3, 5));
  EXPECT_THAT(second, ElementsAre(0.5F, 1.5F, 2.5F));
  EXPECT_THAT(third, ElementsAre(2, 4, 6));
}

TEST_F(TMerakOrbisTest, UnreadableValuesLeaveTheOutputAndMoveNothing) {
  Open();
  for (const char* word : {"FILTER", "POSITION", "GRATING", "TOTALSTEPS", "SLIT_MODE"}) {
    mController.SetValue(word, "");
  }
  int number = -7;
  float wavelength = -7;
  unsigned long steps = 7;
  std::string mode = "kept";
  EXPECT_EQ(mOrbis.GetFilter(number) + mOrbis.GetGrating(number) + mOrbis.Position(wavelength), 0U);
  EXPECT_EQ(mOrbis.GetTotalSteps(steps) + mOrbis.GetSlitMode(1, mode), 0U);
  EXPECT_EQ(number, -7);
  EXPECT_EQ(wavelength, -7);
  EXPECT_EQ(steps, 7U);
  EXPECT_EQ(mode, "kept");
  Lines().clear();
  EXPECT_EQ(mOrbis.GetGrating(number), 0U) << "nothing was remembered";
  EXPECT_EQ(mOrbis.ResetPosition(), 4U);
  EXPECT_THAT(Lines(), ElementsAre("GRATING?", "POSITION?"));
}

TEST_F(TMerakOrbisTest, TotalStepsBeyondAnIntAreNone) {
  Open();
  const std::pair<const char*, unsigned long> cases[] = {
      {"2147483647", 2147483647}, {"-1", 0}, {"2147483648", 0}, {"99999999999999999999999", 0}};
  for (const auto& [text, expected] : cases) {
    mController.SetValue("TOTALSTEPS", text);
    unsigned long steps = 7;
    EXPECT_EQ(mOrbis.GetTotalSteps(steps), 0U);
    EXPECT_EQ(steps, expected) << text;
  }
}

TEST_F(TMerakOrbisTest, RemembersTheGratingOverACloseButNotARefusedOne) {
  Open();
  int grating = 0;
  mController.SetValue("GRATING", "2");
  EXPECT_EQ(mOrbis.GetGrating(grating), 0U);
  mController.SetAnswer("GRATING 3", "E10\r");
  EXPECT_EQ(mOrbis.Grating(3), 10U);
  EXPECT_EQ(mOrbis.GetGrating(grating), 0U);
  EXPECT_EQ(grating, 2);
  EXPECT_EQ(mOrbis.Grating(1), 0U);
  mOrbis.Close();
  Open();
  EXPECT_EQ(mOrbis.GetGrating(grating), 0U);
  EXPECT_EQ(grating, 1);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(TMerakOrbisTest, SlitModesNeedFirmware27) {
  Open("Tivan,CV-LX,SN,C,V2.69");
  std::string mode;
  EXPECT_EQ(mOrbis.GetSlitMode(1, mode), 9U);
  EXPECT_EQ(mOrbis.SetSlitMode(1, "X"), 9U);
  EXPECT_THAT(Lines(), IsEmpty());
  // The float 2.7 lies above the double.
  Open("Tivan,CV-LX,SN,C,V2.7");
  mController.SetValue("SLIT_MODE", std::string(50, 'm') + " rest");
  EXPECT_EQ(mOrbis.GetSlitMode(1, mode), 0U);
  EXPECT_EQ(mode, std::string(35, 'm'));
}

TEST_F(TMerakOrbisTest, ListsPeripheralsUpToTheRoomGiven) {
  Open();
  mController.SetValue("PERIPHERAL", "SI1,,ABCDEFGHIJ\nSO2,FIL");
  std::array<TMerakOrbis::PeripheralName, 4> names{};
  names[3].fill('#');
  int count = 3;
  EXPECT_EQ(mOrbis.GetPeripherals(names.data(), count), 0U);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(TMerakOrbis::PeripheralText(names[0]), "SI1");
  EXPECT_EQ(TMerakOrbis::PeripheralText(names[1]), "ABCDEFGH");
  EXPECT_EQ(TMerakOrbis::PeripheralText(names[2]), "SO2");
  EXPECT_EQ(names[3][0], '#');
  for (const int room : {0, -5}) {
    count = room;
    EXPECT_EQ(mOrbis.GetPeripherals(names.data(), count), 0U);
    EXPECT_EQ(count, 0);
  }
}

TEST_F(TMerakOrbisTest, CountsATagWhenAListedNameLiesInsideIt) {
  Open();
  mController.SetValue("PERIPHERAL", "SI,SO2,FILTER");
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 2);
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 1);
  EXPECT_EQ(mOrbis.CountPeripherals({"FIL"}), 0) << "not the other way round";
  mController.SetValue("PERIPHERAL", "");
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 0);
  mController.SetAnswer("PERIPHERAL?", "E01\r");
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 0);
  EXPECT_EQ(Lines().size(), 5U) << "asked every time";
}

TEST_F(TMerakOrbisTest, TypeTwoCachesPeripheralsForGoodAndGratingsForThreeSeconds) {
  Open(kTypeTwo);
  mController.SetValue("PERIPHERAL", "SI1");
  mController.SetValue("GRATINGS", "list");
  std::string text;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(mOrbis.GetInputSlitCount(), 1);
    EXPECT_EQ(mOrbis.GetRawGratings(text), 0U);
    EXPECT_EQ(text, "\nlist\n");
  }
  EXPECT_THAT(Lines(), ElementsAre("PERIPHERAL?", "GRATINGS?"));
  mTime.AdvanceMilliseconds(3001);
  mOrbis.GetInputSlitCount();
  mOrbis.GetRawGratings(text);
  EXPECT_THAT(Lines(), ElementsAre("PERIPHERAL?", "GRATINGS?", "GRATINGS?"));
  // A new list counts from when it is sent, even if the controller refuses it.
  mController.SetAnswer("PERIPHERAL SO1,SO2", "E08\r");
  EXPECT_EQ(mOrbis.SetPeripherals({"SO1", "SO2"}), 6U);
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 2);
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 0);
  // Opening a model without the cache neither empties it nor switches it off.
  mOrbis.Close();
  Open();
  EXPECT_EQ(mOrbis.GetOutputSlitCount(), 2);
  EXPECT_THAT(Lines(), IsEmpty());
  Open(kTypeTwo);
  EXPECT_EQ(mOrbis.GetInputSlitCount(), 1);
  EXPECT_THAT(Lines(), ElementsAre("PERIPHERAL?"));
}

TEST_F(TMerakOrbisTest, ErrorTextsOfEveryCode) {
  std::string texts;
  for (const int code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, -1, INT_MAX}) {
    texts += TMerakOrbis::GetErrorString(code) + std::string("|");
  }
  EXPECT_EQ(texts,
            "Success|Unknown Error|Device Not Found|Device Not Open|IO Error|Out Of Memory|Invalid Parameter|"
            "Illegal Access Error|EEPROM Error|Command Not Supported|Coarse Turret Position Error|"
            "Fine Turret Position Error|Illegal Command|Unknown Error|Unknown Error|Unknown Error|");
}

}  // namespace
