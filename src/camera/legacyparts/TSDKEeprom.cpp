#include "camera/legacyparts/TSDKEeprom.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

void TSDKEeprom::GetGratingInfoEx(int /*grating*/, float& /*lines*/, const char*& /*blaze*/, float& /*home*/,
                                  float& /*offset*/) {
}

void TSDKEeprom::GetGratingInfo(int /*grating*/, float& /*lines*/, const char*& /*blaze*/) {
}

void TSDKEeprom::GetOpticalParams(float& focalLength, float& angularDeviation, float& focalTilt) {
  corvane::ThrowOnDriverFailure(
      corvane::PresentDriver(*this, mDriver).GetOpticalParams(&focalLength, &angularDeviation, &focalTilt));
}
