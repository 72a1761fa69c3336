// The centre wavelength of a controller instrument, driven by the controller's firmware or by the device's step
// turret, as the EEPROM's wave-to-steps flag says at each call. It observes the grating: what changes there changes
// here. Failures throw TCorvaneException with the controller's code.
#pragma once

#include "components/TMCorvaneWaveStrategyBuiltIn.h"
#include "core/ISpectrographWavelength.h"
#include "core/TCVNAcquisitionAborter.h"

class TCorvaneMerakGrating;
class TMerakOrbis;
class TMerakSpectrographDevice;

class TMerakWavelength final : public ISpectrographWavelength, public TDeviceClient {
 public:
  /// Both are borrowed and outlive the component.
  TMerakWavelength(TMerakSpectrographDevice& device, TCorvaneMerakGrating& grating);
  ~TMerakWavelength() override;
  TMerakWavelength(const TMerakWavelength&) = delete;
  TMerakWavelength& operator=(const TMerakWavelength&) = delete;

  void SetWavelength(float nm) override;
  float GetWavelength() override;
  void GotoZeroOrder() override;
  /// True at exactly 0 nm.
  bool AtZeroOrder() override;
  void GetDispersion(float& low, float& high) override;
  /// A fixed span of 100 nm around the centre, whatever the detector.
  void GetDispersionFor(float centre, float& low, float& high, int detector) override;
  /// The same span, cut in steps of 512 pixels, so coarse that most windows answer the whole of it.
  void GetDispersionAt(float centre, float& low, float& high, int detector, int first, int last) override;
  /// 0 to the grating's greatest wavelength. A grating outside the EEPROM's tables throws kFailure.
  void GetWavelengthLimits(int grating, float& min, float& max) override;
  /// Steps are not to be had on this path.
  int GetCurrentWaveStepPosition() override { return corvane::kNoStepPosition; }

  /// The grating changed: tells the clients of the wavelength.
  void ServerChanged(TDeviceServer* server);
  void OnStateChanged(TDeviceServer* server) override { ServerChanged(server); }

 private:
  TMCorvaneWaveStrategy& Strategy();

  TMerakSpectrographDevice& mDevice;
  TMerakOrbis& mController;
  TCorvaneMerakGrating& mGrating;
  TMCorvaneWaveStrategyBuiltIn mBuiltIn;
  TCVNAcquisitionAborter mAborter{false};
};
