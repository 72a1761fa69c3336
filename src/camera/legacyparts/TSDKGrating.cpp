#include "camera/legacyparts/TSDKGrating.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

using corvane::PresentDriver;
using corvane::RunCommand;
using corvane::RunQuery;

void TSDKGrating::SetGrating(int grating) {
  RunCommand(*this, mDriver, &Corvane::SetGrating, Corvane::FromZeroBased(grating));
}

int TSDKGrating::GetGrating() {
  return RunQuery<int>(*this, mDriver, [](Corvane& driver, int& grating) { return driver.GetGrating(&grating); }) - 1;
}

void TSDKGrating::Reset() {
  RunCommand(*this, mDriver, &Corvane::ResetWavelength, true);
}

void TSDKGrating::UnsafeReset() {
  RunCommand(*this, mDriver, &Corvane::ResetWavelength, false);
}

int TSDKGrating::GetNumberGratings() {
  return RunQuery<int>(*this, mDriver, [](Corvane& driver, int& count) { return driver.GetNumberGratings(&count); });
}

void TSDKGrating::GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) {
  struct Info {
    float lines = 0.0F;
    const char* blaze = nullptr;
    float home = 0.0F;
    float offset = 0.0F;
  };
  const auto info = RunQuery<Info>(*this, mDriver, [grating](Corvane& driver, Info& value) {
    return driver.GetGratingInfoEx(grating, &value.lines, &value.blaze, &value.home, &value.offset);
  });
  lines = info.lines;
  blaze = info.blaze;
  home = info.home;
  offset = info.offset;
}

void TSDKGrating::SetDetectorOffset(int entrance, int exit, int offset) {
  RunCommand(*this, mDriver, [=](Corvane& driver) { return driver.ModifyDetectorOffset(entrance, exit, offset); });
}

int TSDKGrating::GetDetectorOffset(int entrance, int exit) {
  return RunQuery<int>(*this, mDriver,
                       [=](Corvane& driver, int& offset) { return driver.GetDetectorOffset(entrance, exit, &offset); });
}

void TSDKGrating::SetDetectorOffset(int offset) {
  RunCommand(*this, mDriver, [=](Corvane& driver) { return driver.ModifyDetectorOffset(offset); });
}

int TSDKGrating::GetDetectorOffset() {
  return PresentDriver(*this, mDriver).HeldDetectorOffset();
}

void TSDKGrating::SetGratingOffset(int grating, int offset) {
  RunCommand(*this, mDriver, &Corvane::ModifyGratingOffset, grating, offset);
}

int TSDKGrating::GetGratingOffset(int grating) {
  return RunQuery<int>(*this, mDriver,
                       [grating](Corvane& driver, int& offset) { return driver.HeldGratingOffset(grating, &offset); });
}

void TSDKGrating::GratingOffsetAutoAdjust() {
  PresentDriver(*this, mDriver);
}

void TSDKGrating::GratingOffsetCancelAutoAdjust() {
  PresentDriver(*this, mDriver);
}

void TSDKGrating::SetTurret(int turret) {
  corvane::RunCommandUntold(*this, mDriver, &Corvane::SetTurret, Corvane::FromZeroBased(turret));
}

int TSDKGrating::GetTurret() {
  return RunQuery<int>(*this, mDriver, &Corvane::GetTurret) - 1;
}
