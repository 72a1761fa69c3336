#include "components/TCorvaneMerakFlipper.h"

#include "components/MerakOperation.h"
#include "components/TCorvaneMerakStepTurret.h"
#include "controller/TMerakOrbis.h"
#include "core/PortLimits.h"

bool TCorvaneMerakFlipper::IsPresent() {
  // The direct and the side port.
  return corvane::ListCoversTag(mAborter, mController, mExit ? "EPD" : "IPD") &&
         corvane::ListCoversTag(mAborter, mController, mExit ? "EPS" : "IPS");
}

int TCorvaneMerakFlipper::GetPort() {
  corvane::RequirePresent(*this);
  const int port = corvane::ReadNumber(mAborter, [this](int& given) {
    return mExit ? mController.GetExitPort(given) : mController.GetEntrancePort(given);
  });
  return port != 0 ? 1 : 0;
}

void TCorvaneMerakFlipper::SetFlipperPort(TPortPosition port) {
  corvane::RequirePresent(*this);
  const int number = PortPositionToMerakPort(port);
  corvane::RunBusy(mAborter, *this, [&] {
    MerakResult result = merak::kSuccess;
    if (mExit) {
      result = mController.SetExitPort(number);
      mStepTurret.SetCurrentExitPort(number);
    } else {
      result = mController.SetEntrancePort(number);
      mStepTurret.SetCurrentEntrancePort(number);
    }
    return result;
  });
}

void TCorvaneMerakFlipper::Reset() {
  SetFlipperPort(kPortPosition1);
}

bool TCorvaneMerakFlipper::GetCCDLimits(TPortPosition port, float& low, float& high) {
  corvane::RequirePresent(*this);
  if (!mExit) {
    throw TCorvaneException(kNoDetectorThere);
  }
  const corvane::PortLimits& limits = port == kPortPosition0 ? corvane::kDirectPort : corvane::kSidePort;
  low = limits.low;
  high = limits.high;
  return limits.limited;
}
