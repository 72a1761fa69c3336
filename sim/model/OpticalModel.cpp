#include "model/OpticalModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace corvane::sim {
namespace {

constexpr long double kPi = std::numbers::pi_v<long double>;
constexpr long double kRadians = kPi / 180.0L;
/// Nanometres per millimetre: lines per mm to groove spacing in nm.
constexpr long double kNanometres = 1.0e6L;
/// The sine of the largest grating angle, 60 degrees.
constexpr long double kLargestSine = std::numbers::sqrt3_v<long double> / 2.0L;
/// A host computes the limit in single precision and sends four decimals.
constexpr long double kLimitTolerance = 1.0e-6L;
/// How far the drive turns to the other side of zero order, as a part of its range.
constexpr long double kNegativePart = 0.25L;
constexpr int kBisections = 90;

/// The root of a rising function between low and high, which must enclose it.
template <typename Function>
long double Bisect(const Function& function, long double low, long double high) {
  for (int i = 0; i < kBisections; ++i) {
    const long double middle = (low + high) / 2.0L;
    (function(middle) < 0.0L ? low : high) = middle;
  }
  return (low + high) / 2.0L;
}

}  // namespace

OpticalModel::OpticalModel(const Record& record, float lines, int totalSteps, bool correctionSubtracts)
    : mAmplitude(record.sineAmplitude),
      mPhase(record.sinePhase),
      mFrequency(record.sineFrequency),
      mTotalSteps(totalSteps),
      mSign(correctionSubtracts ? -1.0L : 1.0L),
      mLines(lines),
      mDeviation(record.angularDeviation * kRadians),
      mTilt(record.tilt * kRadians),
      mFocalLength(record.focalLength) {
  std::copy(record.coefficients.begin(), record.coefficients.end(), mCoefficients.begin());
  mDirect = std::all_of(mCoefficients.begin(), mCoefficients.end(), [](long double c) { return c == 0.0L; });
}

long double OpticalModel::Polynomial(long double x) const {
  long double value = 0.0L;
  for (const long double coefficient : mCoefficients) {
    value = value * x + coefficient;
  }
  return value;
}

long double OpticalModel::PeriodicError(long double steps) const {
  if (mAmplitude == 0.0L || mFrequency == 0.0L) {
    return 0.0L;
  }
  return mSign * mAmplitude * std::sin(mPhase + 2.0L * kPi * steps / mFrequency);
}

long double OpticalModel::LargestX() const {
  return 2.0L * kNanometres * std::cos(mDeviation) / kReferenceLines;
}

bool OpticalModel::IsMonotonic() const {
  if (mDirect) {
    return true;
  }
  constexpr int kSamples = 1000;
  const long double low = -kNegativePart * LargestX();
  const long double step = (LargestX() * kLargestSine - low) / kSamples;
  for (int i = 0; i < kSamples; ++i) {
    if (!(Polynomial(low + step * (i + 1)) > Polynomial(low + step * i))) {
      return false;
    }
  }
  return true;
}

std::optional<long double> OpticalModel::StepsFromZero(long double wavelength) const {
  const long double sine = wavelength * mLines / (2.0L * kNanometres * std::cos(mDeviation));
  if (!(wavelength >= 0.0L && mLines > 0.0L && sine <= kLargestSine * (1.0L + kLimitTolerance))) {
    return std::nullopt;
  }
  if (wavelength == 0.0L) {
    return 0.0L;
  }
  const long double motorSine = mDirect ? sine : Polynomial(wavelength * mLines / kReferenceLines);
  if (!(std::abs(motorSine) <= 1.0L)) {
    return std::nullopt;
  }
  const long double steps = mTotalSteps * std::asin(motorSine) / (2.0L * kPi);
  const long double corrected = steps + PeriodicError(steps);
  return std::isfinite(corrected) ? std::optional(corrected) : std::nullopt;
}

std::optional<long double> OpticalModel::WavelengthAt(long double stepsFromZero) const {
  if (stepsFromZero == 0.0L) {
    return 0.0L;
  }
  const long double reach = std::abs(mAmplitude) + 1.0L;
  if (!(std::isfinite(stepsFromZero) && std::isfinite(reach) && mLines > 0.0L && std::isfinite(mLines))) {
    return std::nullopt;
  }
  const long double steps = Bisect([&](long double s) { return s + PeriodicError(s) - stepsFromZero; },
                                   stepsFromZero - reach, stepsFromZero + reach);
  const long double angle = 2.0L * kPi * steps / mTotalSteps;
  if (std::abs(angle) > kPi / 2.0L) {
    return std::nullopt;
  }
  const long double motorSine = std::sin(angle);
  if (mDirect) {
    const long double wavelength = motorSine * 2.0L * kNanometres * std::cos(mDeviation) / mLines;
    return std::isfinite(wavelength) ? std::optional(wavelength) : std::nullopt;
  }
  const long double low = -kNegativePart * LargestX();
  const long double high = LargestX();
  if (!(Polynomial(low) <= motorSine && motorSine <= Polynomial(high))) {
    return std::nullopt;
  }
  return kReferenceLines * Bisect([&](long double x) { return Polynomial(x) - motorSine; }, low, high) / mLines;
}

std::optional<long double> OpticalModel::WavelengthAtPixel(long double centre, double pixel,
                                                           const DetectorGeometry& detector) const {
  const long double spacing = kNanometres / mLines;
  const long double sine = centre / (2.0L * spacing * std::cos(mDeviation));
  if (!(std::abs(sine) <= 1.0L)) {
    return std::nullopt;
  }
  const long double theta = std::asin(sine);
  const long double focalPixels = mFocalLength / (1.0e-6L * detector.pixelWidth);
  const int middle = detector.pixels / 2;
  const long double height = static_cast<long double>(pixel) - middle;
  const long double beta = std::atan(std::cos(mTilt) * height / (std::sin(mTilt) * height + focalPixels));
  const long double wavelength = spacing * (std::sin(theta + beta - mDeviation) + std::sin(theta + mDeviation));
  return std::isfinite(wavelength) ? std::optional(wavelength) : std::nullopt;
}

}  // namespace corvane::sim
