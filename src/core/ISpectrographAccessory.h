// Accessory output lines of a spectrograph. Operations that cannot be carried out throw TCorvaneException.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographAccessory : public TDeviceServer {
 public:
  /// line counts from 1.
  virtual void SetAccessory(int line, bool state) = 0;
  virtual bool GetAccessoryState(int line) = 0;
};
