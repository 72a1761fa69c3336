// The gratings of a controller instrument. It moves nothing itself: every call goes to the controller's own grating
// selection or to the device's step turret, as the EEPROM's wave-to-steps flag says at that moment.
//
// Failures throw TCorvaneException with the controller's code, merak::kDeviceNotOpen while the controller is not open;
// what an index without a place does stands at each operation (kFailure: TCorvaneException's). Gratings, ports and
// turrets count from 0.
#pragma once

#include <array>
#include <string>

#include "components/TMCorvaneGratingStrategy.h"
#include "components/TMCorvaneGratingStrategyBuiltIn.h"
#include "core/ISpectrographGrating.h"
#include "core/TCVNAcquisitionAborter.h"

class TMerakOrbis;
class TMerakSpectrographDevice;

class TCorvaneMerakGrating final : public ISpectrographGrating {
 public:
  /// The device is borrowed and outlives the component.
  explicit TCorvaneMerakGrating(TMerakSpectrographDevice& device);

  /// Keeps the wavelength. A grating that does not exist: what the controller answers, or kFailure outside 0 to 2
  /// where the library computes the steps.
  void SetGrating(int grating) override;
  /// -1 when the controller's reply holds no number.
  int GetGrating() override;
  /// First grating, zero order.
  void Reset() override;
  void UnsafeReset() override;
  int GetNumberGratings() override;
  /// lines: per mm; home, offset: motor steps. The blaze text lasts until the next call for this grating. kFailure
  /// outside 0 to 3; a grating in that range that the record has no room for answers zeros and "".
  void GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) override;
  /// Ports other than 0 and 1: nothing is stored and nobody is told, except where the library computes the steps
  /// (merak::kInvalidParameter).
  void SetDetectorOffset(int entrance, int exit, int offset) override;
  /// 0 for ports that the record does not know.
  int GetDetectorOffset(int entrance, int exit) override;
  /// For the ports that the controller reports; a report that cannot be had throws.
  void SetDetectorOffset(int offset) override;
  int GetDetectorOffset() override;
  /// kFailure outside 0 to 3 and for a grating that the record has no room for.
  void SetGratingOffset(int grating, int offset) override;
  /// kFailure outside 0 to 3; 0 for a grating in that range that the record has no room for.
  int GetGratingOffset(int grating) override;
  void GratingOffsetAutoAdjust() override;
  void GratingOffsetCancelAutoAdjust() override;
  /// Stored in the EEPROM at once. TTivanMerakEeprom::kOutOfRange outside 0 to 2.
  void SetTurret(int turret) override;
  int GetTurret() override;

 private:
  TMCorvaneGratingStrategy& Strategy();
  void ReadPorts(int& entrance, int& exit);

  TMerakSpectrographDevice& mDevice;
  TMerakOrbis& mController;
  TMCorvaneGratingStrategyBuiltIn mBuiltIn;
  std::array<std::string, 4> mBlaze;
  TCVNAcquisitionAborter mAborter{false};
};
