#include "api/ApiFrame.h"

#include "api/LibraryState.h"
#include "core/discovery/TSpectrographList.h"

namespace corvane {
namespace {

unsigned int FrameStatus(int device) {
  if (gbCorvInitialized != 1) {
    return CORVANE_NOT_INITIALIZED;
  }
  return validDeviceNumber(device) ? CORVANE_SUCCESS : CORVANE_P1_INVALID;
}

}  // namespace

ApiCall::ApiCall(int device) : mDevice(device), mStatus(FrameStatus(device)) {
}

ApiCall& ApiCall::RequireGrating(int grating, Argument argument) {
  int count = 0;
  if (Good()) {
    RequireSuccess(CorvaneGetNumberGratings(mDevice, &count));
  }
  return Require(grating >= 1 && grating <= count, argument);
}

TSpectrographHardware& ApiCall::Hardware() const {
  // A failed search leaves the earlier flag and count but no list.
  return RequireNotNull(RequireNotNull(pCorvaneList).GetDevice(mDevice));
}

TCalibration& ApiCall::Calibration() const {
  return RequireNotNull(RequireNotNull(pCorvaneList).GetCalibration(mDevice));
}

}  // namespace corvane
