// Optical constants and grating data stored in a spectrograph. Gratings are 0-based here.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographEEPROM : public TDeviceServer {
 public:
  virtual int GetNumberGratings() = 0;
  /// As ISpectrographGrating::GetGratingInfo.
  virtual void GetGratingInfoEx(int grating, float& lines, const char*& blaze, float& home, float& offset) = 0;
  virtual void GetGratingInfo(int grating, float& lines, const char*& blaze) = 0;
  /// focalLength in metres, angularDeviation and focalTilt in degrees.
  virtual void GetOpticalParams(float& focalLength, float& angularDeviation, float& focalTilt) = 0;
};
