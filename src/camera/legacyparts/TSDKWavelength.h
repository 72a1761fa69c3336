// The centre wavelength of an older instrument.
#pragma once

#include "core/ISpectrographWavelength.h"

class Corvane;

/// Always present. Failures throw TCorvaneException(TCorvaneException::kFailure).
class TSDKWavelength final : public ISpectrographWavelength {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKWavelength(Corvane* driver) : mDriver(driver) {}

  void SetWavelength(float nm) override;
  float GetWavelength() override;
  /// Of the grating in use.
  void GotoZeroOrder() override;
  bool AtZeroOrder() override;
  void GetDispersion(float& low, float& high) override;
  /// The fixed span that controller instruments report too.
  void GetDispersionFor(float centre, float& low, float& high, int detector) override;
  void GetDispersionAt(float centre, float& low, float& high, int detector, int first, int last) override;
  void GetWavelengthLimits(int grating, float& min, float& max) override;
  int GetCurrentWaveStepPosition() override;

 private:
  Corvane* mDriver;
};
