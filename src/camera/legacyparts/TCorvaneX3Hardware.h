// The components of one older instrument on a camera's I2C bus.
#pragma once

#include "core/TSpectrographHardware.h"

class Corvane;

class TCorvaneX3Hardware final : public TSpectrographHardware {
 public:
  /// Reads the serial number, "" when it cannot be read; drives nothing else. The driver is borrowed and outlives this
  /// object; without one nothing is present but wavelength, grating and EEPROM, which always are, and every use of the
  /// driver fails.
  explicit TCorvaneX3Hardware(Corvane* driver);

  /// Reads the instrument's data, homes the wavelength drive, and goes back to the grating in use and the stored
  /// wavelength, on freshly homed coordinates. The data keep lines * nm / 1200 and no grating, and a driver starts at
  /// grating 1: after a grating of other lines its angle is found again, which is another number of nm on grating 1.
  /// Without a stored wavelength that is a finite number it stays homed. Does not throw; an instrument whose data
  /// cannot be read is left where it is, and its operations then fail one by one.
  void Initialise() override;

 private:
  Corvane* mDriver;
};
