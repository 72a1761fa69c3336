// The way from a wavelength to a motor step of the grating turret, for instruments whose steps are computed in this
// library. TCorvaneMerakStepTurret uses it; it knows neither controller nor EEPROM.
#pragma once

#include <array>
#include <cstdint>

class TStepperWaveToSteps {
 public:
  static constexpr int kCoefficients = 5;

  /// coefficients: the 5 of the polynomial for sin(angle), the one of x^4 first, the constant last. amplitude (steps),
  /// phase (radians), frequency (steps per period): the sine correction. totalSteps: motor steps of a turret
  /// revolution.
  TStepperWaveToSteps(const float* coefficients, float amplitude, float phase, float frequency,
                      unsigned long totalSteps);

  /// Motor step for x, the wavelength in nm as it would diffract at kReferenceLines (ReferenceLines.h). offset: the
  /// grating's zero position. version: major number of the EEPROM's structure, which decides how the sine correction
  /// goes in. The zero position itself for |x| < 1 and for wavelengths out of reach, without a word. Results of 2^63
  /// and above come out as their unsigned image.
  std::int64_t ToSteps(float x, int offset, int version) const;

 private:
  float Polynomial(float x) const;
  double SineCorrection(long double steps) const;

  std::array<float, kCoefficients> mCoefficients;
  float mAmplitude;
  float mPhase;
  float mFrequency;
  std::uint64_t mTotalSteps;
};
