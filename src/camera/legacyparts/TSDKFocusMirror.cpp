#include "camera/legacyparts/TSDKFocusMirror.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

using corvane::RunCommand;
using corvane::RunQuery;

bool TSDKFocusMirror::IsPresent() {
  return corvane::SdkPartFitted(mDriver, Corvane::kFocusMirror);
}

void TSDKFocusMirror::SetMirrorFocus(int steps) {
  RunCommand(*this, mDriver, &Corvane::SetMirrorFocus, steps);
}

int TSDKFocusMirror::GetMirrorFocus() {
  return RunQuery<int>(*this, mDriver, [](Corvane& driver, int& steps) { return driver.GetMirrorFocus(&steps); });
}

int TSDKFocusMirror::GetFocusMirrorMaxSteps() {
  return RunQuery<int>(*this, mDriver,
                       [](Corvane& driver, int& steps) { return driver.GetFocusMirrorMaxSteps(&steps); });
}

void TSDKFocusMirror::Reset() {
  RunCommand(*this, mDriver, &Corvane::ResetFocusMirror);
}
