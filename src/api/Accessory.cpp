// Exported functions of the accessory lines.
#include "api/ApiFrame.h"

using corvane::ApiCall;
using corvane::Argument;

namespace {

constexpr auto kAccessory = &TSpectrographHardware::GetAccessoryInterface;

ApiCall LineCall(int device, int line) {
  ApiCall call(device);
  call.Require(line == 1 || line == 2, Argument::kSecond);
  return call;
}

}  // namespace

unsigned int CorvaneSetAccessory(int device, int line, int state) {
  return LineCall(device, line)
      .On(kAccessory, [&](ISpectrographAccessory& accessory) { accessory.SetAccessory(line, state >= 1); })
      .Status();
}

unsigned int CorvaneGetAccessoryState(int device, int line, int* state) {
  int value = 0;
  return LineCall(device, line)
      .On(kAccessory, [&](ISpectrographAccessory& accessory) { value = accessory.GetAccessoryState(line) ? 1 : 0; })
      .Store(state, value)
      .Status();
}

unsigned int CorvaneAccessoryIsPresent(int device, int* present) {
  int value = 0;
  return ApiCall(device)
      .On(kAccessory, [&](ISpectrographAccessory& accessory) { value = accessory.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}
