#include "components/optics/TWavelengthConversion.h"

namespace {

/// Centimetres of a nanometre: 1 / (this * nm) is a wavenumber in cm^-1.
constexpr float kCentimetres = 1e-7F;
constexpr float kMicrometresOfNm = 0.001F;
/// Photon energy in eV times wavelength in nm.
constexpr float kElectronVoltNm = 1239.852F;

}  // namespace

float TWavelengthConversion::ToNm(float value, eWaveType type, eWaveUnit unit, float excitationNm) {
  if (type == kRamanShift) {
    if (value == 0.0F) {
      return excitationNm;
    }
    if (excitationNm <= 0.0F) {
      return kInvalid;
    }
    const float w = 1.0F / (kCentimetres * value);
    return w * excitationNm / (w - excitationNm);
  }
  if (type != kWavelength || value <= 0.0F) {
    return kInvalid;
  }
  switch (unit) {
    case kMicrometres:
      return value / kMicrometresOfNm;
    case kWavenumbers:
      return 1.0F / (kCentimetres * value);
    case kElectronVolts:
      return kElectronVoltNm / value;
    default:
      return value;
  }
}

float TWavelengthConversion::FromNm(float nm, eWaveType type, eWaveUnit unit, float excitationNm) {
  if (nm <= 0.0F) {
    return kInvalid;
  }
  if (type == kRamanShift) {
    return excitationNm <= 0.0F ? kInvalid : (nm - excitationNm) / (nm * excitationNm * kCentimetres);
  }
  if (type != kWavelength) {
    return kInvalid;
  }
  switch (unit) {
    case kMicrometres:
      return nm * kMicrometresOfNm;
    case kWavenumbers:
      return 1.0F / (kCentimetres * nm);
    case kElectronVolts:
      return kElectronVoltNm / nm;
    default:
      return nm;
  }
}
