// Shutter of a spectrograph. Operations that cannot be carried out throw TCorvaneException.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographShutter : public TDeviceServer {
 public:
  virtual void SetExternalShutter(int mode) = 0;
  virtual int GetExternalShutter() = 0;
  virtual bool IsExternalModePossible(int mode) = 0;
  virtual void SetInternalShutter(int mode) = 0;
  virtual int GetInternalShutter() = 0;
  virtual bool InternalShutterAvailable() = 0;
  virtual void LoadShutterValues() = 0;
  virtual void ExternalChange() = 0;
};
