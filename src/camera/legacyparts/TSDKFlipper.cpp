#include "camera/legacyparts/TSDKFlipper.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

using corvane::RunCommand;
using corvane::RunQuery;

bool TSDKFlipper::IsPresent() {
  return mPosition == kFlipperPosition1 && corvane::SdkPartFitted(mDriver, Corvane::kFlipperMirror);
}

// The driver's mirror is set while the light goes to port 0.

int TSDKFlipper::GetPort() {
  return RunQuery<bool>(*this, mDriver, &Corvane::GetMirrorPosition) ? kPortPosition0 : kPortPosition1;
}

void TSDKFlipper::SetFlipperPort(TPortPosition port) {
  RunCommand(*this, mDriver, &Corvane::SetMirrorPosition, port == kPortPosition0);
}

void TSDKFlipper::Reset() {
  RunCommand(*this, mDriver, &Corvane::ResetMirror);
}

bool TSDKFlipper::GetCCDLimits(TPortPosition port, float& low, float& high) {
  struct Limits {
    float low = 0.0F;
    float high = 0.0F;
    bool limited = false;
  };
  const auto limits = RunQuery<Limits>(*this, mDriver, [port](Corvane& driver, Limits& value) {
    return driver.GetPortCCDLimits(port == kPortPosition0, value.low, value.high, value.limited);
  });
  low = limits.low;
  high = limits.high;
  return limits.limited;
}
