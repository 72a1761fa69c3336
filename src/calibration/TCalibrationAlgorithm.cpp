#include "calibration/TCalibrationAlgorithm.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "calibration/LeastSquares.h"

namespace {

constexpr int kSamples = 9;
constexpr double kRadiansPerDegree = 0.017453292519943295;

constexpr float kZero = 1e-6F;
constexpr double kZeroAsDouble = 9.999999974752427e-7;  // kZero
constexpr float kMaximumExcitation = 3.4028235e37F;
constexpr double kMaximumPixelWidth = 3.402823466385289e32;
constexpr double kMaximumFocalLength = 3.402823466385288e30;
constexpr float kMaximumAngle = 360.0F;
constexpr double kMaximumLines = 10'000.0;

float Radians(float degrees) {
  return static_cast<float>(static_cast<double>(degrees) * kRadiansPerDegree);
}

/// Where a pixel looks: the grating's angles and the detector's place in the focal plane.
struct OpticalModel {
  double spacing = 0.0;          // of the grooves, m
  double theta = 0.0;            // angle of the grating
  double delta = 0.0;            // angular deviation
  double tau = 0.0;              // tilt of the focal plane
  double focalLength = 0.0;      // in pixel widths
  std::int64_t centrePixel = 0;  // on the optical axis

  /// Wavelength (nm) that falls on pixel p.
  double WavelengthAt(std::int64_t p) const {
    const auto h = static_cast<double>(p - centrePixel);
    const double beta = std::atan(std::cos(tau) * h / (std::sin(tau) * h + focalLength));
    return spacing * (std::sin(theta + beta - delta) + std::sin(theta + delta)) * 1e9;
  }
};

/// True when every step P(k + 1) - P(k) for k = 0..n - 1 surely has the same sign as rising says, in single precision
/// too. The exact steps are a quadratic in k, so its ends and its vertex tell; what rounding can add or take is below
/// a few units in the last place of the largest terms.
bool StepsAreSafe(std::int64_t n, const TCalibrationAlgorithm::TConstants& c, bool rising) {
  constexpr double kRounding = 1.0 / (1 << 20);  // 16 units
  const double c1 = c.c1;
  const double c2 = c.c2;
  const double c3 = c.c3;
  const auto last = static_cast<double>(n - 1);
  const double a = 3.0 * c3;
  const double b = 3.0 * c3 + 2.0 * c2;
  const double constant = c1 + c2 + c3;
  const auto step = [&](double k) { return (a * k + b) * k + constant; };

  const double terms = 3.0 * std::abs(c3) * (last + 1.0) * (last + 1.0) + 2.0 * std::abs(c2) * last + std::abs(c1) +
                       std::abs(c2) + std::abs(c3);
  if (!(terms < FLT_MAX / 4.0)) {
    return false;
  }
  const double margin = terms * kRounding + FLT_MIN * (last + 2.0);
  const double vertex = a != 0.0 ? std::clamp(-b / (2.0 * a), 0.0, last) : 0.0;
  const double sign = rising ? 1.0 : -1.0;
  return std::min({sign * step(0.0), sign * step(vertex), sign * step(last)}) > margin;
}

}  // namespace

int TCalibrationAlgorithm::GetConstants(TConstants& out, float centre, eWaveType type, eWaveUnit unit, float excitation,
                                        int detectorOffset, float pixelWidth, int numberPixels, float focalLength,
                                        float tilt, float angularDeviation, double linesPerMm, bool reverse) {
  const int validation = ValidateParameters(centre, type, unit, excitation, detectorOffset, pixelWidth, numberPixels,
                                            focalLength, tilt, angularDeviation, linesPerMm, reverse);
  if (validation != kSuccess) {
    return validation;
  }

  OpticalModel model;
  model.delta = Radians(angularDeviation);
  model.tau = Radians(tilt);
  model.spacing = 1.0 / (1'000.0 * linesPerMm);
  const float centreNm = TWavelengthConversion::ToNm(centre, type, unit, excitation);
  const float centreMetres = 1e-9F * centreNm;
  const double sine = static_cast<double>(centreMetres) / (std::cos(model.delta) * (2.0 * model.spacing));
  if (!(std::abs(sine) >= kZeroAsDouble && std::abs(sine) <= 1.0)) {
    return kUnreachable;
  }
  model.theta = std::asin(sine);
  const float pixelWidthMetres = 1e-6F * pixelWidth;
  model.focalLength = focalLength / pixelWidthMetres;
  model.centrePixel = std::int64_t{numberPixels / 2} + detectorOffset;

  std::array<double, kSamples> x{};
  std::array<double, kSamples> y{};
  std::int64_t p = 1;
  for (std::size_t i = 0; i < kSamples; ++i) {
    p = std::min<std::int64_t>(p, numberPixels);
    x[reverse ? kSamples - 1 - i : i] = static_cast<double>(p);
    // Fitting in the caller's unit: the cubic is evaluated in it.
    y[i] = TWavelengthConversion::FromNm(static_cast<float>(model.WavelengthAt(p)), type, unit, excitation);
    p += numberPixels / (kSamples - 1);
  }

  corvane::FitVector coefficients{};
  // Singular (fewer than eight pixels) or not: the test of the cubic decides.
  corvane::lfit(x, y, coefficients);
  out.c0 = static_cast<float>(coefficients[1]);
  out.c1 = static_cast<float>(coefficients[2]);
  out.c2 = static_cast<float>(coefficients[3]);
  out.c3 = static_cast<float>(coefficients[4]);
  return TestCalibration(numberPixels, out);
}

int TCalibrationAlgorithm::ValidateParameters(float centre, eWaveType type, eWaveUnit /*unit*/, float excitation,
                                              int detectorOffset, float pixelWidth, int numberPixels, float focalLength,
                                              float tilt, float angularDeviation, double linesPerMm, bool /*reverse*/) {
  // Written so that a value that is no number fails.
  const auto isWithin = [](double value, double minimum, double maximum) {
    return value >= minimum && value <= maximum;
  };
  const double zero = kZero;
  const std::int64_t twiceOffset = std::int64_t{2} * detectorOffset;

  if (!(centre >= kZero)) {
    return kBadCentre;
  }
  if (type == TWavelengthConversion::kRamanShift && !isWithin(excitation, zero, kMaximumExcitation)) {
    return kBadExcitation;
  }
  if (twiceOffset >= numberPixels || -twiceOffset >= numberPixels) {
    return kBadDetectorOffset;
  }
  if (!isWithin(pixelWidth, zero, kMaximumPixelWidth)) {
    return kBadPixelWidth;
  }
  if (numberPixels < 1) {
    return kBadNumberPixels;
  }
  if (!isWithin(std::abs(focalLength), zero, kMaximumFocalLength)) {
    return kBadFocalLength;
  }
  // Exactly zero is refused as well, on purpose: it is what an instrument without stored optical constants reports.
  if (!isWithin(std::abs(tilt), zero, kMaximumAngle)) {
    return kBadTilt;
  }
  if (!isWithin(std::abs(angularDeviation), zero, kMaximumAngle)) {
    return kBadAngularDeviation;
  }
  if (!isWithin(linesPerMm, kZeroAsDouble, kMaximumLines)) {
    return kBadLines;
  }
  return kSuccess;
}

int TCalibrationAlgorithm::TestCalibration(int numberPixels, TConstants constants) {
  const auto& [c0, c1, c2, c3] = constants;
  const double start = c0;
  const auto behindLast = static_cast<float>(std::int64_t{numberPixels} + 1);
  const float rise = behindLast * (c1 + behindLast * (c2 + behindLast * c3));
  const double end = start + static_cast<double>(rise);
  // Also where a constant is not finite.
  if (!std::isfinite(end)) {
    return kNotMonotonic;
  }
  if (end == start) {
    return kUnreachable;
  }
  const bool rising = end > start;
  // Saves a pass over the detector, which for a long one costs as much as the evaluation.
  if (StepsAreSafe(numberPixels, constants, rising)) {
    return kSuccess;
  }
  for (std::int64_t k = 0; k < numberPixels; ++k) {
    const float step = (static_cast<float>(k + 1) * (3.0F * c3) + 2.0F * c2) * static_cast<float>(k) + (c2 + c1 + c3);
    if ((step > 0.0F) != rising) {
      return kNotMonotonic;
    }
  }
  return kSuccess;
}
