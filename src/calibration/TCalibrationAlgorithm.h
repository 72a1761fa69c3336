// Which wavelength falls on which pixel: the optical model of a spectrograph, sampled at nine pixels and fitted with a
// cubic in the pixel number. Mathematics only; TCalibration gathers the inputs.
#pragma once

#include "components/optics/TWavelengthConversion.h"

class TCalibrationAlgorithm {
 public:
  using eWaveType = TWavelengthConversion::eWaveType;
  using eWaveUnit = TWavelengthConversion::eWaveUnit;

  enum TResult : int {
    kSuccess = 0,
    kBadCentre = 1,
    kBadExcitation = 2,
    kBadDetectorOffset = 3,
    kBadPixelWidth = 4,
    kBadNumberPixels = 5,
    kBadFocalLength = 6,
    kBadTilt = 7,
    kBadAngularDeviation = 8,
    kBadLines = 9,
    kUnreachable = 10,   ///< The grating cannot diffract the centre to the detector; or the cubic is flat end to end.
    kNotMonotonic = 11,  ///< The cubic turns on the detector, stands still while it should rise, or is not finite.
  };

  /// The cubic. Pixels count from 1.
  struct TConstants {
    float c0 = 0.0F;
    float c1 = 0.0F;
    float c2 = 0.0F;
    float c3 = 0.0F;

    /// Wavelength at pixel p. Applications compare values bit by bit between runs: the grouping is part of the result.
    float ValueFor(float p) const { return p * (c3 * p * p) + (c0 + p * c1 + p * (c2 * p)); }
  };

  /// Fits out to the model, in the unit of centre; a TResult, and out is only good with kSuccess.
  /// centre: wavelength or shift at the detector's centre; excitation: nm, for Raman shifts only; detectorOffset:
  /// pixels by which the detector's centre is off the optical axis; pixelWidth: µm; focalLength: m; tilt of the focal
  /// plane and angularDeviation: degrees, neither of which may be 0; reverse pairs the pixel numbers with the samples
  /// in mirrored order.
  static int GetConstants(TConstants& out, float centre, eWaveType type, eWaveUnit unit, float excitation,
                          int detectorOffset, float pixelWidth, int numberPixels, float focalLength, float tilt,
                          float angularDeviation, double linesPerMm, bool reverse);

  /// The first of kBadCentre..kBadLines that applies, in this order, or kSuccess. No number is no good value.
  static int ValidateParameters(float centre, eWaveType type, eWaveUnit unit, float excitation, int detectorOffset,
                                float pixelWidth, int numberPixels, float focalLength, float tilt,
                                float angularDeviation, double linesPerMm, bool reverse);

  /// Whether the cubic rises or falls all over pixels 0 to numberPixels: kSuccess, kUnreachable or kNotMonotonic. A
  /// zero step in a rising cubic fails, in a falling one it does not.
  static int TestCalibration(int numberPixels, TConstants constants);
};
