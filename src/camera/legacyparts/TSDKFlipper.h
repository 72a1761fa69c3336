// A flipper mirror of an older instrument. These instruments have none but the exit mirror.
#pragma once

#include "core/ISpectrographFlipper.h"

class Corvane;

/// A mirror that is not fitted and every failure throw TCorvaneException(TCorvaneException::kFailure).
class TSDKFlipper final : public ISpectrographFlipper {
 public:
  /// The driver is borrowed and outlives the component.
  TSDKFlipper(Corvane* driver, TFlipperPosition position) : mDriver(driver), mPosition(position) {}

  /// Never for the entrance side.
  bool IsPresent() override;
  int GetPort() override;
  void SetFlipperPort(TPortPosition port) override;
  void Reset() override;
  bool GetCCDLimits(TPortPosition port, float& low, float& high) override;

 private:
  Corvane* mDriver;
  TFlipperPosition mPosition;
};
