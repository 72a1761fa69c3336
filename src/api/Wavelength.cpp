// Exported functions of the wavelength drive.
#include "api/ApiFrame.h"

using corvane::ApiCall;
using corvane::Argument;
using corvane::StoreResult;

namespace {

constexpr auto kWavelength = &TSpectrographHardware::GetWavelengthInterface;

}  // namespace

unsigned int CorvaneSetWavelength(int device, float wavelength) {
  ApiCall call(device);
  int grating = 0;
  float min = 0.0F;
  float max = 0.0F;
  if (call.Good()) {
    call.RequireSuccess(CorvaneGetGrating(device, &grating));
  }
  if (call.Good()) {
    call.RequireSuccess(CorvaneGetWavelengthLimits(device, grating, &min, &max));
  }
  return call.Require(wavelength >= min && wavelength <= max, Argument::kSecond)
      .On(kWavelength, [&](ISpectrographWavelength& drive) { drive.SetWavelength(wavelength); })
      .Status();
}

unsigned int CorvaneGetWavelength(int device, float* wavelength) {
  ApiCall call(device);
  if (!call.Good()) {
    return call.Status();
  }
  // Unlike every other function, a failure writes the output: 0.
  float value = 0.0F;
  call.On(kWavelength, [&](ISpectrographWavelength& drive) { value = drive.GetWavelength(); });
  StoreResult(wavelength, value);
  return call.Status();
}

unsigned int CorvaneGotoZeroOrder(int device) {
  return ApiCall(device).On(kWavelength, [](ISpectrographWavelength& drive) { drive.GotoZeroOrder(); }).Status();
}

unsigned int CorvaneAtZeroOrder(int device, int* atZero) {
  StoreResult(atZero, 0);
  int value = 0;
  return ApiCall(device)
      .On(kWavelength, [&](ISpectrographWavelength& drive) { value = drive.AtZeroOrder() ? 1 : 0; })
      .Store(atZero, value)
      .Status();
}

unsigned int CorvaneGetDispersion(int device, float* a, float* b) {
  float low = 0.0F;
  float high = 0.0F;
  return ApiCall(device)
      .On(kWavelength, [&](ISpectrographWavelength& drive) { drive.GetDispersion(low, high); })
      .Store(a, low)
      .Store(b, high)
      .Status();
}

unsigned int CorvaneGetDispersionFor(int device, float wavelength, float* a, float* b, int index) {
  // Any index is passed on, the smallest too: counted down in unsigned arithmetic.
  const int detector = static_cast<int>(static_cast<unsigned int>(index) - 1U);
  float low = 0.0F;
  float high = 0.0F;
  return ApiCall(device)
      .On(kWavelength, [&](ISpectrographWavelength& drive) { drive.GetDispersionFor(wavelength, low, high, detector); })
      .Store(a, low)
      .Store(b, high)
      .Status();
}

unsigned int CorvaneGetWavelengthLimits(int device, int grating, float* min, float* max) {
  float low = 0.0F;
  float high = 0.0F;
  return ApiCall(device)
      .RequireGrating(grating)
      .On(kWavelength, [&](ISpectrographWavelength& drive) { drive.GetWavelengthLimits(grating - 1, low, high); })
      .Store(min, low)
      .Store(max, high)
      .Status();
}

unsigned int CorvaneWavelengthIsPresent(int device, int* present) {
  StoreResult(present, 0);
  int value = 0;
  return ApiCall(device)
      .On(kWavelength, [&](ISpectrographWavelength& drive) { value = drive.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}
