// Grating turret of a spectrograph. Gratings, turrets and ports are 0-based here. Operations that cannot be carried
// out throw TCorvaneException.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographGrating : public TBusyDeviceServer {
 public:
  /// Selects a grating, keeping the wavelength.
  virtual void SetGrating(int grating) = 0;
  virtual int GetGrating() = 0;
  /// Homes the wavelength drive.
  virtual void Reset() = 0;
  virtual void UnsafeReset() = 0;
  virtual int GetNumberGratings() = 0;
  /// lines: rulings per mm; blaze: text owned by the component, valid until its next call; home: start position in
  /// steps; offset: grating offset in steps.
  virtual void GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) = 0;
  /// Detector offset in steps for an entrance and exit port.
  virtual void SetDetectorOffset(int entrance, int exit, int offset) = 0;
  virtual int GetDetectorOffset(int entrance, int exit) = 0;
  /// The same for the ports now in use.
  virtual void SetDetectorOffset(int offset) = 0;
  virtual int GetDetectorOffset() = 0;
  /// Grating offset in steps.
  virtual void SetGratingOffset(int grating, int offset) = 0;
  virtual int GetGratingOffset(int grating) = 0;
  virtual void GratingOffsetAutoAdjust() = 0;
  virtual void GratingOffsetCancelAutoAdjust() = 0;
  virtual void SetTurret(int turret) = 0;
  virtual int GetTurret() = 0;
};
