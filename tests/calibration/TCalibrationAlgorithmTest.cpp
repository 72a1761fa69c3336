#include "calibration/TCalibrationAlgorithm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "calibration/LeastSquares.h"

namespace {

using Wave = TWavelengthConversion;
using Algorithm = TCalibrationAlgorithm;
using Constants = Algorithm::TConstants;

constexpr double kPi = 3.14159265358979323846;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
/// What is below is taken for zero.
constexpr float kZeroLimit = 1e-6F;
const float kBelowZeroLimit = std::nextafter(kZeroLimit, 0.0F);
const float kAboveTurn = std::nextafter(360.0F, 400.0F);

/// Arguments of a good calibration; tests change what they are about.
struct Inputs {
  float centre = 550.0F;
  Wave::eWaveType type = Wave::kWavelength;
  Wave::eWaveUnit unit = Wave::kNanometres;
  float excitation = 0.0F;
  int detectorOffset = 0;
  float pixelWidth = 13.5F;
  int numberPixels = 1024;
  float focalLength = 0.328F;
  float tilt = 3.3F;
  float angularDeviation = 15.2F;
  double lines = 600.0;
  bool reverse = false;

  int Fit(Constants& out) const {
    return Algorithm::GetConstants(out, centre, type, unit, excitation, detectorOffset, pixelWidth, numberPixels,
                                   focalLength, tilt, angularDeviation, lines, reverse);
  }
  int Code() const {
    Constants ignored;
    return Fit(ignored);
  }
  int Validation() const {
    return Algorithm::ValidateParameters(centre, type, unit, excitation, detectorOffset, pixelWidth, numberPixels,
                                         focalLength, tilt, angularDeviation, lines, reverse);
  }
};

/// The wavelength (nm) on a pixel in long double, but for the steps that are single precision by definition.
long double TrueWavelength(const Inputs& in, int pixel) {
  const long double delta = static_cast<float>(in.angularDeviation * (kPi / 180.0));
  const long double tau = static_cast<float>(in.tilt * (kPi / 180.0));
  const long double focalLength = in.focalLength / (1e-6F * in.pixelWidth);
  const long double spacing = 1e6L / static_cast<long double>(in.lines);
  const float metres = 1e-9F * in.centre;
  const long double theta = std::asin(static_cast<long double>(metres) * 1e9L / (2.0L * spacing * std::cos(delta)));
  const int centrePixel = in.numberPixels / 2 + in.detectorOffset;
  const long double h = pixel - centrePixel;
  const long double beta = std::atan2(std::cos(tau) * h, focalLength + std::sin(tau) * h);
  return spacing * (std::sin(theta + beta - delta) + std::sin(theta + delta));
}

/// Of any pixel in front of zero order: what is left of a difference after single precision's share is taken off.
long double WorstBeyondRounding(const Inputs& in, const Constants& fitted) {
  long double worst = 0.0L;
  for (int pixel = 1; pixel <= in.numberPixels; ++pixel) {
    const long double wavelength = TrueWavelength(in, pixel);
    if (wavelength > 0.0L) {
      const long double difference = std::abs(fitted.ValueFor(static_cast<float>(pixel)) - wavelength);
      worst = std::max(worst, difference - 3e-7L * wavelength);
    }
  }
  return worst;
}

/// Below this centre (nm) the first pixel lies behind zero order.
double LeastCentre(const Inputs& in) {
  const double tau = in.tilt * kPi / 180.0;
  const double h = 1 - in.numberPixels / 2;
  const double beta = std::atan(std::cos(tau) * h / (std::sin(tau) * h + in.focalLength / (1e-6 * in.pixelWidth)));
  return 2e6 / in.lines * std::cos(in.angularDeviation * kPi / 180.0) * std::sin(-beta / 2.0);
}

TEST(CalibrationAlgorithm, PixelsHaveTheirTrueWavelengths) {
  // These figures are the users' (docs/manual.md).
  const struct {
    int pixels;
    float focalLength, tilt, angularDeviation;
    double cubic;  ///< distance of the cubic from the light, nm for 1200 lines
  } optics[] = {
      {1024, 0.328F, 3.3F, 15.2F, 8e-6}, {2048, 0.328F, 3.3F, 15.2F, 1.3e-4}, {2048, 0.75F, 6.7F, 11.83F, 6e-6}};
  for (const auto& [pixels, focalLength, tilt, angularDeviation, cubic] : optics) {
    for (const double lines : {150.0, 300.0, 600.0, 1200.0, 1800.0, 2400.0}) {
      Inputs in{.numberPixels = pixels,
                .focalLength = focalLength,
                .tilt = tilt,
                .angularDeviation = angularDeviation,
                .lines = lines};
      const double reach = 2e6 / lines * std::cos(in.angularDeviation * kPi / 180.0);
      for (double centre = LeastCentre(in) * 1.001; centre < reach * 0.99; centre += reach / 100.0) {
        in.centre = static_cast<float>(centre);
        Constants fitted;
        ASSERT_EQ(Algorithm::kSuccess, in.Fit(fitted)) << lines << " lines/mm, " << in.centre << " nm";
        EXPECT_LE(WorstBeyondRounding(in, fitted), cubic * 1200.0 / lines)
            << lines << " lines/mm, " << in.centre << " nm";
      }
    }
  }
}

TEST(CalibrationAlgorithm, PixelsBehindZeroOrderSpoilTheOthersWithSuccess) {
  // Deliberate: their samples count as -1 nm, as every wavelength that is none.
  Inputs in{.numberPixels = 2048, .lines = 150.0};
  const double least = LeastCentre(in);
  EXPECT_NEAR(271.0, least, 0.5);
  const std::pair<double, double> errors[] = {{0.999, 0.5}, {0.9, 10.0}, {0.8, 15.0}};
  for (const auto& [part, error] : errors) {
    in.centre = static_cast<float>(least * part);
    Constants fitted;
    EXPECT_EQ(Algorithm::kSuccess, in.Fit(fitted));
    EXPECT_GT(WorstBeyondRounding(in, fitted), error) << in.centre;
  }
  in.centre = static_cast<float>(least * 0.6);
  EXPECT_EQ(Algorithm::kNotMonotonic, in.Code());
}

TEST(CalibrationAlgorithm, ValueForKeepsItsGrouping) {
  // Terms that a different order of additions would lose: 1e8 + 3 is 1e8 + 0 or + 8 in single precision.
  const Constants constants{1e8F, 3.0F, 3.0F, 3.0F};
  EXPECT_EQ(3.0F + ((1e8F + 3.0F) + 3.0F), constants.ValueFor(1.0F));
  const Constants cancelling{1e8F, -1e8F, 3.0F, 3.0F};
  EXPECT_EQ(6.0F, cancelling.ValueFor(1.0F)) << "c0 and c1 meet first";
}

TEST(CalibrationAlgorithm, ValidationNamesTheFirstBadArgument) {
  struct Case {
    int code;
    void (*spoil)(Inputs&);
  };
  const Case cases[] = {
      {Algorithm::kBadCentre, [](Inputs& in) { in.centre = kBelowZeroLimit; }},
      {Algorithm::kBadCentre, [](Inputs& in) { in.centre = kNaN; }},
      {Algorithm::kBadExcitation, [](Inputs& in) { in.type = Wave::kRamanShift; }},
      {Algorithm::kBadDetectorOffset, [](Inputs& in) { in.numberPixels = 0; }},
      {Algorithm::kBadDetectorOffset, [](Inputs& in) { in.detectorOffset = std::numeric_limits<int>::min(); }},
      {Algorithm::kBadDetectorOffset, [](Inputs& in) { in.detectorOffset = 512; }},
      {Algorithm::kBadDetectorOffset, [](Inputs& in) { in.detectorOffset = -512; }},
      {Algorithm::kBadPixelWidth, [](Inputs& in) { in.pixelWidth = kBelowZeroLimit; }},
      {Algorithm::kBadPixelWidth, [](Inputs& in) { in.pixelWidth = 3.4028236e32F; }},
      {Algorithm::kBadPixelWidth, [](Inputs& in) { in.pixelWidth = kNaN; }},
      {Algorithm::kBadFocalLength, [](Inputs& in) { in.focalLength = -kBelowZeroLimit; }},
      {Algorithm::kBadFocalLength, [](Inputs& in) { in.focalLength = kNaN; }},
      {Algorithm::kBadTilt, [](Inputs& in) { in.tilt = kBelowZeroLimit; }},
      {Algorithm::kBadTilt, [](Inputs& in) { in.tilt = -kAboveTurn; }},
      {Algorithm::kBadTilt, [](Inputs& in) { in.tilt = kNaN; }},
      {Algorithm::kBadAngularDeviation, [](Inputs& in) { in.angularDeviation = -kBelowZeroLimit; }},
      {Algorithm::kBadAngularDeviation, [](Inputs& in) { in.angularDeviation = kAboveTurn; }},
      {Algorithm::kBadAngularDeviation, [](Inputs& in) { in.angularDeviation = kNaN; }},
      {Algorithm::kBadLines, [](Inputs& in) { in.lines = 9.99e-7; }},
      {Algorithm::kBadLines, [](Inputs& in) { in.lines = std::nextafter(10'000.0, 1e5); }},
      {Algorithm::kBadLines, [](Inputs& in) { in.lines = kNaN; }},
  };
  // From the last to the first: with all the later ones bad too, each is still the one that is named.
  Inputs thisAndAllLater;
  for (auto bad = std::rbegin(cases); bad != std::rend(cases); ++bad) {
    SCOPED_TRACE(std::distance(bad, std::rend(cases)));
    Inputs onlyThis;
    bad->spoil(onlyThis);
    EXPECT_EQ(bad->code, onlyThis.Validation());
    EXPECT_EQ(bad->code, onlyThis.Code());
    bad->spoil(thisAndAllLater);
    EXPECT_EQ(bad->code, thisAndAllLater.Validation());
  }
}

TEST(CalibrationAlgorithm, ValidationLetsTheLimitsThemselvesPass) {
  const Inputs smallest{.centre = kZeroLimit,
                        .type = Wave::kRamanShift,
                        .excitation = kZeroLimit,
                        .pixelWidth = kZeroLimit,
                        .numberPixels = 1,
                        .focalLength = -kZeroLimit,
                        .tilt = -kZeroLimit,
                        .angularDeviation = -kZeroLimit,
                        .lines = kZeroLimit};
  EXPECT_EQ(Algorithm::kSuccess, smallest.Validation());
  const Inputs largest{.centre = kInfinity,
                       .type = Wave::kRamanShift,
                       .excitation = 3.4028235e37F,
                       .pixelWidth = 3.4028234e32F,
                       .tilt = -360.0F,
                       .angularDeviation = 360.0F,
                       .lines = 10'000.0};
  EXPECT_EQ(Algorithm::kSuccess, largest.Validation());
}

TEST(CalibrationAlgorithm, DetectorOffsetsUpToLessThanHalfTheDetectorPass) {
  for (const int offset : {511, -511}) {
    Inputs in;
    in.detectorOffset = offset;
    Constants fitted;
    EXPECT_EQ(Algorithm::kSuccess, in.Fit(fitted));
    EXPECT_NEAR(550.0F, fitted.ValueFor(static_cast<float>(512 + offset)), 0.01F);
  }
}

TEST(CalibrationAlgorithm, ACentreBeyondTheGratingCannotBeReached) {
  Inputs in;
  in.lines = 1200.0;
  const double reach = 2e6 / 1200.0 * std::cos(in.angularDeviation * kPi / 180.0);
  in.centre = static_cast<float>(reach * 1.0001);
  EXPECT_EQ(Algorithm::kUnreachable, in.Code());
  in.centre = kInfinity;
  EXPECT_EQ(Algorithm::kUnreachable, in.Code());
  in.centre = 1e-4F;
  in.lines = 0.001;
  EXPECT_EQ(Algorithm::kUnreachable, in.Code()) << "as good as zero order";
}

TEST(CalibrationAlgorithm, ReversePairsThePixelsWithMirroredSamples) {
  Inputs in;
  Constants plain;
  Constants reversed;
  ASSERT_EQ(Algorithm::kSuccess, in.Fit(plain));
  in.reverse = true;
  ASSERT_EQ(Algorithm::kSuccess, in.Fit(reversed));
  // Samples: 1, 129, ..., 897, 1024 (from 1025).
  const std::vector<float> pixels{1, 129, 257, 385, 513, 641, 769, 897, 1024};
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    EXPECT_NEAR(plain.ValueFor(pixels[i]), reversed.ValueFor(pixels[pixels.size() - 1 - i]), 0.03F);
  }
}

TEST(CalibrationAlgorithm, FitsInTheCallersUnit) {
  const struct {
    Wave::eWaveType type;
    Wave::eWaveUnit unit;
    float tolerance;
  } units[] = {{Wave::kRamanShift, Wave::kNanometres, 0.5F},
               {Wave::kWavelength, Wave::kElectronVolts, 1e-4F},  // a falling curve
               {Wave::kWavelength, Wave::kWavenumbers, 0.5F}};
  Inputs in{.excitation = 532.0F};
  Constants inNm;
  ASSERT_EQ(Algorithm::kSuccess, in.Fit(inNm));
  for (const auto& [type, unit, tolerance] : units) {
    in.type = type;
    in.unit = unit;
    in.centre = Wave::FromNm(550.0F, type, unit, in.excitation);
    Constants fitted;
    ASSERT_EQ(Algorithm::kSuccess, in.Fit(fitted));
    for (const float p : {1.0F, 300.0F, 512.0F, 1024.0F}) {
      EXPECT_NEAR(Wave::FromNm(inNm.ValueFor(p), type, unit, in.excitation), fitted.ValueFor(p), tolerance) << unit;
    }
  }
}

TEST(CalibrationAlgorithm, ADetectorOfFewerThanEightPixelsIsRefused) {
  Inputs in;
  in.numberPixels = 7;  // all nine samples coincide on pixel 1, so no curve is known
  EXPECT_EQ(Algorithm::kUnreachable, in.Code());
  in.numberPixels = 8;
  EXPECT_EQ(Algorithm::kSuccess, in.Code());
}

TEST(CalibrationAlgorithm, ADetectorOfAllPixelsLeavesNoArithmeticOutsideItsType) {
  Inputs in;
  in.numberPixels = std::numeric_limits<int>::max();
  in.pixelWidth = 1e-5F;
  in.Code();
}

TEST(CalibrationAlgorithm, TestTellsFlatTurningAndUnusableCurves) {
  const auto test = [](int n, const Constants& c) { return Algorithm::TestCalibration(n, c); };
  EXPECT_EQ(Algorithm::kUnreachable, test(1024, {500.0F, 0.0F, 0.0F, 0.0F}));
  EXPECT_EQ(Algorithm::kUnreachable, test(9, {500.0F, 10.0F, -1.0F, 0.0F})) << "up and back down to where it began";
  EXPECT_EQ(Algorithm::kNotMonotonic, test(10, {500.0F, 10.0F, -0.75F, 0.0F})) << "turns on the detector";
  EXPECT_EQ(Algorithm::kSuccess, test(10, {500.0F, 16.0F, -0.75F, 0.0F})) << "turns just behind its end";
  // A step of exactly zero, from pixel 0 to 1: c1 + c2 + c3 = 0.
  EXPECT_EQ(Algorithm::kNotMonotonic, test(10, {500.0F, -1.0F, 1.0F, 0.0F})) << "a rising curve must not stand still";
  EXPECT_EQ(Algorithm::kSuccess, test(10, {500.0F, 1.0F, -1.0F, 0.0F})) << "a falling one may";
  for (const float bad : {kNaN, kInfinity}) {
    EXPECT_EQ(Algorithm::kNotMonotonic, test(10, {500.0F, 1.0F, 0.0F, bad}));
  }
}

TEST(CalibrationAlgorithm, TestJudgesEveryStepInSinglePrecision) {
  // The answer is that of a walk over all steps, also close to where a curve turns.
  std::mt19937 random(7);
  std::uniform_real_distribution<float> unit(-1.0F, 1.0F);
  int good = 0;
  for (int i = 0; i < 20'000; ++i) {
    const int n = 8 + static_cast<int>(random() % 300);
    const auto length = static_cast<float>(n);
    Constants c{500.0F, 0.1F * unit(random), unit(random) * 0.1F / length, unit(random) * 0.1F / (length * length)};
    if (i % 2 == 0) {
      // The curve turns within a pixel of the detector's end.
      c.c1 = -2.0F * c.c2 * (length + unit(random)) - 3.0F * c.c3 * length * length;
    }
    const float m = length + 1.0F;
    const double start = c.c0;
    const double end = start + static_cast<double>(m * (c.c1 + m * (c.c2 + m * c.c3)));
    int expected = end == start ? Algorithm::kUnreachable : Algorithm::kSuccess;
    for (int k = 0; k < n && expected == Algorithm::kSuccess; ++k) {
      const auto from = static_cast<float>(k);
      const float step = ((from + 1.0F) * (3.0F * c.c3) + 2.0F * c.c2) * from + (c.c2 + c.c1 + c.c3);
      expected = (step > 0.0F) == (end > start) ? Algorithm::kSuccess : Algorithm::kNotMonotonic;
    }
    ASSERT_EQ(expected, TCalibrationAlgorithm::TestCalibration(n, c)) << "curve " << i;
    good += expected == Algorithm::kSuccess ? 1 : 0;
  }
  EXPECT_GT(good, 1'000);
  EXPECT_LT(good, 19'000);
}

TEST(LeastSquares, EliminationPivotsOnRowsAndColumns) {
  // Zeros on the diagonal, and a pivot so small that taking it first would cost the digits of all others.
  corvane::FitMatrix a{};
  a[1] = {0, 0, 2, 0, 1};
  a[2] = {0, 1e-18, 1, 0, 0};
  a[3] = {0, 1, 1, 0, 4};
  a[4] = {0, 0, 0, 5, 0};
  corvane::FitVector b{0, 2 * 2 + 4, 2, 1 + 2 + 4 * 4, 5 * 3};
  EXPECT_TRUE(corvane::gaussj(a, b));
  for (std::size_t i = 1; i <= 4; ++i) {
    EXPECT_NEAR(static_cast<double>(i), b[i], 1e-12);
  }
}

TEST(LeastSquares, ASingularMatrixStopsEliminationWithoutADivisionByZero) {
  corvane::FitMatrix nothing{};
  corvane::FitVector b{0, 1, 2, 3, 4};
  EXPECT_FALSE(corvane::gaussj(nothing, b));
  EXPECT_EQ((corvane::FitVector{0, 1, 2, 3, 4}), b);
}

}  // namespace
