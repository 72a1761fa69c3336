// A source of cameras with an I2C bus and a detector.
#pragma once

#include "camera/TDetectorInterface.h"
#include "camera/TI2CInterface.h"

class TI2CController {
 public:
  virtual ~TI2CController() = default;
  virtual int GetNumberDevices() = 0;
  /// Borrowed; null for an index this source does not know.
  virtual TI2CInterface* GetI2CInterface(int index) = 0;
  virtual TDetectorInterface* GetDetectorInterface(int index) = 0;
};
