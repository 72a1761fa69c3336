// The accessory output lines of an older instrument.
#pragma once

#include "core/ISpectrographAccessory.h"

class Corvane;

/// Without an accessory at the port, and on every failure, operations throw
/// TCorvaneException(TCorvaneException::kFailure).
class TSDKAccessory final : public ISpectrographAccessory {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKAccessory(Corvane* driver) : mDriver(driver) {}

  bool IsPresent() override;
  void SetAccessory(int line, bool state) override;
  bool GetAccessoryState(int line) override;

 private:
  Corvane* mDriver;
};
