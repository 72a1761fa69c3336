// A spectrograph that only exists in memory, with what a calibration asks of it: at 550 nm on grating 1 (from 0), which
// has 600 lines per mm, the others none.
#pragma once

#include <memory>

#include "core/TSpectrographHardware.h"

class FakeWavelength final : public ISpectrographWavelength {
 public:
  void SetWavelength(float nm) override { mNm = nm; }
  float GetWavelength() override { return mNm; }
  void GotoZeroOrder() override {}
  bool AtZeroOrder() override { return false; }
  void GetDispersion(float&, float&) override {}
  void GetDispersionFor(float, float&, float&, int) override {}
  void GetDispersionAt(float, float&, float&, int, int, int) override {}
  void GetWavelengthLimits(int, float&, float&) override {}
  int GetCurrentWaveStepPosition() override { return corvane::kNoStepPosition; }

 private:
  float mNm = 550.0F;
};

class FakeGrating final : public ISpectrographGrating {
 public:
  void SetGrating(int grating) override { mGrating = grating; }
  int GetGrating() override { return mGrating; }
  void Reset() override {}
  void UnsafeReset() override {}
  int GetNumberGratings() override { return 2; }
  void GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) override {
    lines = grating == 1 ? 600.0F : 0.0F;
    blaze = "500";
    home = offset = 0.0F;
  }
  void SetDetectorOffset(int, int, int) override {}
  int GetDetectorOffset(int, int) override { return 0; }
  void SetDetectorOffset(int) override {}
  int GetDetectorOffset() override { return 0; }
  void SetGratingOffset(int, int) override {}
  int GetGratingOffset(int) override { return 0; }
  void GratingOffsetAutoAdjust() override {}
  void GratingOffsetCancelAutoAdjust() override {}
  void SetTurret(int) override {}
  int GetTurret() override { return 0; }

 private:
  int mGrating = 1;
};

class FakeEeprom final : public ISpectrographEEPROM {
 public:
  int GetNumberGratings() override { return 2; }
  void GetGratingInfoEx(int, float&, const char*&, float&, float&) override {}
  void GetGratingInfo(int, float&, const char*&) override {}
  void GetOpticalParams(float& focalLength, float& angularDeviation, float& focalTilt) override {
    focalLength = 0.328F;
    angularDeviation = 15.2F;
    focalTilt = 3.3F;
  }
};

class FakeHardware final : public TSpectrographHardware {
 public:
  FakeHardware() {
    mWavelength = std::make_unique<FakeWavelength>();
    mGrating = std::make_unique<FakeGrating>();
    mEeprom = std::make_unique<FakeEeprom>();
  }
  void Initialise() override {}
};
