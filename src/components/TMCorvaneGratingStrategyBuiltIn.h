// Selects gratings by the controller's firmware: "GRATING" and "GRATINGHOME". Offsets are data of the EEPROM record;
// after a change the wavelength is approached anew so that the controller takes the offset in.
#pragma once

#include "components/TMCorvaneGratingStrategy.h"

class TMerakOrbis;

class TMCorvaneGratingStrategyBuiltIn final : public TMCorvaneGratingStrategy {
 public:
  /// The controller is borrowed.
  explicit TMCorvaneGratingStrategyBuiltIn(TMerakOrbis& controller) : mController(controller) {}

  MerakResult SetGrating(int grating, eWavelengthOption option) override;
  MerakResult GetGrating(int& grating) override;
  /// kSuccess whatever became of the approach and of passing the offset on; kDeviceNotOpen while there is no record.
  MerakResult SetGratingOffset(int grating, int offset) override;
  MerakResult GetGratingOffset(int grating, int& offset) override;
  MerakResult GratingOffsetAutoAdjust() override { return merak::kSuccess; }
  MerakResult GratingOffsetCancelAutoAdjust() override { return merak::kSuccess; }
  /// kSuccess whatever became of the approach, also for ports that the record does not know; kDeviceNotOpen while there
  /// is no record.
  MerakResult SetDetectorOffset(int entrance, int exit, int offset) override;
  MerakResult GetDetectorOffset(int entrance, int exit, int& offset) override;

 private:
  TMerakOrbis& mController;
};
