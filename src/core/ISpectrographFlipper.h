// A flipper mirror that chooses the entrance or exit port. Operations that cannot be carried out throw
// TCorvaneException.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographFlipper : public TBusyDeviceServer {
 public:
  /// Flipper number of the exported functions (1, 2) less one: 0 is the entrance side, 1 the exit side.
  enum TFlipperPosition : int { kFlipperPosition0 = 0, kFlipperPosition1 = 1 };
  /// 0 direct, 1 side.
  enum TPortPosition : int { kPortPosition0 = 0, kPortPosition1 = 1 };
  static constexpr int kPositions = 2;
  static constexpr int kPorts = 2;

  virtual int GetPort() = 0;
  virtual void SetFlipperPort(TPortPosition port) = 0;
  virtual void Reset() = 0;
  /// Wavelength range (nm) that a detector behind the port may see; true for port 0.
  virtual bool GetCCDLimits(TPortPosition port, float& low, float& high) = 0;
};
