// The main job on one older instrument, through the exported functions: it is homed, goes where it is sent, tells what
// its EEPROM holds, stores what is changed and nothing else, and fails without harm.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <cmath>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "support/EveryFunction.h"
#include "support/LegacyLaboratory.h"

using nlohmann::json;

namespace {

// Where page 0 and page 1 of the EEPROM keep what the calls change.
constexpr int kCurrentWave = 75;
constexpr int kCurrentSlit = 79;
constexpr int kCurrentFilter = 83;
constexpr int kCurrentMirror = 87;
constexpr int kDetectorOffset = 70;
constexpr int kDetectorOffsetPort2 = 226;

constexpr int kPixels = 1024;

class LegacyInstrumentTest : public testing::Test {
 protected:
  void Open(const json& legacy, const json& more = json::object()) {
    json scenario = {{"legacy", legacy}, {"detector", {{"pixels", kPixels}}}};
    scenario.update(more);
    mLab = std::make_unique<LegacyLaboratory>(scenario);
    ASSERT_EQ(CorvaneInitialize(mLab->Directory().data()), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneGetNumberDevices(&mDevices), CORVANE_SUCCESS);
  }

  void TearDown() override { CorvaneClose(); }

  LegacyLaboratory& Lab() { return *mLab; }
  int Devices() const { return mDevices; }

  /// The drive stands within a step of a wavelength, and came there forward.
  void ExpectStandsAt(float nm, const std::string& where) {
    const json state = Lab().State();
    ASSERT_TRUE(state["wavelength"].is_number()) << where << ": still turning";
    EXPECT_NEAR(state["wavelength"].get<double>(), nm, state["nmPerStep"].get<double>()) << where;
    EXPECT_TRUE(state["lastForward"].get<bool>()) << where;
  }

 private:
  std::unique_ptr<LegacyLaboratory> mLab;
  int mDevices = 0;
};

/// An exception leaves the one function that reads before its guard.
constexpr unsigned int kThrows = 1;

unsigned int StatusOf(const ExportedFunction& function, Outputs& out) {
  try {
    return function.call.run(0, out);
  } catch (const std::exception&) {
    return kThrows;
  }
}

// With registers and taking its time, with bursts, and from inside the fine hole.
constexpr const char* kDrives[] = {
    R"({"motion": 0.01, "record": {"sine": {"amplitude": 9}}, "drive": {"position": 271828}})",
    R"({"structureVersion": "1.1", "fpga": 22, "record": {"sine": {"amplitude": 9}, "angularDeviation": 14.7},
        "drive": {"position": 478900, "backlash": 150}})",
    R"({"structureVersion": "2.5", "drive": {"position": 30}})"};

struct LegacyDrive : LegacyInstrumentTest, testing::WithParamInterface<int> {};

TEST_P(LegacyDrive, IsHomedAndStandsWhereItWasSentOnEveryGrating) {
  ASSERT_NO_FATAL_FAILURE(Open(json::parse(kDrives[GetParam()])));
  ASSERT_EQ(Devices(), 1);
  ExpectStandsAt(500.0F, "after the start");
  for (int g = 1; g <= 3; ++g) {
    ASSERT_EQ(CorvaneSetGrating(0, g), CORVANE_SUCCESS);
    EXPECT_EQ(Lab().State()["grating"], g);
    float min = 0;
    float max = 0;
    float lines = 0;
    ASSERT_EQ(CorvaneGetWavelengthLimits(0, g, &min, &max), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneGetGratingInfo(0, g, &lines, nullptr, nullptr, nullptr), CORVANE_SUCCESS);
    for (const float part : {0.31F, 0.3101F, 0.02F, 0.6002F, 0.5999F, 1.0F}) {
      const float target = max * part;
      const std::string where = "grating " + std::to_string(g) + " at " + std::to_string(target);
      ASSERT_EQ(CorvaneSetWavelength(0, target), CORVANE_SUCCESS) << where;
      ASSERT_NO_FATAL_FAILURE(ExpectStandsAt(target, where));
      const double band = Lab().State()["nmPerStep"].get<double>() + 0.02;
      EXPECT_NEAR(Lab().Float(0, kCurrentWave) * 1200 / lines, target, band) << where;
      float answer = 0;
      EXPECT_EQ(CorvaneGetWavelength(0, &answer), CORVANE_SUCCESS);
      EXPECT_NEAR(answer, target, band) << where;
    }
    const auto moves = Lab().State()["moves"];
    EXPECT_EQ(CorvaneSetWavelength(0, std::nextafter(max, 1e9F)), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetWavelength(0, -0.001F), CORVANE_P2_INVALID);
    EXPECT_EQ(Lab().State()["moves"], moves);

    ExpectReports({{CALL(CorvaneGotoZeroOrder(d)), ""}, {CALL(CorvaneAtZeroOrder(d, &o.ints[0])), "1"}});
    EXPECT_NEAR(Lab().State()["fromZero"].get<double>(), 0.0, 1.0);
    EXPECT_EQ(Lab().Float(0, kCurrentWave), 0.0F);
    ASSERT_EQ(CorvaneSetWavelength(0, 400.0F), CORVANE_SUCCESS);
    std::vector<float> nm(kPixels);
    ASSERT_EQ(CorvaneGetCalibration(0, nm.data(), kPixels), CORVANE_SUCCESS);
    for (int pixel = 1; pixel <= kPixels; pixel += 93) {
      double truth = 0;
      ASSERT_EQ(Lab().Bus().TrueWavelength(0, pixel, &truth), 0);
      EXPECT_NEAR(nm[static_cast<std::size_t>(pixel) - 1], truth, Lab().State()["nmPerStep"].get<double>() + 0.01)
          << "grating " << g << " pixel " << pixel;
    }
  }
  EXPECT_GT(Lab().State()["movesBackward"][0], 6) << "both ways were tried";
}

INSTANTIATE_TEST_SUITE_P(Generations, LegacyDrive, testing::Range(0, 3));

/// The first structure version, which knows neither gratings nor a second slit nor a second detector, and the latest.
struct LegacyRecord : LegacyInstrumentTest, testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Latest, LegacyRecord, testing::Bool());

TEST_P(LegacyRecord, IsReportedAndStoresWhatIsChangedAndNothingElse) {
  const bool isLatest = GetParam();
  json legacy = json::parse(R"({"serial": "OLD-17", "slitWidths": [120, 340], "filter": 3, "memory": {"fill": 165},
      "record": {"focalLength": 0.303, "angularDeviation": 13.5, "tilt": 4.25, "detectorOffsets": [301],
                 "filters": ["A", "BB", "CCC", "DDDD", "EEEEE", "123456789"]}})");
  legacy["structureVersion"] = isLatest ? "3.0" : "1.0";
  if (isLatest) {
    const json other = {{"lines", 100}, {"blaze", "1"}, {"start", 1}};
    const json third = {{"lines", 500}, {"blaze", "H-VIS"}, {"start", 320001}, {"offset", 21}};
    legacy["activeTurret"] = 2;
    legacy["turrets"] = {{{"gratings", {other}}}, {{"gratings", {{{"lines", 1300}}, {{"lines", 700}}, third}}}};
    legacy["record"]["detectorOffsets"] = {301, -102};
  }
  ASSERT_NO_FATAL_FAILURE(Open(legacy));
  ASSERT_EQ(Devices(), 1);
  ExpectStandsAt(500.0F, "after the start");
  const std::vector<std::uint8_t> before = Lab().Memory();
  const auto writes = Lab().State()["writes"];

  ExpectReports({
      {CALL(CorvaneGetSerialNumber(d, o.text.data())), "OLD-17"},
      {CALL(CorvaneEepromGetOpticalParams(d, &o.floats[0], &o.floats[1], &o.floats[2])), "0.303,13.5,4.25"},
      {CALL(CorvaneGetTurret(d, &o.ints[0])), isLatest ? "2" : "1"},
      {CALL(CorvaneGetNumberGratings(d, &o.ints[0])), "3"},
      {CALL(CorvaneGetGratingInfo(d, 3, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])),
       isLatest ? "500,320001,21,H-VIS" : "300,320000,0,600"},
      // The square root of 3 over the lines, by the cosine of the deviation.
      {CALL(CorvaneGetWavelengthLimits(d, 3, &o.floats[0], &o.floats[1])), isLatest ? "0,3368.39" : "0,5613.98"},
      {CALL(CorvaneGetDetectorOffset(d, &o.ints[0])), "301"},
      {CALL(CorvaneGetDetectorOffsetPort2(d, &o.ints[0])), isLatest ? "-102" : "0"},
      {CALL(CorvaneGetSlit(d, &o.floats[0])), "120"},
      {CALL(CorvaneGetOutputSlit(d, &o.floats[0])), isLatest ? "340" : "25"},
      {CALL(CorvaneGetFilter(d, &o.ints[0])), "3"},
      {CALL(CorvaneGetFilterInfo(d, 6, o.text.data())), "123456789"},
      {CALL(CorvaneGetSlitCoefficients(d, &o.ints[0], &o.ints[1], &o.ints[2], &o.ints[3])), "-80,10,800,2200"},
  });
  EXPECT_EQ(Lab().State()["writes"], writes) << "reading writes nothing";

  const double fromZero = Lab().State()["fromZero"].get<double>();
  EXPECT_EQ(CorvaneSetDetectorOffset(0, 350), CORVANE_SUCCESS);
  EXPECT_NEAR(Lab().State()["fromZero"].get<double>(), fromZero + 49, 1e-6) << "the drive follows";
  EXPECT_EQ(CorvaneSetSlit(0, 75.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetDetectorOffsetPort2(0, -7), CORVANE_SUCCESS) << "in memory alone where the layout has none";
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  EXPECT_EQ(Lab().Int(1, kDetectorOffset), 350);
  EXPECT_EQ(Lab().Float(0, kCurrentSlit), 75.0F);
  std::vector<std::uint8_t> expected = before;
  const auto copy = [&](int page, int offset) {
    for (int i = 0; i < 4; ++i) {
      expected[static_cast<std::size_t>(page * Lab().kPageSize + offset + i)] = Lab().Byte(page, offset + i);
    }
  };
  copy(1, kDetectorOffset);
  copy(0, kCurrentSlit);
  if (isLatest) {
    EXPECT_EQ(Lab().Int(1, kDetectorOffsetPort2), -7);
    copy(1, kDetectorOffsetPort2);
  }
  EXPECT_EQ(Lab().Memory(), expected) << "nothing else is written";
  EXPECT_EQ(Lab().State()["lostWrites"], 0);
}

// Newer than is known, foreign, and unreadable in the middle: opening reads 5 bytes of the
// signature and 7 of the serial number, then the record.
constexpr const char* kRefused[] = {
    R"({"legacy": {"structureVersion": "3.1"}})",
    R"({"legacy": {"memory": {"patches": [{"page": 0, "offset": 0, "bytes": [255]}]}}})",
    R"({"transportFaults": [{"operation": 300}]})"};

TEST_F(LegacyInstrumentTest, AnEepromThatIsRefusedMovesNoMotorAndLosesNoByte) {
  for (const char* const refused : kRefused) {
    SCOPED_TRACE(refused);
    ASSERT_NO_FATAL_FAILURE(Open(json::object(), json::parse(refused)));
    ASSERT_EQ(Devices(), 1);
    const std::vector<std::uint8_t> before = Lab().Memory();
    for (const ExportedFunction& function : EveryDeviceFunction()) {
      Outputs out;
      const unsigned int status = StatusOf(function, out);
      const std::string call = function.call.text;
      if (function.part == Part::kCore && call.starts_with("CorvaneSet") &&
          !call.starts_with("CorvaneSetDetectorOffsetEx")) {
        EXPECT_EQ(status, CORVANE_COMMUNICATION_ERROR) << call;
      }
    }
    EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
    const json state = Lab().State();
    EXPECT_EQ(state["moves"], (std::vector<int>{0, 0, 0, 0, 0}));
    EXPECT_EQ(state["writes"], 0);
    EXPECT_EQ(state["lostWrites"], 0);
    EXPECT_EQ(Lab().Memory(), before);
  }
}

// Bytes that the library takes for a record, and that make no sense; a blank signature is no instrument.
TEST_F(LegacyInstrumentTest, ARecordWithoutSenseIsSurvived) {
  for (const int byte : {0x00, 0x7F, 0xFF}) {
    json patch = {{"page", 0}, {"offset", 0}, {"bytes", std::vector<int>(1536, byte)}};
    ASSERT_NO_FATAL_FAILURE(Open({{"memory", {{"patches", {patch}}}}}));
    EXPECT_EQ(Devices(), 0);
    patch = {{"page", 0}, {"offset", 63}, {"bytes", std::vector<int>(1536 - 63, byte)}};
    const json legacy = {{"memory", {{"patches", {patch}}}}};
    ASSERT_NO_FATAL_FAILURE(Open(legacy));
    ASSERT_EQ(Devices(), 1);
    for (const ExportedFunction& function : EveryDeviceFunction()) {
      Outputs out;
      const unsigned int status = StatusOf(function, out);
      EXPECT_TRUE(status == CORVANE_SUCCESS || status == CORVANE_COMMUNICATION_ERROR || status == CORVANE_P2_INVALID ||
                  (status == kThrows && function.part == Part::kFocus))
          << function.call.text << " answered " << status;
    }
    EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  }
}

TEST_F(LegacyInstrumentTest, AWavelengthWithoutAPlaceMovesNothingAndZeroOrderStays) {
  // Of the polynomial's linear term: none, and 0.002, which leaves the sines above 500 nm of grating 1.
  for (const std::vector<int>& bytes : {std::vector<int>{0, 0, 0, 0}, {111, 18, 3, 59}}) {
    ASSERT_NO_FATAL_FAILURE(Open({{"memory", {{"patches", {{{"page", 1}, {"offset", 86}, {"bytes", bytes}}}}}}}));
    const json before = Lab().State();
    EXPECT_EQ(CorvaneSetWavelength(0, 1000.0F), CORVANE_COMMUNICATION_ERROR);
    EXPECT_EQ(CorvaneSetGrating(0, 1), CORVANE_COMMUNICATION_ERROR) << "which keeps 500 nm";
    EXPECT_EQ(Lab().State(), before);
    EXPECT_EQ(CorvaneGotoZeroOrder(0), CORVANE_SUCCESS);
    EXPECT_NEAR(Lab().State()["fromZero"].get<double>(), 0.0, 1.0);
  }
}

TEST_F(LegacyInstrumentTest, AStoredWavelengthThatIsNoNumberIsNoAnswerAndIsKeptUntilTheNext) {
  const std::vector<int> infinity{0, 0, 128, 127};
  const json patch = {{"page", 0}, {"offset", kCurrentWave}, {"bytes", infinity}};
  ASSERT_NO_FATAL_FAILURE(Open({{"memory", {{"patches", {patch}}}}}));
  constexpr ExportedCall kCalls[] = {CALL(CorvaneGetWavelength(d, &o.floats[0])),
                                     CALL(CorvaneAtZeroOrder(d, &o.ints[0])), CALL(CorvaneSetGrating(d, 2))};
  for (const auto& [text, run] : kCalls) {
    Outputs out;
    EXPECT_EQ(run(0, out), CORVANE_COMMUNICATION_ERROR) << text;
  }
  EXPECT_EQ(Lab().State()["drive"], 0) << "homed, and not moved from there";
  EXPECT_EQ(Lab().State()["writes"], 0);
  EXPECT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_SUCCESS);
  ExpectStandsAt(500.0F, "after the first that was given");
}

/// What a function answers where its part is fitted or not.
unsigned int ExpectedStatus(const ExportedFunction& function, bool fitted) {
  const std::string call = function.call.text;
  if (call.starts_with("CorvaneSetFocusMirror")) {
    return kThrows;
  }
  const bool always = function.part == Part::kCore || function.part == Part::kCalibration ||
                      function.part == Part::kCoefficients || call.find("IsPresent") != std::string::npos ||
                      call.starts_with("CorvaneLoadShutterValues");
  return always || (fitted && function.part != Part::kFocus) ? CORVANE_SUCCESS : CORVANE_COMMUNICATION_ERROR;
}

struct LegacyParts : LegacyInstrumentTest, testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Fitted, LegacyParts, testing::Bool());

TEST_P(LegacyParts, EveryFunctionAnswersWithItsPartFittedAndWithout) {
  const bool fitted = GetParam();
  json parts = json::object();
  for (const char* const part : {"slit", "outputSlit", "filterWheel", "flipper", "shutter", "accessory"}) {
    parts[part] = fitted;
  }
  ASSERT_NO_FATAL_FAILURE(Open({{"parts", parts}, {"fpga", fitted ? 23 : 22}}));
  for (const ExportedFunction& function : EveryDeviceFunction()) {
    int atZero = 0;
    ASSERT_EQ(CorvaneAtZeroOrder(0, &atZero), CORVANE_SUCCESS);
    if (atZero == 1) {  // where nothing calibrates
      ASSERT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_SUCCESS);
    }
    Outputs out;
    const unsigned int expected = ExpectedStatus(function, fitted);
    EXPECT_EQ(StatusOf(function, out), expected) << function.call.text << (fitted ? " fitted" : " absent");
    if (expected != CORVANE_SUCCESS) {
      EXPECT_TRUE(out.Untouched()) << function.call.text;
    } else if (std::string(function.call.text).find("IsPresent") != std::string::npos) {
      const bool inEvery = function.part == Part::kCore;
      EXPECT_EQ(out.ints[0], inEvery || (fitted && function.part != Part::kFocus) ? 1 : 0) << function.call.text;
    }
  }
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  EXPECT_EQ(Lab().State()["lostWrites"], 0);
}

TEST_F(LegacyInstrumentTest, PartsStandWhereTheyWereSent) {
  ASSERT_NO_FATAL_FAILURE(Open({{"slitWidths", {100, 100}}, {"filter", 2}}));
  const struct {
    ExportedCall call;
    const char* part;  ///< of what really stands
    double value;
    int stored;  ///< where the EEPROM keeps it, 0 for nowhere
  } rows[] = {
      {CALL(CorvaneSetSlit(d, 2500.0F)), "/slitWidths/0", 2500, kCurrentSlit},
      {CALL(CorvaneSetSlit(d, 40.0F)), "/slitWidths/0", 40, kCurrentSlit},
      {CALL(CorvaneSetOutputSlit(d, 700.0F)), "/slitWidths/1", 700, 0},
      {CALL(CorvaneSetOutputSlit(d, 10.0F)), "/slitWidths/1", 10, 0},
      {CALL(CorvaneSlitReset(d)), "/slitWidths/0", 10, 0},
      {CALL(CorvaneSetFilter(d, 5)), "/filter", 5, kCurrentFilter},
      {CALL(CorvaneSetFilter(d, 1)), "/filter", 1, kCurrentFilter},
      {CALL(CorvaneSetFilter(d, 6)), "/filter", 6, kCurrentFilter},
      {CALL(CorvaneFilterReset(d)), "/filter", 1, 0},
      {CALL(CorvaneSetPort(d, 1)), "/port", 1, kCurrentMirror},
      {CALL(CorvaneSetPort(d, 0)), "/port", 0, kCurrentMirror},
      {CALL(CorvaneSetShutter(d, 1)), "/lines/0", 4, 0},
      {CALL(CorvaneSetShutter(d, 0)), "/lines/0", 0, 0},
      {CALL(CorvaneSetAccessory(d, 2, 1)), "/lines/0", 2, 0},
      {CALL(CorvaneSetPort(d, 1)), "/port", 1, kCurrentMirror},
      {CALL(CorvaneSetWavelength(d, 551.0F)), "/port", 1, 0},
  };
  for (const auto& [call, part, value, stored] : rows) {
    Outputs out;
    EXPECT_EQ(call.run(0, out), CORVANE_SUCCESS) << call.text;
    const bool slit = std::string(part).starts_with("/slit");
    EXPECT_NEAR(Lab().State()[json::json_pointer(part)].get<double>(), value, slit ? 2.5 : 0.0) << call.text;
    if (stored != 0) {
      EXPECT_EQ(slit ? static_cast<double>(Lab().Float(0, stored)) : Lab().Int(0, stored), value) << call.text;
    }
  }
  ExpectStandsAt(551.0F, "with the offset of the side port");
  EXPECT_EQ(CorvaneFlipperReset(0), CORVANE_SUCCESS);
  EXPECT_EQ(Lab().State()["port"], 0);
}

}  // namespace
