// The main job on one controller instrument, through the exported functions: what the instrument holds is reported, the
// drive goes where it is sent, the calibration is right, changed values are stored. Runs on every attachment.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <numbers>
#include <ostream>
#include <string>
#include <vector>

#include "EveryFunction.h"
#include "Laboratory.h"
#include "controller/EepromImage.h"
#include "support/CommaLocale.h"

using corvane::sim::EepromImage;
using corvane::sim::Field;
using corvane::sim::StructureVersion;
using nlohmann::json;

namespace {

json Instant(json instrument) {
  instrument["motion"] = 0;
  return instrument;
}

class Instrument : public testing::Test {
 protected:
  void Open(const json& instrument, int pixels = 2048) {
    mLab = MakeLaboratory({{"instrument", Instant(instrument)}, {"detector", {{"pixels", pixels}}}});
    ASSERT_EQ(CorvaneInitialize(mLab->Directory().data()), CORVANE_SUCCESS);
    int count = 0;
    ASSERT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
    ASSERT_EQ(count, 1);
    if (!mLab->HasDetector()) {
      ASSERT_EQ(CorvaneSetNumberPixels(0, pixels), CORVANE_SUCCESS);
      ASSERT_EQ(CorvaneSetPixelWidth(0, 13.5F), CORVANE_SUCCESS);
    }
  }

  void TearDown() override { CorvaneClose(); }

  Laboratory& Lab() { return *mLab; }

  /// Lines that a call sends.
  template <typename Call>
  std::vector<std::string> LinesOf(Call&& call) {
    const std::size_t before = Lab().Lines().size();
    EXPECT_EQ(call(), CORVANE_SUCCESS);
    const std::vector<std::string> all = Lab().Lines();
    return {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()};
  }

 private:
  std::unique_ptr<Laboratory> mLab;
};

// ---- What the instrument holds -----------------------------------------------------------------------------------

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

json TurretsJson(std::size_t turrets) {
  json list = json::array();
  for (std::size_t t = 0; t < turrets; ++t) {
    json gratings = json::array();
    for (const GratingData& g : kTurrets[t]) {
      gratings.push_back({{"lines", g.lines}, {"blaze", g.blaze}, {"start", g.start}, {"offset", g.offset}});
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

class StructureVersions : public Instrument, public testing::WithParamInterface<VersionCase> {
 protected:
  void OpenVersion() {
    const bool many = GetParam().version.AtLeast(1, 3);
    json instrument = {{"serial", "LX-2041"},
                       {"structureVersion", GetParam().text},
                       {"turrets", TurretsJson(many ? 3 : 1)},
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
    if (!GetParam().storesLines) {
      for (json& grating : instrument["turrets"][0]["gratings"]) {
        grating.erase("lines");
        grating.erase("blaze");
      }
    }
    Open(instrument);
  }

  const std::vector<GratingData>& ActiveGratings() const {
    return kTurrets[static_cast<std::size_t>(GetParam().activeTurret) - 1];
  }
};

TEST_P(StructureVersions, ReportWhatTheInstrumentHolds) {
  ASSERT_NO_FATAL_FAILURE(OpenVersion());
  std::array<char, 21> serial{};
  EXPECT_EQ(CorvaneGetSerialNumber(0, serial.data()), CORVANE_SUCCESS);
  EXPECT_STREQ(serial.data(), "LX-2041");

  std::array<float, 3> optics{};
  EXPECT_EQ(CorvaneEepromGetOpticalParams(0, &optics[0], &optics[1], &optics[2]), CORVANE_SUCCESS);
  EXPECT_EQ(optics, (std::array<float, 3>{0.303F, 23.5F, 4.25F}));

  int turret = 0;
  int gratings = 0;
  EXPECT_EQ(CorvaneGetTurret(0, &turret), CORVANE_SUCCESS);
  EXPECT_EQ(turret, GetParam().activeTurret);
  EXPECT_EQ(CorvaneGetNumberGratings(0, &gratings), CORVANE_SUCCESS);
  ASSERT_EQ(gratings, 3);
  for (int g = 1; g <= gratings; ++g) {
    const GratingData& expected = ActiveGratings()[static_cast<std::size_t>(g) - 1];
    float lines = 0;
    std::array<char, CORVANE_BLAZE_LENGTH> blaze{};
    int home = 0;
    int offset = 0;
    ASSERT_EQ(CorvaneGetGratingInfo(0, g, &lines, blaze.data(), &home, &offset), CORVANE_SUCCESS);
    EXPECT_EQ(lines, GetParam().storesLines ? expected.lines : 100.0F);
    EXPECT_STREQ(blaze.data(), GetParam().storesLines ? expected.blaze.c_str() : "300");
    EXPECT_EQ(home, expected.start);
    EXPECT_EQ(offset, expected.offset);

    float min = -1;
    float max = 0;
    EXPECT_EQ(CorvaneGetWavelengthLimits(0, g, &min, &max), CORVANE_SUCCESS);
    EXPECT_EQ(min, 0.0F);
    const double reach = std::sqrt(3.0) * 1e6 * std::cos(23.5 * std::numbers::pi / 180) / static_cast<double>(lines);
    EXPECT_NEAR(max, reach, reach * 1e-6);
  }

  int direct = 0;
  int side = 0;
  EXPECT_EQ(CorvaneGetDetectorOffset(0, &direct), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetDetectorOffsetPort2(0, &side), CORVANE_SUCCESS);
  EXPECT_EQ(direct, 101);
  EXPECT_EQ(side, -102);
}

TEST_P(StructureVersions, ChangedValuesAreOnTheInstrumentAfterCloseAndNoOtherByteIsTouched) {
  ASSERT_NO_FATAL_FAILURE(OpenVersion());
  const StructureVersion version = GetParam().version;
  std::vector<std::uint8_t> expected;
  for (int address = 1; address <= EepromImage::kSize; ++address) {
    expected.push_back(Lab().Peek(address));
  }
  const auto put = [&](int address, const void* bytes, std::size_t size) {
    std::memcpy(&expected[static_cast<std::size_t>(address) - 1], bytes, size);
  };

  const std::int32_t offset = -4321;
  const std::int32_t detector = 98765;
  ASSERT_EQ(CorvaneSetGratingOffset(0, 2, offset), CORVANE_SUCCESS);
  ASSERT_EQ(CorvaneSetDetectorOffsetPort2(0, detector), CORVANE_SUCCESS);
  constexpr std::array kOffsets = {Field::kTurret1Offsets, Field::kTurret2Offsets, Field::kTurret3Offsets};
  put(EepromImage::AddressOf(kOffsets[static_cast<std::size_t>(GetParam().activeTurret) - 1], version) + 4, &offset, 4);
  put(EepromImage::AddressOf(Field::kDetectorOffsets, version) + 4, &detector, 4);

  std::time_t now = std::time(nullptr);
  ASSERT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  std::tm today{};
  localtime_r(&now, &today);
  std::array<char, 12> date{};
  std::strftime(date.data(), date.size(), "%d/%m/%Y", &today);
  put(EepromImage::AddressOf(Field::kModified, version), date.data(), 10);
  expected[static_cast<std::size_t>(EepromImage::AddressOf(Field::kModified, version)) + 9] = 0;

  for (int address = 1; address <= EepromImage::kSize; ++address) {
    ASSERT_EQ(Lab().Peek(address), expected[static_cast<std::size_t>(address) - 1]) << "address " << address;
  }
}

INSTANTIATE_TEST_SUITE_P(Records, StructureVersions,
                         testing::Values(VersionCase{"1.0", {1, 0}, 1, false}, VersionCase{"1.1", {1, 1}, 1, true},
                                         VersionCase{"1.2", {1, 2}, 1, true}, VersionCase{"1.3", {1, 3}, 2, true},
                                         VersionCase{"2.5", {2, 5}, 3, true}, VersionCase{"3.0", {3, 0}, 2, true}),
                         [](const auto& instance) {
                           std::string name = instance.param.text;
                           name[1] = '_';
                           return "v" + name;
                         });

// ---- Exchanges ---------------------------------------------------------------------------------------------------

TEST_F(Instrument, OpeningAsksNoMoreThanItMust) {
  ASSERT_NO_FATAL_FAILURE(Open({{"structureVersion", "3.0"}}));
  EXPECT_EQ(Lab().Lines().size(), static_cast<std::size_t>(Lab().OpeningLines() + 354 + 1));
}

TEST_F(Instrument, CallsSendTheirLinesAndNoOthers) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  int grating = 0;
  float value = 0;
  EXPECT_EQ(LinesOf([] { return CorvaneSetWavelength(0, 612.125F); }),
            (std::vector<std::string>{"GRATING?", "MOVETO 612.1250"}));
  EXPECT_EQ(LinesOf([] { return CorvaneSetWavelength(0, 550.0F); }), (std::vector<std::string>{"MOVETO 550.0000"}))
      << "the grating is remembered";
  EXPECT_EQ(LinesOf([&] { return CorvaneGetWavelength(0, &value); }), (std::vector<std::string>{"POSITION?"}));
  EXPECT_NEAR(value, 550.0F, 1e-3F);
  EXPECT_EQ(LinesOf([&] { return CorvaneGetGrating(0, &grating); }), (std::vector<std::string>{}));
  EXPECT_EQ(LinesOf([] { return CorvaneSetGrating(0, 2); }), (std::vector<std::string>{"GRATING 2"}));
  EXPECT_EQ(LinesOf([] { return CorvaneGotoZeroOrder(0); }), (std::vector<std::string>{"MOVETO 0.0000"}));
  EXPECT_EQ(LinesOf([] { return CorvaneWavelengthReset(0); }), (std::vector<std::string>{"GRATING 1", "GRATINGHOME"}));
  EXPECT_EQ(LinesOf([] { return CorvaneWavelengthUnsafeReset(0); }),
            (std::vector<std::string>{"GRATING 1", "GRATINGHOME"}));
  EXPECT_EQ(LinesOf([] { return CorvaneSetGratingOffset(0, 1, 3); }).size(), 2U) << "POSITION? and MOVETO";
  EXPECT_EQ(LinesOf([] { return CorvaneSetTurret(0, 2); }), (std::vector<std::string>{"SAVEINFO 554,1"}));
  EXPECT_EQ(LinesOf([] { return CorvaneSetTurret(0, 1); }), (std::vector<std::string>{"SAVEINFO 554,0"}));
}

TEST_F(Instrument, SteppedByTheLibraryCostsSixteenExchangesAMove) {
  ASSERT_NO_FATAL_FAILURE(Open({{"record", {{"waveToStepsEnabled", true}}}}));
  const std::vector<std::string> lines = LinesOf([] { return CorvaneSetWavelength(0, 550.0F); });
  EXPECT_EQ(lines.size(), 16U);
  EXPECT_NEAR(Lab().TrueCentre(), 550.0, 2e-3) << "within half a motor step";
}

// ---- Moving ------------------------------------------------------------------------------------------------------

class Strategies : public Instrument, public testing::WithParamInterface<bool> {};

TEST_P(Strategies, TheDriveStandsWhereItWasSentOnEveryGrating) {
  const bool stepped = GetParam();
  ASSERT_NO_FATAL_FAILURE(Open({{"record", {{"waveToStepsEnabled", stepped}}}}));
  for (int g = 1; g <= 3; ++g) {
    ASSERT_EQ(CorvaneSetGrating(0, g), CORVANE_SUCCESS);
    int grating = 0;
    ASSERT_EQ(CorvaneGetGrating(0, &grating), CORVANE_SUCCESS);
    EXPECT_EQ(grating, g);
    float min = 0;
    float max = 0;
    float lines = 0;
    ASSERT_EQ(CorvaneGetWavelengthLimits(0, g, &min, &max), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneGetGratingInfo(0, g, &lines, nullptr, nullptr, nullptr), CORVANE_SUCCESS);
    const double stepWidth = 7.0 / static_cast<double>(lines);  // nm per motor step, at most
    for (const float part : {0.05F, 0.3F, 0.6F, 0.95F}) {
      const float target = max * part;
      ASSERT_EQ(CorvaneSetWavelength(0, target), CORVANE_SUCCESS) << target;
      EXPECT_NEAR(Lab().TrueCentre(), target, stepped ? stepWidth : 2e-3) << "grating " << g;
      float answer = 0;
      EXPECT_EQ(CorvaneGetWavelength(0, &answer), CORVANE_SUCCESS);
      EXPECT_NEAR(answer, target, 2e-3F);
    }
    EXPECT_EQ(CorvaneSetWavelength(0, max), CORVANE_SUCCESS) << "the limits themselves are allowed";
    EXPECT_EQ(CorvaneSetWavelength(0, std::nextafter(max, 1e9F)), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetWavelength(0, -0.001F), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetWavelength(0, std::nanf("")), CORVANE_P2_INVALID);

    int atZero = 7;
    EXPECT_EQ(CorvaneAtZeroOrder(0, &atZero), CORVANE_SUCCESS);
    EXPECT_EQ(atZero, 0);
    EXPECT_EQ(CorvaneGotoZeroOrder(0), CORVANE_SUCCESS);
    EXPECT_EQ(CorvaneAtZeroOrder(0, &atZero), CORVANE_SUCCESS);
    EXPECT_EQ(atZero, 1);
    ASSERT_EQ(CorvaneSetWavelength(0, 300.0F), CORVANE_SUCCESS);
  }
}

INSTANTIATE_TEST_SUITE_P(BothWays, Strategies, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "Stepped" : "BuiltIn"; });

TEST_F(Instrument, DispersionIsTheFixedSpan) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  float low = 0;
  float high = 0;
  EXPECT_EQ(CorvaneGetDispersionFor(0, 600.0F, &low, &high, -2147483647 - 1), CORVANE_SUCCESS);
  EXPECT_EQ(low, 550.0F);
  EXPECT_EQ(high, 650.0F);
  ASSERT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetDispersion(0, &low, &high), CORVANE_SUCCESS);
  EXPECT_NEAR(low, 450.0F, 1e-3F);
  EXPECT_NEAR(high, 550.0F, 1e-3F);
}

// ---- Calibration -------------------------------------------------------------------------------------------------

class Detectors : public Instrument, public testing::WithParamInterface<int> {};

TEST_P(Detectors, EveryPixelLiesOnTheTrueWavelengthWithinTheCubicSResidual) {
  const int pixels = GetParam();
  ASSERT_NO_FATAL_FAILURE(Open(json::object(), pixels));
  std::vector<float> nm(static_cast<std::size_t>(pixels));
  for (int g = 1; g <= 3; ++g) {
    ASSERT_EQ(CorvaneSetGrating(0, g), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneSetWavelength(0, 400.0F), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneGetCalibration(0, nm.data(), pixels), CORVANE_SUCCESS);
    std::array<float, 4> c{};
    ASSERT_EQ(CorvaneGetPixelCalibrationCoefficients(0, &c[0], &c[1], &c[2], &c[3]), CORVANE_SUCCESS);
    for (int pixel = 1; pixel <= pixels; pixel += 31) {
      const float p = static_cast<float>(pixel);
      const float value = nm[static_cast<std::size_t>(pixel) - 1];
      EXPECT_EQ(value, p * (c[3] * p * p) + (c[0] + p * c[1] + p * (c[2] * p))) << "pixel " << pixel;
      EXPECT_NEAR(value, Lab().TrueWavelength(pixel), 2e-3) << "grating " << g << " pixel " << pixel;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, Detectors, testing::Values(1024, 2048),
                         [](const auto& instance) { return std::to_string(instance.param); });

TEST_F(Instrument, CalibrationBoundsAndGeometry) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object(), 1024));
  std::vector<float> nm(1100, -1.0F);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 10), CORVANE_SUCCESS);
  EXPECT_GT(nm[9], 0.0F);
  EXPECT_EQ(nm[10], -1.0F);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 1100), CORVANE_SUCCESS);
  EXPECT_GT(nm[1023], 0.0F);
  EXPECT_EQ(nm[1024], -1.0F) << "no more pixels than there are";
  EXPECT_EQ(CorvaneGetCalibration(0, nullptr, 10), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 0), CORVANE_P3_INVALID);

  EXPECT_EQ(CorvaneSetPixelWidth(0, 0.99F), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetPixelWidth(0, std::nanf("")), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetNumberPixels(0, 0), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetPixelWidth(0, 26.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetNumberPixels(0, 512), CORVANE_SUCCESS);
  float width = 0;
  int count = 0;
  EXPECT_EQ(CorvaneGetPixelWidth(0, &width), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetNumberPixels(0, &count), CORVANE_SUCCESS);
  EXPECT_EQ(width, 26.0F);
  EXPECT_EQ(count, 512);

  float a = 0;
  EXPECT_EQ(CorvaneGetPixelCalibrationCoefficients(0, nullptr, &a, &a, &a), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneGetPixelCalibrationCoefficients(0, &a, &a, &a, nullptr), CORVANE_P5_INVALID);

  ASSERT_EQ(CorvaneGotoZeroOrder(0), CORVANE_SUCCESS);
  nm.assign(1100, -1.0F);
  EXPECT_EQ(CorvaneGetCalibration(0, nm.data(), 10), CORVANE_COMMUNICATION_ERROR) << "no calibration at zero order";
  EXPECT_EQ(nm[0], -1.0F);
}

// ---- Arguments, failures, parts that are not fitted --------------------------------------------------------------

TEST_F(Instrument, RejectsBadArguments) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  const std::size_t before = Lab().Lines().size();
  float f = 0;
  int i = 0;
  for (const int grating : {0, 4, -1, 2147483647}) {
    EXPECT_EQ(CorvaneSetGrating(0, grating), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneGetWavelengthLimits(0, grating, &f, &f), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneGetGratingInfo(0, grating, &f, nullptr, &i, &i), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetGratingOffset(0, grating, 99999), CORVANE_P2_INVALID) << "the first bad argument counts";
    EXPECT_EQ(CorvaneGetGratingOffset(0, grating, &i), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetTurret(0, grating), CORVANE_P2_INVALID);
  }
  for (const int sign : {1, -1}) {
    EXPECT_EQ(CorvaneSetGratingOffset(0, 1, sign * 20001), CORVANE_P3_INVALID);
    EXPECT_EQ(CorvaneSetDetectorOffset(0, sign * 240001), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetDetectorOffsetPort2(0, sign * 240001), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneSetDetectorOffsetEx(0, 0, 0, sign * 240001), CORVANE_P4_INVALID);
  }
  EXPECT_EQ(CorvaneGetSerialNumber(0, nullptr), CORVANE_P2_INVALID);
  for (const int slit : {0, 5}) {
    EXPECT_EQ(CorvaneSetAutoSlitWidth(0, slit, 9.0F), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneGetAutoSlitWidth(0, slit, nullptr), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneAutoSlitReset(0, slit), CORVANE_P2_INVALID);
    EXPECT_EQ(CorvaneAutoSlitIsPresent(0, slit, &i), CORVANE_P2_INVALID);
  }
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 9.9F), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 24000.1F), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetSlit(0, 9.9F), CORVANE_P2_INVALID) << "the short form counts its own arguments";
  EXPECT_EQ(CorvaneSetOutputSlit(0, std::nanf("")), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneGetSlit(0, nullptr), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneAutoSlitIsPresent(0, 1, nullptr), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetAutoSlitCoefficients(0, 2, 1, 2, 3, 4), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetFlipperMirror(0, 3, 0), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetFlipperMirror(0, 1, 2), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetPort(0, 2), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneGetPort(0, nullptr), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneGetCCDLimits(0, 2, nullptr, nullptr), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneGetCCDLimits(0, 0, nullptr, nullptr), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneGetCCDLimits(0, 0, &f, nullptr), CORVANE_P4_INVALID);
  EXPECT_EQ(CorvaneSetFilter(0, 7), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetFilterInfo(0, 0, nullptr), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetFilterInfo(0, 1, nullptr), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetShutter(0, 2), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneIsModePossible(0, -1, &i), CORVANE_P2_INVALID);
  EXPECT_EQ(CorvaneSetAccessory(0, 3, 1), CORVANE_P2_INVALID);
  EXPECT_EQ(Lab().Lines().size(), before) << "nothing is sent for a bad argument";
}

TEST_F(Instrument, PartsThatTheInstrumentLacksFailAndNothingIsPretended) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  for (const ExportedFunction& function : EveryDeviceFunction()) {
    ASSERT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_SUCCESS) << "away from zero order, where nothing calibrates";
    Outputs out;
    const unsigned int status = function.call(0, out);
    if (function.part == Part::kCoefficients) {
      EXPECT_EQ(status, CORVANE_NO_LEGACY_DRIVER) << function.name;
    } else if (function.name == "AutoSlitIsPresent" || function.name == "SlitIsPresent" ||
               function.name == "OutputSlitIsPresent") {
      EXPECT_EQ(status, CORVANE_SUCCESS) << function.name;
      EXPECT_EQ(out.ints[0], 0) << function.name;
    } else if (function.part != Part::kCore && function.part != Part::kCalibration) {
      EXPECT_EQ(status, CORVANE_COMMUNICATION_ERROR) << function.name;
      EXPECT_TRUE(out.Untouched()) << function.name;
    } else {
      EXPECT_EQ(status, CORVANE_SUCCESS) << function.name;
    }
  }
}

TEST_F(Instrument, NullOutputsAreSkipped) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  EXPECT_EQ(CorvaneGetWavelength(0, nullptr), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneAtZeroOrder(0, nullptr), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetGratingInfo(0, 1, nullptr, nullptr, nullptr, nullptr), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetDispersion(0, nullptr, nullptr), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetDetectorOffsetEx(0, 0, 0, nullptr), CORVANE_SUCCESS);
  float tilt = 0;
  EXPECT_EQ(CorvaneEepromGetOpticalParams(0, nullptr, nullptr, &tilt), CORVANE_SUCCESS);
  EXPECT_EQ(tilt, 6.7F);
}

TEST_F(Instrument, FailuresOfTheInstrumentLeaveOutputsAlone) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  int offset = 77;
  EXPECT_EQ(CorvaneGetDetectorOffsetEx(0, 0, 0, &offset), CORVANE_SUCCESS);
  EXPECT_EQ(offset, 77) << "never written";
  EXPECT_EQ(CorvaneSetDetectorOffsetEx(0, 2, -1, 5), CORVANE_SUCCESS) << "ports are not checked";

  Lab().ArmReplyFault({{"command", "POSITION?"}, {"error", "E11"}, {"repeat", true}});
  Lab().ArmReplyFault({{"command", "MOVETO"}, {"error", "E11"}, {"repeat", true}});
  Lab().ArmReplyFault({{"command", "GRATING"}, {"error", "E10"}, {"repeat", true}});
  float value = 5.0F;
  float other = 5.0F;
  EXPECT_EQ(CorvaneGetDispersion(0, &value, &other), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(value, 5.0F);
  EXPECT_EQ(CorvaneGetWavelength(0, &value), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(value, 0.0F) << "the one output that a failure writes";
  EXPECT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneSetGrating(0, 2), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneSetGratingOffset(0, 1, 5), CORVANE_SUCCESS) << "stored although the drive could not follow";

  Lab().ClearReplyFaults();
  EXPECT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_SUCCESS);
  int grating = 0;
  EXPECT_EQ(CorvaneGetGrating(0, &grating), CORVANE_SUCCESS);
  EXPECT_EQ(grating, 1);
}

TEST_F(Instrument, NumbersUseThePointUnderACommaLocale) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.IsInForce());
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  EXPECT_EQ(LinesOf([] { return CorvaneSetWavelength(0, 612.125F); }).back(), "MOVETO 612.1250");
  float value = 0;
  EXPECT_EQ(CorvaneGetWavelength(0, &value), CORVANE_SUCCESS);
  EXPECT_NEAR(value, 612.125F, 1e-3F);
}

TEST_F(Instrument, ACloseAndASecondInitializeFindTheSameInstrument) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  ASSERT_EQ(CorvaneInitialize(Lab().Directory().data()), CORVANE_SUCCESS) << "without a close between";
  EXPECT_EQ(CorvaneSetWavelength(0, 450.0F), CORVANE_SUCCESS);
  ASSERT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  ASSERT_EQ(CorvaneInitialize(Lab().Directory().data()), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetWavelength(0, 470.0F), CORVANE_SUCCESS);
}

// ---- Hostile contents --------------------------------------------------------------------------------------------

struct MemoryCase {
  const char* name;
  std::function<std::uint8_t(int address)> byte;
};

void PrintTo(const MemoryCase& memory, std::ostream* out) {
  *out << memory.name;
}

class HostileMemory : public Instrument, public testing::WithParamInterface<MemoryCase> {};

TEST_P(HostileMemory, EveryFunctionAnswersADefinedStatus) {
  std::vector<int> bytes;
  for (int address = 1; address <= 600; ++address) {
    bytes.push_back(GetParam().byte(address));
  }
  ASSERT_NO_FATAL_FAILURE(Open({{"memory", {{"patches", {{{"address", 1}, {"bytes", bytes}}}}}}}));
  for (int round = 0; round < 2; ++round) {
    for (const ExportedFunction& function : EveryDeviceFunction()) {
      Outputs out;
      const unsigned int status = function.call(0, out);
      EXPECT_TRUE(status == CORVANE_SUCCESS || status == CORVANE_COMMUNICATION_ERROR || status == CORVANE_P2_INVALID ||
                  status == CORVANE_NO_LEGACY_DRIVER)
          << function.name << " answered " << status;
    }
  }
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
}

/// A record with a version that is read, and this byte everywhere else.
std::uint8_t Versioned(int address, const char* version, std::uint8_t fill) {
  return address >= 21 && address < 24 ? static_cast<std::uint8_t>(version[address - 21]) : fill;
}

INSTANTIATE_TEST_SUITE_P(
    Contents, HostileMemory,
    testing::Values(MemoryCase{"Zeros", [](int) { return 0x00; }}, MemoryCase{"Ones", [](int) { return 0xFF; }},
                    MemoryCase{"OnesBehindAVersion", [](int address) { return Versioned(address, "3.0", 0xFF); }},
                    MemoryCase{"OnesBehindAnOldVersion", [](int address) { return Versioned(address, "1.1", 0xFF); }},
                    // 0x7F7F7F7F is a huge float and a huge integer, 127 a count and a flag that is set.
                    MemoryCase{"HugeBehindAVersion", [](int address) { return Versioned(address, "2.9", 0x7F); }},
                    MemoryCase{"Noise",
                               [](int address) {
                                 return Versioned(
                                     address, "3.0",
                                     static_cast<std::uint8_t>(static_cast<unsigned>(address) * 2654435761U >> 13));
                               }}),
    [](const auto& instance) { return instance.param.name; });

}  // namespace
