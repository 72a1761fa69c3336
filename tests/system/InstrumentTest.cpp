// The main job on one controller instrument, through the exported functions: what the instrument holds is reported, the
// drive goes where it is sent, the calibration is right, changed values are stored. Runs on every attachment.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <ctime>
#include <functional>
#include <numbers>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "InstrumentFixture.h"
#include "controller/EepromImage.h"
#include "support/CommaLocale.h"
#include "support/EveryFunction.h"

using corvane::sim::EepromImage;
using corvane::sim::Field;
using corvane::sim::StructureVersion;
using nlohmann::json;

namespace {

struct GratingData {
  float lines;
  std::string blaze;
  int start;
  int offset;
};

const std::vector<std::vector<GratingData>> kTurrets = {
    {{1200, "H-NI", 1000, 11}, {600, "1.2", 481000, -12}, {150, "HOLO", 961000, 13}},
    {{2400, "250", -3000, -21}, {300, "500", 470000, 22}, {150, "850", 940000, 23}},
    {{1800, "HVIS", 500, 31}, {900, "750", 480500, 32}, {100, "MIRR", 960500, -33}},
};

/// As CorvaneGetGratingInfo reports it.
std::string Report(const GratingData& grating) {
  std::ostringstream text;
  text << grating.lines << ',' << grating.start << ',' << grating.offset << ',' << grating.blaze;
  return text.str();
}

json TurretsJson(std::size_t turrets, bool withLines = true) {
  json list = json::array();
  for (std::size_t t = 0; t < turrets; ++t) {
    json gratings = json::array();
    for (const GratingData& g : kTurrets[t]) {
      gratings.push_back({{"start", g.start}, {"offset", g.offset}});
      if (withLines) {
        gratings.back().update({{"lines", g.lines}, {"blaze", g.blaze}});
      }
    }
    list.push_back({{"gratings", gratings}});
  }
  return list;
}

struct VersionCase {
  const char* text;
  StructureVersion version;
  int activeTurret;  // from 1
  bool storesLines;
};

void PrintTo(const VersionCase& version, std::ostream* out) {
  *out << version.text;
}

class StructureVersions : public Instrument, public testing::WithParamInterface<VersionCase> {
 protected:
  void OpenVersion() {
    const bool many = GetParam().version.AtLeast(1, 3);
    json instrument = {{"serial", "LX-2041"},
                       {"structureVersion", GetParam().text},
                       {"turrets", TurretsJson(many ? 3 : 1, GetParam().storesLines)},
                       {"memory", {{"fill", 0xA5}}},
                       {"record",
                        {{"focalLength", 0.303F},
                         {"angularDeviation", 23.5F},
                         {"tilt", 4.25F},
                         {"detectorOffsets", {101, -102, 103, -104}}}}};
    if (many) {
      instrument["record"]["activeTurret"] = GetParam().activeTurret;
    }
    if (!GetParam().version.AtLeast(3, 0)) {
      instrument["record"]["detectorOffsets"] = {101, -102};
    }
    Open(instrument);
  }

  /// Of the active turret, as they are reported.
  static std::vector<GratingData> Gratings() {
    std::vector<GratingData> gratings = kTurrets[static_cast<std::size_t>(GetParam().activeTurret) - 1];
    if (!GetParam().storesLines) {
      for (GratingData& grating : gratings) {
        grating.lines = 100.0F;
        grating.blaze = "300";
      }
    }
    return gratings;
  }

  std::vector<std::uint8_t> Memory() {
    std::vector<std::uint8_t> bytes;
    for (int address = 1; address <= EepromImage::kSize; ++address) {
      bytes.push_back(Lab().Peek(address));
    }
    return bytes;
  }

  /// Where a field stands in Memory().
  static std::size_t PlaceOf(Field field) {
    return static_cast<std::size_t>(EepromImage::AddressOf(field, GetParam().version)) - 1;
  }
};

TEST_P(StructureVersions, AreReported) {
  ASSERT_NO_FATAL_FAILURE(OpenVersion());
  const std::vector<GratingData> gratings = Gratings();
  float reach = 0;
  EXPECT_EQ(CorvaneGetWavelengthLimits(0, 1, nullptr, &reach), CORVANE_SUCCESS);
  EXPECT_NEAR(reach, std::sqrt(3.0) * 1e6 * std::cos(23.5 * std::numbers::pi / 180) / gratings[0].lines, 1e-2);
  ExpectReports({
      {CALL(CorvaneGetSerialNumber(d, o.text.data())), "LX-2041"},
      {CALL(CorvaneEepromGetOpticalParams(d, &o.floats[0], &o.floats[1], &o.floats[2])), "0.303,23.5,4.25"},
      {CALL(CorvaneGetTurret(d, &o.ints[0])), std::to_string(GetParam().activeTurret)},
      {CALL(CorvaneGetNumberGratings(d, &o.ints[0])), "3"},
      {CALL(CorvaneGetGratingInfo(d, 1, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])), Report(gratings[0])},
      {CALL(CorvaneGetGratingInfo(d, 2, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])), Report(gratings[1])},
      {CALL(CorvaneGetGratingInfo(d, 3, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])), Report(gratings[2])},
      {CALL(CorvaneGetDetectorOffset(d, &o.ints[0])), "101"},
      {CALL(CorvaneGetDetectorOffsetPort2(d, &o.ints[0])), "-102"},
  });
}

TEST_P(StructureVersions, StoreWhatIsChangedAndNoOtherByteBeforeTheyAreClosed) {
  ASSERT_NO_FATAL_FAILURE(OpenVersion());
  std::vector<std::uint8_t> expected = Memory();
  const std::int32_t offset = -4321;
  const std::int32_t detector = 98765;
  ASSERT_EQ(CorvaneSetGratingOffset(0, 2, offset), CORVANE_SUCCESS);
  ASSERT_EQ(CorvaneSetDetectorOffsetPort2(0, detector), CORVANE_SUCCESS);
  const std::time_t now = std::time(nullptr);
  ASSERT_EQ(CorvaneClose(), CORVANE_SUCCESS);

  constexpr std::array kOffsets = {Field::kTurret1Offsets, Field::kTurret2Offsets, Field::kTurret3Offsets};
  const Field offsets = kOffsets[static_cast<std::size_t>(GetParam().activeTurret) - 1];
  std::memcpy(&expected[PlaceOf(offsets) + sizeof(offset)], &offset, sizeof(offset));
  std::memcpy(&expected[PlaceOf(Field::kDetectorOffsets) + sizeof(detector)], &detector, sizeof(detector));
  std::array<char, 11> today{};
  std::strftime(today.data(), today.size(), "%d/%m/%Y", std::localtime(&now));
  std::copy(today.begin(), today.end(), &expected[PlaceOf(Field::kModified)]);
  const std::vector<std::uint8_t> stored = Memory();
  const auto differing = std::ranges::mismatch(stored, expected).in1;
  EXPECT_EQ(differing, stored.end()) << "address " << differing - stored.begin() + 1;
}

INSTANTIATE_TEST_SUITE_P(Records, StructureVersions,
                         testing::Values(VersionCase{"1.0", {1, 0}, 1, false}, VersionCase{"1.1", {1, 1}, 1, true},
                                         VersionCase{"1.2", {1, 2}, 1, true}, VersionCase{"1.3", {1, 3}, 2, true},
                                         VersionCase{"2.5", {2, 5}, 3, true}, VersionCase{"3.0", {3, 0}, 2, true}));

INSTANTIATE_FOR_EVERY_MODEL(EveryModel);

TEST_F(Instrument, OpeningAsksForEachByteOfTheRecordOnceAndMovingByStepsForNone) {
  ASSERT_NO_FATAL_FAILURE(Open({{"structureVersion", "3.0"}, {"record", {{"waveToStepsEnabled", true}}}}));
  constexpr std::size_t kRecordBytes = 354;
  constexpr std::size_t kHardwareQuestions = 1;
  const std::size_t opening = Lab().Lines().size();
  EXPECT_EQ(opening, Lab().OpeningLines() + kRecordBytes + kHardwareQuestions);
  EXPECT_EQ(CorvaneSetWavelength(0, 550.0F), CORVANE_SUCCESS);
  constexpr std::size_t kMovingLines = 16;
  EXPECT_EQ(LinesSince(opening).size(), kMovingLines);
  EXPECT_NEAR(Lab().TrueCentre(), 550.0, 2e-3) << "within half a motor step";
}

/// The model, and whether its record asks for steps; an SX never makes them.
class Drives : public Instrument, public testing::WithParamInterface<std::tuple<const char*, bool>> {
 protected:
  void ExpectStandsAt(float target, double tolerance) {
    EXPECT_NEAR(Lab().TrueCentre(), target, tolerance);
    float answer = 0;
    EXPECT_EQ(CorvaneGetWavelength(0, &answer), CORVANE_SUCCESS);
    EXPECT_NEAR(answer, target, 2e-3F);
  }
};

TEST_P(Drives, StandWhereTheyAreSentOnEveryGrating) {
  const auto& [model, asked] = GetParam();
  const bool stepped = asked && std::string(model) != "SX";
  ASSERT_NO_FATAL_FAILURE(Open({{"model", model}, {"record", {{"waveToStepsEnabled", asked}}}}));
  for (int g = 1; g <= 3; ++g) {
    SCOPED_TRACE(g);
    ASSERT_EQ(CorvaneSetGrating(0, g), CORVANE_SUCCESS);
    float max = 0;
    float lines = 0;
    ASSERT_EQ(CorvaneGetWavelengthLimits(0, g, nullptr, &max), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneGetGratingInfo(0, g, &lines, nullptr, nullptr, nullptr), CORVANE_SUCCESS);
    const double stepWidth = 7.0 / static_cast<double>(lines);  // nm per motor step, at most
    for (const float part : {0.05F, 0.3F, 0.6F, 1.0F}) {
      ASSERT_EQ(CorvaneSetWavelength(0, max * part), CORVANE_SUCCESS) << part;
      ExpectStandsAt(max * part, stepped ? stepWidth : 2e-3);
    }
    EXPECT_EQ(CorvaneSetWavelength(0, std::nextafter(max, 1e9F)), CORVANE_P2_INVALID);
    ExpectReports({{CALL(CorvaneAtZeroOrder(d, &o.ints[0])), "0"},
                   {CALL(CorvaneGotoZeroOrder(d)), ""},
                   {CALL(CorvaneAtZeroOrder(d, &o.ints[0])), "1"}});
    ASSERT_EQ(CorvaneSetWavelength(0, 300.0F), CORVANE_SUCCESS);
  }
}

INSTANTIATE_TEST_SUITE_P(Models, Drives, testing::Combine(testing::Values("LX", "MX", "SX"), testing::Bool()),
                         [](const auto& instance) {
                           const bool asked = std::get<1>(instance.param);
                           return std::get<0>(instance.param) + std::string(asked ? "AskedForSteps" : "");
                         });

TEST_P(EveryModel, CalibratesEveryPixelToItsTrueWavelength) {
  const int pixels = GetParam().keepsTexts ? 1024 : 2048;
  ASSERT_NO_FATAL_FAILURE(OpenModel(json::object(), pixels));
  std::vector<float> nm(static_cast<std::size_t>(pixels));
  for (int g = 1; g <= 3; ++g) {
    SCOPED_TRACE(g);
    ASSERT_EQ(CorvaneSetGrating(0, g), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneSetWavelength(0, 400.0F), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneGetCalibration(0, nm.data(), pixels), CORVANE_SUCCESS);
    std::array<float, 4> c{};
    ASSERT_EQ(CorvaneGetPixelCalibrationCoefficients(0, &c[0], &c[1], &c[2], &c[3]), CORVANE_SUCCESS);
    for (int pixel = 1; pixel <= pixels; pixel += 31) {
      SCOPED_TRACE(pixel);
      const float p = static_cast<float>(pixel);
      const float value = nm[static_cast<std::size_t>(pixel) - 1];
      EXPECT_EQ(value, p * (c[3] * p * p) + (c[0] + p * c[1] + p * (c[2] * p)));
      EXPECT_NEAR(value, Lab().TrueWavelength(pixel), 2e-3);
    }
  }
}

TEST_F(Instrument, ACalibrationFillsNoMoreThanIsAskedForNorMoreThanThereIs) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object(), 1024));
  constexpr float kUntouched = -1.0F;
  std::vector<float> nm(1100, kUntouched);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 10), CORVANE_SUCCESS);
  EXPECT_GT(nm[9], 0.0F);
  EXPECT_EQ(nm[10], kUntouched);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 1100), CORVANE_SUCCESS);
  EXPECT_GT(nm[1023], 0.0F);
  EXPECT_EQ(nm[1024], kUntouched);
  ASSERT_EQ(CorvaneGotoZeroOrder(0), CORVANE_SUCCESS);
  nm.assign(1100, kUntouched);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 10), CORVANE_COMMUNICATION_ERROR) << "no calibration at zero order";
  EXPECT_EQ(nm[0], kUntouched);
}

TEST_F(Instrument, ADetectorIsAsItWasSetUntilTheNextInitialise) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object(), 1024));
  ExpectReports({{CALL(CorvaneSetPixelWidth(d, 1.0F)), ""},
                 {CALL(CorvaneSetNumberPixels(d, 1)), ""},
                 {CALL(CorvaneGetPixelWidth(d, &o.floats[0])), "1"},
                 {CALL(CorvaneGetNumberPixels(d, &o.ints[0])), "1"}});
  ASSERT_NO_FATAL_FAILURE(Initialize());
  EXPECT_EQ(CorvaneSetPixelWidth(0, 13.5F), CORVANE_SUCCESS);
  ExpectReports({{CALL(CorvaneGetNumberPixels(d, &o.ints[0])), Lab().HasDetector() ? "1024" : "0"}});
  float nm = 0;
  EXPECT_EQ(CorvaneGetCalibration(0, &nm, 1), Lab().HasDetector() ? CORVANE_SUCCESS : CORVANE_COMMUNICATION_ERROR);
}

TEST_P(EveryModel, KeepsChangesOverAClose) {
  ASSERT_NO_FATAL_FAILURE(OpenModel({{"state", "state.json"}}));
  ASSERT_NO_FATAL_FAILURE(Initialize()) << "without a close between";
  const std::string offset = LinesOf([] { return CorvaneSetGratingOffset(0, 2, -20000); });
  EXPECT_EQ(CorvaneSetDetectorOffsetPort2(0, 240000), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetFilterInfo(0, 6, "LP 495,5"), CORVANE_SUCCESS);
  ASSERT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  if (GetParam().keepsTexts) {
    EXPECT_NE(offset.find("CONFIG_SYSTEM_DATA 56,-20000;"), std::string::npos) << "at once: " << offset;
    EXPECT_EQ(Lab().Lines().back(), "GOODBYE");
  }

  ASSERT_NO_FATAL_FAILURE(Initialize());
  ExpectReports({
      {CALL(CorvaneGetGratingInfo(d, 1, &o.floats[0], nullptr, nullptr, nullptr)), "1200"},
      {CALL(CorvaneGetGratingOffset(d, 2, &o.ints[0])), "-20000"},
      {CALL(CorvaneGetDetectorOffsetPort2(d, &o.ints[0])), "240000"},
      {CALL(CorvaneGetFilterInfo(d, 6, o.text.data())), "LP 495,5"},
  });
}

TEST_P(EveryModel, ReadsAndWritesNumbersWithAPointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.IsInForce());
  ASSERT_NO_FATAL_FAILURE(OpenModel({{"record", {{"focalLength", 0.193F}, {"tilt", 5.25F}}}}));
  const std::string move = LinesOf([] { return CorvaneSetWavelength(0, 612.125F); });
  EXPECT_TRUE(move.ends_with("MOVETO 612.1250")) << move;
  ExpectReports({
      {CALL(CorvaneGetWavelength(d, &o.floats[0])), "612.125"},
      {CALL(CorvaneEepromGetOpticalParams(d, &o.floats[0], &o.floats[1], &o.floats[2])), "0.193,11.83,5.25"},
  });
}

TEST_F(Instrument, AnSxReportsWhatItHoldsAndFollowsItsOffsetsAtOnce) {
  json instrument = {{"model", "SX"}, {"turrets", TurretsJson(2)}, {"record", {{"activeTurret", 2}}}};
  instrument["turrets"][1]["gratings"].push_back({{"lines", 75.5F}, {"blaze", "Holographic, wide"}, {"offset", 24}});
  instrument["turrets"][1]["gratings"][3]["blaze"] = "Holographic";
  ASSERT_NO_FATAL_FAILURE(Open(instrument));
  constexpr std::size_t kParameters = 78;
  constexpr std::size_t kTurretNames = 3;  // up to the first that is empty
  constexpr std::size_t kOthers = 2;       // the mounted turret, and the hardware's own question
  EXPECT_EQ(Lab().Lines().size(), Lab().OpeningLines() + kParameters + kTurretNames + kOthers);
  ExpectReports({
      {CALL(CorvaneGetTurret(d, &o.ints[0])), "2"},
      {CALL(CorvaneGetNumberGratings(d, &o.ints[0])), "4"},
      {CALL(CorvaneGetGratingInfo(d, 3, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])), "150,940000,23,850"},
      {CALL(CorvaneGetGratingInfo(d, 4, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])),
       "75.5,1080000,24,Holographic"},
  });

  std::string lines = LinesOf([] { return CorvaneSetGratingOffset(0, 4, 30); });
  EXPECT_NE(lines.find("CONFIG_SYSTEM_DATA 62,30;"), std::string::npos) << lines;
  // The record asks for the position anew, and so does whoever changed it.
  EXPECT_TRUE(lines.ends_with("CONFIG_SYSTEM_DATA 70,0;POSITION?;MOVETO 500.0000;POSITION?;MOVETO 500.0000")) << lines;
  EXPECT_EQ(LinesOf([] { return CorvaneSetTurret(0, 1); }), "TURRET 1");
}

TEST_F(Instrument, AFocusMirrorWithoutTheListOfPartsStaysAndNeverPassesItsEnd) {
  ASSERT_NO_FATAL_FAILURE(Open({{"parts", {{"focusMirror", {{"totalSteps", 1000}}}}}}));
  ASSERT_EQ(CorvaneSetFocusMirror(0, 900), CORVANE_SUCCESS);
  const json refusal = {{"error", "E04"}};
  const json nothing = {{"reply", "PERIPHERAL?\r\n\r\nOK\r"}};
  const struct {
    int question;  ///< for the travel, for the position, for the move
    json fault;
    int steps;
    unsigned int status;
  } cases[] = {{1, refusal, 50, CORVANE_P2_INVALID},
               {2, refusal, 50, CORVANE_COMMUNICATION_ERROR},
               {2, nothing, 500, CORVANE_COMMUNICATION_ERROR},
               {3, refusal, 50, CORVANE_COMMUNICATION_ERROR}};
  for (auto [question, fault, steps, status] : cases) {
    fault.update({{"command", "PERIPHERAL?"}, {"occurrence", question}});
    Lab().ArmReplyFault(fault);
    EXPECT_EQ(CorvaneSetFocusMirror(0, steps), status) << fault;
    ExpectReports({{CALL(CorvaneGetFocusMirror(d, &o.ints[0])), "900"}});
  }
}

TEST_P(EveryModel, KeepsItsTurretWhenItRefusesTheNewOne) {
  json turrets = json::array();
  for (int t = 1; t <= 3; ++t) {
    turrets.push_back({{"gratings", {{{"lines", 300 * t}, {"offset", 10 * t}}}}});
  }
  ASSERT_NO_FATAL_FAILURE(OpenModel({{"turrets", turrets}, {"record", {{"activeTurret", 2}}}}));
  Lab().ArmReplyFault({{"command", GetParam().keepsTexts ? "TURRET" : "SAVEINFO"}, {"error", "E03"}});
  EXPECT_EQ(CorvaneSetTurret(0, 3), CORVANE_COMMUNICATION_ERROR);
  ExpectReports({{CALL(CorvaneGetTurret(d, &o.ints[0])), "2"},
                 {CALL(CorvaneGetGratingOffset(d, 1, &o.ints[0])), "20"},
                 {CALL(CorvaneSetTurret(d, 3)), ""},
                 {CALL(CorvaneGetGratingOffset(d, 1, &o.ints[0])), "30"}});
}

/// A memory of such bytes behind a version that is read, if any.
json Bytes(const std::string& version, const std::function<std::uint8_t(int address)>& byte) {
  std::vector<int> bytes;
  for (int address = 1; address <= 600; ++address) {
    bytes.push_back(byte(address));
  }
  std::copy(version.begin(), version.end(), bytes.begin() + 20);
  return {{"memory", {{"patches", {{{"address", 1}, {"bytes", bytes}}}}}}};
}

/// An SX with this text in every parameter, save that a turret exists.
json Texts(const std::string& text) {
  json texts = json::array();
  for (int number = 0; number < 122; ++number) {
    texts.push_back({{"number", number}, {"text", text}});
  }
  return {{"model", "SX"}, {"memory", {{"texts", texts}}}};
}

TEST_F(Instrument, EveryFunctionAnswersADefinedStatusToHostileContents) {
  const std::set<unsigned int> kDefined = {CORVANE_SUCCESS, CORVANE_COMMUNICATION_ERROR, CORVANE_P2_INVALID,
                                           CORVANE_NO_LEGACY_DRIVER};
  const auto all = [](std::uint8_t value) { return [value](int) { return value; }; };
  const auto noise = [](int address) {
    return static_cast<std::uint8_t>(static_cast<unsigned>(address) * 2654435761U >> 13);
  };
  const json contents[] = {
      Bytes("", all(0x00)),
      Bytes("", all(0xFF)),
      Bytes("3.0", all(0xFF)),
      Bytes("1.1", all(0xFF)),
      Bytes("2.9", all(0x7F)),  // a huge float and a huge integer, a count of 127 and a flag that is set
      Bytes("3.0", noise),
      Texts(""),
      Texts("far, off"),
      Texts("nan"),
      Texts("99999999999999999999"),
      Texts("-2147483648"),
      Texts(std::string(239, 'x')),
  };
  for (std::size_t i = 0; i < std::size(contents); ++i) {
    SCOPED_TRACE(i);
    ASSERT_NO_FATAL_FAILURE(Open(contents[i]));
    for (const ExportedFunction& function : EveryDeviceFunction()) {
      Outputs out;
      const unsigned int status = function.call.run(0, out);
      EXPECT_TRUE(kDefined.contains(status)) << function.call.text << " answered " << status;
    }
    EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  }
}

}  // namespace
