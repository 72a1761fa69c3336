// The flipper mirror at the entrance or the exit of a controller instrument. It keeps the device's step turret informed
// of the port chosen, since the detector offset depends on it.
//
// Failures throw TCorvaneException: kFailure where the mirror is not fitted (two questions to the controller, the
// second only when the first said yes), else the controller's code, merak::kIoError for a reply without a number.
#pragma once

#include "core/ISpectrographFlipper.h"
#include "core/TCVNAcquisitionAborter.h"

class TCorvaneMerakStepTurret;
class TMerakOrbis;

class TCorvaneMerakFlipper final : public ISpectrographFlipper {
 public:
  /// Thrown where a detector is asked about and there is no place for one.
  static constexpr int kNoDetectorThere = -1;

  /// Controller and turret are borrowed and outlive the component. Position 1 is the exit, any other the entrance.
  TCorvaneMerakFlipper(TMerakOrbis& controller, TCorvaneMerakStepTurret& stepTurret, TFlipperPosition position)
      : mController(controller), mStepTurret(stepTurret), mExit(position == kFlipperPosition1) {}

  /// Both of the mirror's ports are in the controller's peripheral list; false when it cannot be had.
  bool IsPresent() override;
  /// 0 or 1. "EXITPORT?" or "ENTRANCEPORT?".
  int GetPort() override;
  /// "EXITPORT" or "ENTRANCEPORT" with 1 for port 1 and 0 for any other. Busy meanwhile. The step turret goes by the
  /// new port even if the controller refused it.
  void SetFlipperPort(TPortPosition port) override;
  /// Port 1.
  void Reset() override;
  /// Fixed ranges, deliberately not the instrument's: 180 to 1000 nm and true for port 0, else 0 to 2000 nm and false.
  /// Throws kNoDetectorThere for the entrance mirror.
  bool GetCCDLimits(TPortPosition port, float& low, float& high) override;

 private:
  static int PortPositionToMerakPort(TPortPosition port) { return port == kPortPosition1 ? 1 : 0; }

  TMerakOrbis& mController;
  TCorvaneMerakStepTurret& mStepTurret;
  bool mExit;
  TCVNAcquisitionAborter mAborter{false};
};
