// The I2C bus of a camera, driven through the camera SDK. Translates the SDK's status into the bridge's own codes;
// probes and retries nothing.
#pragma once

#include "camera/TI2CInterface.h"

/// Operations answer kSuccess, kBusFailure where the SDK reports that the bus did not answer, else kOtherFailure.
class TSDKI2CInterface final : public TI2CInterface {
 public:
  static constexpr unsigned int kSuccess = 0;
  static constexpr unsigned int kOtherFailure = 1;
  static constexpr unsigned int kBusFailure = 3;
  /// Longest BurstWrite; longer ones, and those of no byte, fail without a call of the SDK.
  static constexpr long kMaximumBurst = 65'536;

  using TWrite = unsigned int (*)(unsigned char address, unsigned char reg, unsigned char data);
  using TRead = unsigned int (*)(unsigned char address, unsigned char reg, unsigned char* data);
  using TBurst = unsigned int (*)(unsigned char address, long count, unsigned char* data);

  /// Entry points of a camera SDK, which must stay loaded for this object's life.
  struct TEntryPoints {
    TWrite write = nullptr;
    TRead read = nullptr;
    TBurst burstWrite = nullptr;
    TBurst burstRead = nullptr;
  };

  explicit TSDKI2CInterface(const TEntryPoints& entryPoints);

  unsigned int Write(unsigned char address, unsigned char reg, unsigned char data) override;
  unsigned int Read(unsigned char address, unsigned char reg, unsigned char* data) override;
  unsigned int BurstWrite(unsigned char address, long count, const unsigned char* data) override;
  unsigned int BurstRead(unsigned char address, long count, unsigned char* data) override;

 private:
  TEntryPoints mEntryPoints;
};
