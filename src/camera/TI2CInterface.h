// A camera's I2C bus. Controllers behind a camera and older instruments are reached through it.
#pragma once

class TI2CInterface {
 public:
  virtual ~TI2CInterface() = default;
  /// Each returns 0 for success, or corvane::kTivanSuccess where an adapter passes that through; anything else is
  /// failure. address is the device address (0x58: a motion controller).
  virtual unsigned int Write(unsigned char address, unsigned char reg, unsigned char data) = 0;
  virtual unsigned int Read(unsigned char address, unsigned char reg, unsigned char* data) = 0;
  virtual unsigned int BurstWrite(unsigned char address, long count, const unsigned char* data) = 0;
  virtual unsigned int BurstRead(unsigned char address, long count, unsigned char* data) = 0;
};
