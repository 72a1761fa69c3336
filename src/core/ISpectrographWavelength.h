// Wavelength drive of a spectrograph. Operations that cannot be carried out throw TCorvaneException.
#pragma once

#include "core/StepPosition.h"
#include "core/TDeviceServer.h"

class ISpectrographWavelength : public TBusyDeviceServer {
 public:
  /// Moves the drive so that this wavelength (nm) falls on the detector's centre. 0 is zero order.
  virtual void SetWavelength(float nm) = 0;
  /// Centre wavelength in nm.
  virtual float GetWavelength() = 0;
  virtual void GotoZeroOrder() = 0;
  virtual bool AtZeroOrder() = 0;
  /// Wavelengths (nm) at the two ends of the detector for the current centre wavelength.
  virtual void GetDispersion(float& low, float& high) = 0;
  /// The same for a given centre (nm) and 0-based detector (-1: the current one).
  virtual void GetDispersionFor(float centre, float& low, float& high, int detector) = 0;
  /// The same for a window of pixels first..last.
  virtual void GetDispersionAt(float centre, float& low, float& high, int detector, int first, int last) = 0;
  /// Range (nm) of a 0-based grating; -1 means the current grating.
  virtual void GetWavelengthLimits(int grating, float& min, float& max) = 0;
  /// Motor position in steps, or corvane::kNoStepPosition.
  virtual int GetCurrentWaveStepPosition() = 0;
};
