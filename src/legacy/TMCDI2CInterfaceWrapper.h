// Gives the older instruments' driver the camera SDK's status codes over a bus that answers 0 for success.
#pragma once

#include "camera/TI2CInterface.h"
#include "legacy/LegacyResult.h"

class TMCDI2CInterfaceWrapper final : public TI2CInterface {
 public:
  static constexpr unsigned int kSuccess = corvane::legacy::kBusSuccess;
  static constexpr unsigned int kFailure = 20081;

  /// The wrapped bus is borrowed; without one every operation fails.
  explicit TMCDI2CInterfaceWrapper(TI2CInterface* wrapped = nullptr);
  void SetInterface(TI2CInterface* wrapped) { mWrapped = wrapped; }

  /// Each forwards its arguments and answers kSuccess when the wrapped bus answered 0, else kFailure whatever the code.
  unsigned int Write(unsigned char address, unsigned char reg, unsigned char data) override;
  unsigned int Read(unsigned char address, unsigned char reg, unsigned char* data) override;
  unsigned int BurstWrite(unsigned char address, long count, const unsigned char* data) override;
  unsigned int BurstRead(unsigned char address, long count, unsigned char* data) override;

 private:
  TI2CInterface* mWrapped;
};
