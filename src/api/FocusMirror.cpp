// Exported functions of the focus mirror.
#include <cstdint>

#include "api/ApiFrame.h"

using corvane::ApiCall;
using corvane::Argument;

namespace {

constexpr auto kFocusMirror = &TSpectrographHardware::GetFocusMirrorInterface;

}  // namespace

// Not noexcept, unlike every other function: the two reads of the travel are deliberately not guarded, and what they
// throw reaches the caller.
unsigned int CorvaneSetFocusMirror(int device, int steps) {
  ISpectrographFocusMirror* mirror = nullptr;
  ApiCall call(device);
  call.On(kFocusMirror, [&](ISpectrographFocusMirror& component) { mirror = &component; });
  if (!call.Good()) {
    return call.Status();
  }
  const std::int64_t maximum = mirror->GetFocusMirrorMaxSteps();
  const std::int64_t position = mirror->GetMirrorFocus();
  return call.Require(steps >= -position && steps <= maximum - position, Argument::kSecond)
      .On(kFocusMirror, [&](ISpectrographFocusMirror& component) { component.SetMirrorFocus(steps); })
      .Status();
}

unsigned int CorvaneGetFocusMirror(int device, int* position) {
  int value = 0;
  return ApiCall(device)
      .On(kFocusMirror, [&](ISpectrographFocusMirror& mirror) { value = mirror.GetMirrorFocus(); })
      .Store(position, value)
      .Status();
}

unsigned int CorvaneGetFocusMirrorMaxSteps(int device, int* steps) {
  int value = 0;
  return ApiCall(device)
      .On(kFocusMirror, [&](ISpectrographFocusMirror& mirror) { value = mirror.GetFocusMirrorMaxSteps(); })
      .Store(steps, value)
      .Status();
}

unsigned int CorvaneFocusMirrorReset(int device) {
  return ApiCall(device).On(kFocusMirror, [](ISpectrographFocusMirror& mirror) { mirror.Reset(); }).Status();
}

unsigned int CorvaneFocusMirrorIsPresent(int device, int* present) {
  int value = 0;
  return ApiCall(device)
      .On(kFocusMirror, [&](ISpectrographFocusMirror& mirror) { value = mirror.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}
