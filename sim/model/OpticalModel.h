// The exact optics of one grating on one drive, in extended precision: turret position to wavelength and back, and the
// wavelength at a pixel of the detector. Used by both kinds of instrument, with the data of the firmware and with the
// real ones.
#pragma once

#include <array>
#include <optional>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

class OpticalModel {
 public:
  /// correctionSubtracts: the drive's periodic error counts as in layouts from 2.0 on.
  OpticalModel(const Record& record, float lines, int totalSteps, bool correctionSubtracts);

  /// Motor steps from the grating's zero order; none when the wavelength (nm) cannot be reached: negative, beyond a
  /// grating angle of 60 degrees, or a record without sense.
  std::optional<long double> StepsFromZero(long double wavelength) const;

  /// Centre wavelength (nm) at so many steps from zero order; exactly 0 at zero order. None outside the drive's range.
  std::optional<long double> WavelengthAt(long double stepsFromZero) const;

  /// Wavelength (nm) at a pixel (from 1) when the given one falls on the centre.
  std::optional<long double> WavelengthAtPixel(long double centre, double pixel,
                                               const DetectorGeometry& detector) const;

  /// Whether the drive's polynomial rises over its whole range, so that every position has one wavelength.
  bool IsMonotonic() const;

 private:
  long double Polynomial(long double x) const;
  long double PeriodicError(long double steps) const;
  long double LargestX() const;

  std::array<long double, 5> mCoefficients{};
  bool mDirect = true;
  long double mAmplitude;
  long double mPhase;
  long double mFrequency;
  long double mTotalSteps;
  long double mSign;
  long double mLines;
  long double mDeviation;
  long double mTilt;
  long double mFocalLength;
};

}  // namespace corvane::sim
