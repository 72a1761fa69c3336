#include "components/optics/TStepperWaveToSteps.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "components/optics/Degrees.h"

namespace {

// Double constants, carried on in extended precision.
constexpr long double kTwoPi = 6.283185307179586;
constexpr long double kDegreesPerRevolution = 360.0L;

std::int64_t RoundHalfAway(long double value) {
  constexpr long double kTwoTo63 = 9223372036854775808.0L;
  const long double moved = value < 0.0L ? value - 0.5L : value + 0.5L;
  if (moved < -kTwoTo63) {
    return std::numeric_limits<std::int64_t>::min();
  }
  if (moved < kTwoTo63) {
    return static_cast<std::int64_t>(moved);
  }
  constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::int64_t>(moved < 2.0L * kTwoTo63 ? static_cast<std::uint64_t>(moved) : kMost);
}

}  // namespace

TStepperWaveToSteps::TStepperWaveToSteps(const float* coefficients, float amplitude, float phase, float frequency,
                                         unsigned long totalSteps)
    : mCoefficients{}, mAmplitude(amplitude), mPhase(phase), mFrequency(frequency), mTotalSteps(totalSteps) {
  std::copy_n(coefficients, mCoefficients.size(), mCoefficients.begin());
}

float TStepperWaveToSteps::Polynomial(float x) const {
  const auto& c = mCoefficients;
  // Single precision, in this order of operations: instruments were calibrated with these roundings.
  return c[4] + c[3] * x + c[2] * x * x + c[1] * x * x * x + c[0] * x * x * x * x;
}

double TStepperWaveToSteps::SineCorrection(long double steps) const {
  if (mAmplitude == 0.0F || mFrequency == 0.0F) {
    return 0.0;  // No correction stored; 0 * sin(infinity) would not be a number.
  }
  const long double argument = mPhase + kTwoPi * steps / mFrequency;
  return mAmplitude * std::sin(static_cast<double>(argument));
}

std::int64_t TStepperWaveToSteps::ToSteps(float x, int offset, int version) const {
  if (x > -1.0F && x < 1.0F) {
    return offset;
  }
  const float p = Polynomial(x);
  if (!(p >= -1.0F && p <= 1.0F)) {
    return offset;
  }
  const long double degrees = static_cast<long double>(std::asin(static_cast<double>(p))) * corvane::kDegreesPerRadian;
  const long double steps = static_cast<long double>(mTotalSteps) * degrees / kDegreesPerRevolution;
  long double result = offset;
  if (!(std::fabs(x) < 0.001F)) {
    const double correction = SineCorrection(steps);
    // The older structure adds the correction and cannot go below the zero position; the newer one subtracts it.
    result = version <= 1 ? std::max(steps + correction, 0.0L) + offset : offset + steps - correction;
  }
  return std::isfinite(result) ? RoundHalfAway(result) : offset;
}
