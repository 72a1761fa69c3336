// Read access to the optical constants and gratings (0-based, active turret) of a controller instrument's EEPROM
// record. Failures throw TCorvaneException: merak::kDeviceNotOpen while the controller is not open, kFailure for a
// grating index outside 0 to 15.
#pragma once

#include <array>
#include <string>

#include "core/ISpectrographEEPROM.h"
#include "core/TCVNAcquisitionAborter.h"

class TMerakOrbis;

class TCorvaneMerakEeprom final : public ISpectrographEEPROM {
 public:
  /// The controller is borrowed and outlives the component.
  explicit TCorvaneMerakEeprom(TMerakOrbis& controller) : mController(controller) {}

  int GetNumberGratings() override;
  /// A blaze text is cut at 15 characters.
  void GetGratingInfoEx(int grating, float& lines, const char*& blaze, float& home, float& offset) override;
  void GetGratingInfo(int grating, float& lines, const char*& blaze) override;
  void GetOpticalParams(float& focalLength, float& angularDeviation, float& focalTilt) override;

 private:
  TMerakOrbis& mController;
  std::array<std::string, 16> mBlaze;
  TCVNAcquisitionAborter mAborter{false};
};
