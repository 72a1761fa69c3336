// Exported functions of the slits. The short forms (CorvaneSetSlit, CorvaneSetOutputSlit, ...) are the auto-slit
// functions for a fixed slit; their later arguments move up one place, so a bad width is the second argument there.
#include <array>
#include <cstddef>
#include <string>

#include "api/ApiFrame.h"
#include "api/IndexMapping.h"
#include "api/LibraryState.h"
#include "core/discovery/TSpectrographList.h"
#include "legacy/Corvane.h"
#include "platform/TivanStrings.h"

using corvane::ApiCall;
using corvane::Argument;
using corvane::RequireNotNull;

namespace {

constexpr int kEntranceSlit = 1;
constexpr int kOutputSlit = 3;
constexpr const char* kWideSlitMode = "SLIT-I24";
constexpr const char* kUnknownMode = "SLIT";

ApiCall AutoSlitCall(int device, int slit) {
  ApiCall call(device);
  call.Require(corvane::SlitKnown(slit), Argument::kSecond);
  return call;
}

/// Runs body(ISpectrographSlit&); a slit that is not fitted is a failure.
template <typename Body>
ApiCall& OnSlit(ApiCall& call, int slit, Body&& body) {
  return call.OnHardware([&](TSpectrographHardware& hardware) {
    body(RequireNotNull(hardware.GetSlitInterface(SDKSlitIndexToSlitPosition(slit))));
  });
}

/// The slit's mode text, "SLIT" where it has none (older firmware).
std::string ModeOf(ISpectrographSlit& slit) {
  try {
    const char* mode = slit.GetSlitMode();
    return mode != nullptr ? mode : kUnknownMode;
  } catch (...) {
    return kUnknownMode;
  }
}

unsigned int SetWidth(ApiCall call, int slit, float width, Argument widthArgument) {
  call.Require(width >= CORVANE_MIN_SLIT_WIDTH && width <= CORVANE_MAX_WIDE_SLIT_WIDTH, widthArgument);
  std::string mode;
  OnSlit(call, slit, [&](ISpectrographSlit& component) { mode = ModeOf(component); });
  // Only one type of slit opens beyond the common range.
  call.Require(width <= CORVANE_MAX_SLIT_WIDTH || stricmp(mode.c_str(), kWideSlitMode) == 0, widthArgument);
  return OnSlit(call, slit, [&](ISpectrographSlit& component) { component.SetSlit(width); }).Status();
}

unsigned int GetWidth(ApiCall call, int slit, float* width, Argument widthArgument) {
  float value = 0.0F;
  call.Require(width != nullptr, widthArgument);
  return OnSlit(call, slit, [&](ISpectrographSlit& component) { value = component.GetSlit(); })
      .Store(width, value)
      .Status();
}

unsigned int Reset(ApiCall call, int slit) {
  return OnSlit(call, slit, [](ISpectrographSlit& component) { component.Reset(); }).Status();
}

unsigned int IsPresent(ApiCall call, int slit, int* present, Argument presentArgument) {
  int value = 0;
  return call.Require(present != nullptr, presentArgument)
      .OnHardware([&](TSpectrographHardware& hardware) {
        ISpectrographSlit* component = hardware.GetSlitInterface(SDKSlitIndexToSlitPosition(slit));
        value = component != nullptr && component->IsPresent() ? 1 : 0;
      })
      .Store(present, value)
      .Status();
}

/// Runs body(Corvane&), which answers a driver result. Width coefficients exist in older instruments only; a controller
/// keeps its own calibration. Not guarded: the driver does not throw.
template <typename Body>
unsigned int OnDriver(const ApiCall& call, int device, Body&& body) {
  if (!call.Good()) {
    return call.Status();
  }
  if (pCorvaneList == nullptr) {
    return CORVANE_COMMUNICATION_ERROR;
  }
  Corvane* driver = pCorvaneList->GetRawCorvane(device);
  if (driver == nullptr) {
    return CORVANE_NO_LEGACY_DRIVER;
  }
  return body(*driver) == Corvane::kSuccess ? CORVANE_SUCCESS : CORVANE_COMMUNICATION_ERROR;
}

unsigned int SetCoefficients(const ApiCall& call, int device, int x1, int y1, int x2, int y2) {
  return OnDriver(call, device, [=](Corvane& driver) { return driver.WriteSlitCoefficients(x1, y1, x2, y2); });
}

unsigned int GetCoefficients(const ApiCall& call, int device, const std::array<int*, 4>& outputs) {
  std::array<int, 4> values{};
  const unsigned int status = OnDriver(call, device, [&values](Corvane& driver) {
    return driver.ReadSlitCoefficients(values[0], values[1], values[2], values[3]);
  });
  for (std::size_t i = 0; status == CORVANE_SUCCESS && i < values.size(); ++i) {
    corvane::StoreResult(outputs[i], values[i]);
  }
  return status;
}

ApiCall CoefficientCall(int device, int slit) {
  ApiCall call(device);
  call.Require(slit == kEntranceSlit, Argument::kSecond);
  return call;
}

}  // namespace

unsigned int CorvaneSetAutoSlitWidth(int device, int slit, float width) {
  return SetWidth(AutoSlitCall(device, slit), slit, width, Argument::kThird);
}

unsigned int CorvaneGetAutoSlitWidth(int device, int slit, float* width) {
  return GetWidth(AutoSlitCall(device, slit), slit, width, Argument::kThird);
}

unsigned int CorvaneAutoSlitReset(int device, int slit) {
  return Reset(AutoSlitCall(device, slit), slit);
}

unsigned int CorvaneAutoSlitIsPresent(int device, int slit, int* present) {
  return IsPresent(AutoSlitCall(device, slit), slit, present, Argument::kThird);
}

unsigned int CorvaneSetAutoSlitCoefficients(int device, int slit, int x1, int y1, int x2, int y2) {
  return SetCoefficients(CoefficientCall(device, slit), device, x1, y1, x2, y2);
}

unsigned int CorvaneGetAutoSlitCoefficients(int device, int slit, int* x1, int* y1, int* x2, int* y2) {
  return GetCoefficients(CoefficientCall(device, slit), device, {x1, y1, x2, y2});
}

unsigned int CorvaneSetSlit(int device, float width) {
  return SetWidth(ApiCall(device), kEntranceSlit, width, Argument::kSecond);
}

unsigned int CorvaneGetSlit(int device, float* width) {
  return GetWidth(ApiCall(device), kEntranceSlit, width, Argument::kSecond);
}

unsigned int CorvaneSlitReset(int device) {
  return Reset(ApiCall(device), kEntranceSlit);
}

unsigned int CorvaneSlitIsPresent(int device, int* present) {
  return IsPresent(ApiCall(device), kEntranceSlit, present, Argument::kSecond);
}

unsigned int CorvaneSetSlitCoefficients(int device, int x1, int y1, int x2, int y2) {
  return SetCoefficients(ApiCall(device), device, x1, y1, x2, y2);
}

unsigned int CorvaneGetSlitCoefficients(int device, int* x1, int* y1, int* x2, int* y2) {
  return GetCoefficients(ApiCall(device), device, {x1, y1, x2, y2});
}

unsigned int CorvaneSetOutputSlit(int device, float width) {
  return SetWidth(ApiCall(device), kOutputSlit, width, Argument::kSecond);
}

unsigned int CorvaneGetOutputSlit(int device, float* width) {
  return GetWidth(ApiCall(device), kOutputSlit, width, Argument::kSecond);
}

unsigned int CorvaneOutputSlitReset(int device) {
  return Reset(ApiCall(device), kOutputSlit);
}

unsigned int CorvaneOutputSlitIsPresent(int device, int* present) {
  return IsPresent(ApiCall(device), kOutputSlit, present, Argument::kSecond);
}
