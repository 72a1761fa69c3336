// The transport to a controller on a camera's I2C bus. The bus has no time-outs: the camera SDK holds a transfer until
// the controller is ready, and a read that finds no data fails at once.
#pragma once

#include "controller/TMerakControl.h"

class TI2CInterface;

class TMerakControlI2C final : public TMerakControl {
 public:
  /// The bus is borrowed and may be null; without it every transfer gives FT_IO_ERROR.
  explicit TMerakControlI2C(TI2CInterface* i2c) : mI2C(i2c) {}

  /// Asks the bus for 15 bytes; true when a controller answers that data follows.
  bool IsAvailable() override;
  Status ListDevices(void* arg1, void* arg2, unsigned int flags) override;
  Status Open(int index) override;
  Status Close() override;
  /// count bytes of the controller's output. received: the bytes before the first carriage return, which is stored all
  /// the same. FT_IO_ERROR, leaving the buffer alone, when the bus fails or the controller has nothing.
  Status Read(void* buffer, unsigned int count, unsigned int* received) override;
  /// Discards what is left of an earlier reply, then sends the bytes in one burst.
  Status Write(const void* buffer, unsigned int count, unsigned int* written) override;
  Status SetTimeouts(unsigned int readTimeoutMs, unsigned int writeTimeoutMs) override;
  Status Purge(unsigned int mask) override;

 private:
  Status Receive(unsigned char* buffer, unsigned int count, unsigned int& received);
  Status Transmit(const unsigned char* data, unsigned int count, unsigned int& written);
  void ClearReceiveBuffer();

  TI2CInterface* mI2C;
};
