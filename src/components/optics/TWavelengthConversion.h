// Conversions between nanometres and the other units in which a wavelength or a Raman shift is given. Used by the
// calibration; single precision throughout.
#pragma once

class TWavelengthConversion {
 public:
  enum eWaveType : int {
    kWavelength = 0,
    /// In cm^-1, relative to an excitation wavelength.
    kRamanShift = 1,
  };
  /// Every other value stands for nanometres.
  enum eWaveUnit : int { kMicrometres = 0, kWavenumbers = 1, kElectronVolts = 2, kNanometres = 3 };

  static constexpr float kInvalid = -1.0F;

  /// The value in nm; kInvalid for a wavelength or an excitation that is not positive and for an unknown type. A Raman
  /// shift is in cm^-1 whatever the unit; a shift of exactly 0 is the excitation wavelength itself.
  static float ToNm(float value, eWaveType type, eWaveUnit unit, float excitationNm);
  /// The other way; kInvalid also for nm <= 0.
  static float FromNm(float nm, eWaveType type, eWaveUnit unit, float excitationNm);
};
