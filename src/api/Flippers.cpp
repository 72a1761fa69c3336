// Exported functions of the flipper mirrors. The short forms (CorvaneSetPort, ...) are those of the exit mirror; their
// later arguments move up one place.
#include "api/ApiFrame.h"
#include "api/IndexMapping.h"

using corvane::ApiCall;
using corvane::Argument;
using corvane::RequireNotNull;

namespace {

constexpr int kExitFlipper = 2;

ApiCall FlipperCall(int device, int flipper) {
  ApiCall call(device);
  call.Require(corvane::FlipperKnown(flipper), Argument::kSecond);
  return call;
}

/// Runs body(ISpectrographFlipper&); a mirror that is not fitted is a failure.
template <typename Body>
ApiCall& OnFlipper(ApiCall& call, int flipper, Body&& body) {
  return call.OnHardware([&](TSpectrographHardware& hardware) {
    body(RequireNotNull(hardware.GetFlipperInterface(SDKFlipperIndexToFlipperPosition(flipper))));
  });
}

unsigned int SetPort(ApiCall call, int flipper, int port, Argument portArgument) {
  call.Require(corvane::PortKnown(port), portArgument);
  return OnFlipper(call, flipper,
                   [&](ISpectrographFlipper& mirror) { mirror.SetFlipperPort(SDKPortIndexToPortPosition(port)); })
      .Status();
}

unsigned int GetPort(ApiCall call, int flipper, int* port, Argument portArgument) {
  int value = 0;
  call.Require(port != nullptr, portArgument);
  return OnFlipper(call, flipper, [&](ISpectrographFlipper& mirror) { value = mirror.GetPort(); })
      .Store(port, value)
      .Status();
}

unsigned int Reset(ApiCall call, int flipper) {
  return OnFlipper(call, flipper, [](ISpectrographFlipper& mirror) { mirror.Reset(); }).Status();
}

unsigned int IsPresent(ApiCall call, int flipper, int* present, Argument presentArgument) {
  int value = 0;
  call.Require(present != nullptr, presentArgument);
  return OnFlipper(call, flipper, [&](ISpectrographFlipper& mirror) { value = mirror.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}

}  // namespace

unsigned int CorvaneSetFlipperMirror(int device, int flipper, int port) {
  return SetPort(FlipperCall(device, flipper), flipper, port, Argument::kThird);
}

unsigned int CorvaneGetFlipperMirror(int device, int flipper, int* port) {
  return GetPort(FlipperCall(device, flipper), flipper, port, Argument::kThird);
}

unsigned int CorvaneFlipperMirrorReset(int device, int flipper) {
  return Reset(FlipperCall(device, flipper), flipper);
}

unsigned int CorvaneFlipperMirrorIsPresent(int device, int flipper, int* present) {
  return IsPresent(FlipperCall(device, flipper), flipper, present, Argument::kThird);
}

unsigned int CorvaneGetCCDLimits(int device, int port, float* low, float* high) {
  float lowest = 0.0F;
  float highest = 0.0F;
  ApiCall call(device);
  call.Require(corvane::PortKnown(port), Argument::kSecond)
      .Require(low != nullptr, Argument::kThird)
      .Require(high != nullptr, Argument::kFourth);
  return OnFlipper(call, kExitFlipper,
                   [&](ISpectrographFlipper& mirror) {
                     static_cast<void>(mirror.GetCCDLimits(SDKPortIndexToPortPosition(port), lowest, highest));
                   })
      .Store(low, lowest)
      .Store(high, highest)
      .Status();
}

unsigned int CorvaneSetPort(int device, int port) {
  return SetPort(ApiCall(device), kExitFlipper, port, Argument::kSecond);
}

unsigned int CorvaneGetPort(int device, int* port) {
  return GetPort(ApiCall(device), kExitFlipper, port, Argument::kSecond);
}

unsigned int CorvaneFlipperReset(int device) {
  return Reset(ApiCall(device), kExitFlipper);
}

unsigned int CorvaneFlipperIsPresent(int device, int* present) {
  return IsPresent(ApiCall(device), kExitFlipper, present, Argument::kSecond);
}
