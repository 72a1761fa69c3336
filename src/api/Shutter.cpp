// Exported functions of the shutter.
#include "api/ApiFrame.h"

using corvane::ApiCall;
using corvane::Argument;

namespace {

constexpr auto kShutter = &TSpectrographHardware::GetShutterInterface;

bool ModeKnown(int mode) {
  return mode == 0 || mode == 1;
}

}  // namespace

unsigned int CorvaneSetShutter(int device, int mode) {
  return ApiCall(device)
      .Require(ModeKnown(mode), Argument::kSecond)
      .On(kShutter, [&](ISpectrographShutter& shutter) { shutter.SetExternalShutter(mode); })
      .Status();
}

unsigned int CorvaneGetShutter(int device, int* mode) {
  int value = 0;
  return ApiCall(device)
      .On(kShutter, [&](ISpectrographShutter& shutter) { value = shutter.GetExternalShutter(); })
      .Store(mode, value)
      .Status();
}

unsigned int CorvaneIsModePossible(int device, int mode, int* possible) {
  int value = 0;
  return ApiCall(device)
      .Require(ModeKnown(mode), Argument::kSecond)
      .On(kShutter, [&](ISpectrographShutter& shutter) { value = shutter.IsExternalModePossible(mode) ? 1 : 0; })
      .Store(possible, value)
      .Status();
}

unsigned int CorvaneLoadShutterValues(int device) {
  return ApiCall(device).On(kShutter, [](ISpectrographShutter& shutter) { shutter.LoadShutterValues(); }).Status();
}

unsigned int CorvaneExternalChange(int device) {
  return ApiCall(device).On(kShutter, [](ISpectrographShutter& shutter) { shutter.ExternalChange(); }).Status();
}

unsigned int CorvaneShutterIsPresent(int device, int* present) {
  int value = 0;
  return ApiCall(device)
      .On(kShutter, [&](ISpectrographShutter& shutter) { value = shutter.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}
