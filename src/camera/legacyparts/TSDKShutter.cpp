#include "camera/legacyparts/TSDKShutter.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

using corvane::PresentDriver;

bool TSDKShutter::IsPresent() {
  return corvane::SdkPartFitted(mDriver, Corvane::kShutter);
}

void TSDKShutter::SetExternalShutter(int mode) {
  corvane::RunCommandUntold(*this, mDriver, &Corvane::SetShutter, mode);
  mMode = mode;
  StateChanged();
}

int TSDKShutter::GetExternalShutter() {
  PresentDriver(*this, mDriver);
  return mMode;
}

bool TSDKShutter::IsExternalModePossible(int mode) {
  PresentDriver(*this, mDriver);
  return mode == 0 || mode == 1;
}

void TSDKShutter::SetInternalShutter(int /*mode*/) {
  throw TCorvaneException(TCorvaneException::kFailure);
}

int TSDKShutter::GetInternalShutter() {
  throw TCorvaneException(TCorvaneException::kFailure);
}

void TSDKShutter::ExternalChange() {
  PresentDriver(*this, mDriver);
  StateChanged();
}
