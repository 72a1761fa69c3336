// Tells whether an older spectrograph sits on a camera's I2C bus. Drives nothing: five register reads.
#pragma once

#include "camera/TI2CInterface.h"

class TCorvaneDetection {
 public:
  /// True when registers 1 to 5 of device 0x68 read "tivan" in either case. Stops at the first read that fails; a null
  /// bus is false.
  static bool Detect(TI2CInterface* bus);
};
