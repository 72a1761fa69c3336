// The optical constants of an older instrument. Its grating data come from the grating component.
#pragma once

#include "core/ISpectrographEEPROM.h"

class Corvane;

class TSDKEeprom final : public ISpectrographEEPROM {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKEeprom(Corvane* driver) : mDriver(driver) {}

  /// 0, and the two below leave their outputs alone, deliberately.
  int GetNumberGratings() override { return 0; }
  void GetGratingInfoEx(int grating, float& lines, const char*& blaze, float& home, float& offset) override;
  void GetGratingInfo(int grating, float& lines, const char*& blaze) override;
  /// Throws TCorvaneException(TCorvaneException::kFailure) when the instrument cannot be read.
  void GetOpticalParams(float& focalLength, float& angularDeviation, float& focalTilt) override;

 private:
  Corvane* mDriver;
};
