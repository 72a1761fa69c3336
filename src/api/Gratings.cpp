// Exported functions of the grating turret, its offsets and the detector offsets.
#include <algorithm>
#include <cstddef>
#include <string_view>

#include "api/ApiFrame.h"
#include "components/optics/Truncation.h"

using corvane::ApiCall;
using corvane::Argument;

namespace {

constexpr auto kGrating = &TSpectrographHardware::GetGratingInterface;
constexpr int kMaxTurrets = 3;

void StoreText(char* output, const char* text) {
  if (output == nullptr) {
    return;
  }
  const std::string_view whole = text != nullptr ? text : "";
  const std::size_t length = std::min<std::size_t>(whole.size(), CORVANE_BLAZE_LENGTH - 1);
  std::copy_n(whole.begin(), length, output);
  output[length] = '\0';
}

bool IsWithin(int offset, int limit) {
  return offset >= -limit && offset <= limit;
}

bool DetectorOffsetAllowed(int offset) {
  return IsWithin(offset, CORVANE_MAX_DETECTOR_OFFSET);
}

unsigned int SetDetectorOffset(int device, int entrance, int exit, int offset) {
  return ApiCall(device)
      .Require(DetectorOffsetAllowed(offset), Argument::kSecond)
      .On(kGrating, [&](ISpectrographGrating& grating) { grating.SetDetectorOffset(entrance, exit, offset); })
      .Status();
}

unsigned int GetDetectorOffset(int device, int entrance, int exit, int* offset) {
  int value = 0;
  return ApiCall(device)
      .On(kGrating, [&](ISpectrographGrating& grating) { value = grating.GetDetectorOffset(entrance, exit); })
      .Store(offset, value)
      .Status();
}

unsigned int ResetDrive(int device) {
  return ApiCall(device).On(kGrating, [](ISpectrographGrating& grating) { grating.Reset(); }).Status();
}

/// Communication errors of the two ...Ex functions count as success.
unsigned int IgnoringFailure(const ApiCall& call) {
  const unsigned int status = call.Status();
  return status == CORVANE_COMMUNICATION_ERROR ? static_cast<unsigned int>(CORVANE_SUCCESS) : status;
}

}  // namespace

unsigned int CorvaneSetGrating(int device, int grating) {
  return ApiCall(device)
      .RequireGrating(grating)
      .On(kGrating, [&](ISpectrographGrating& turret) { turret.SetGrating(grating - 1); })
      .Status();
}

unsigned int CorvaneGetGrating(int device, int* grating) {
  int value = 0;
  return ApiCall(device)
      .On(kGrating, [&](ISpectrographGrating& turret) { value = turret.GetGrating() + 1; })
      .Store(grating, value)
      .Status();
}

unsigned int CorvaneGetNumberGratings(int device, int* count) {
  int value = 0;
  return ApiCall(device)
      .On(kGrating, [&](ISpectrographGrating& turret) { value = turret.GetNumberGratings(); })
      .Store(count, value)
      .Status();
}

unsigned int CorvaneGetGratingInfo(int device, int grating, float* lines, char* blaze, int* home, int* offset) {
  float lineDensity = 0.0F;
  const char* blazeText = nullptr;
  float homeSteps = 0.0F;
  float offsetSteps = 0.0F;
  ApiCall call(device);
  call.RequireGrating(grating)
      .On(kGrating,
          [&](ISpectrographGrating& turret) {
            turret.GetGratingInfo(grating - 1, lineDensity, blazeText, homeSteps, offsetSteps);
          })
      .Store(lines, lineDensity)
      .Store(home, corvane::Truncated(homeSteps))
      .Store(offset, corvane::Truncated(offsetSteps));
  if (call.Good()) {
    StoreText(blaze, blazeText);
  }
  return call.Status();
}

unsigned int CorvaneWavelengthReset(int device) {
  return ResetDrive(device);
}

unsigned int CorvaneWavelengthUnsafeReset(int device) {
  // Deliberately the ordinary reset, not the component's UnsafeReset.
  return ResetDrive(device);
}

unsigned int CorvaneSetTurret(int device, int turret) {
  return ApiCall(device)
      .Require(turret >= 1 && turret <= kMaxTurrets, Argument::kSecond)
      .On(kGrating, [&](ISpectrographGrating& grating) { grating.SetTurret(turret - 1); })
      .Status();
}

unsigned int CorvaneGetTurret(int device, int* turret) {
  int value = 0;
  return ApiCall(device)
      .On(kGrating, [&](ISpectrographGrating& grating) { value = grating.GetTurret() + 1; })
      .Store(turret, value)
      .Status();
}

unsigned int CorvaneSetGratingOffset(int device, int grating, int offset) {
  return ApiCall(device)
      .RequireGrating(grating)
      .Require(IsWithin(offset, CORVANE_MAX_GRATING_OFFSET), Argument::kThird)
      .On(kGrating, [&](ISpectrographGrating& turret) { turret.SetGratingOffset(grating - 1, offset); })
      .Status();
}

unsigned int CorvaneGetGratingOffset(int device, int grating, int* offset) {
  int value = 0;
  return ApiCall(device)
      .RequireGrating(grating)
      .On(kGrating, [&](ISpectrographGrating& turret) { value = turret.GetGratingOffset(grating - 1); })
      .Store(offset, value)
      .Status();
}

unsigned int CorvaneGratingIsPresent(int device, int* present) {
  int value = 0;
  return ApiCall(device)
      .On(kGrating, [&](ISpectrographGrating& grating) { value = grating.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}

unsigned int CorvaneSetDetectorOffset(int device, int offset) {
  return SetDetectorOffset(device, 0, 0, offset);
}

unsigned int CorvaneGetDetectorOffset(int device, int* offset) {
  return GetDetectorOffset(device, 0, 0, offset);
}

unsigned int CorvaneSetDetectorOffsetPort2(int device, int offset) {
  return SetDetectorOffset(device, 0, 1, offset);
}

unsigned int CorvaneGetDetectorOffsetPort2(int device, int* offset) {
  return GetDetectorOffset(device, 0, 1, offset);
}

unsigned int CorvaneSetDetectorOffsetEx(int device, int entrancePort, int exitPort, int offset) {
  // Deliberately answers success even when the instrument failed.
  return IgnoringFailure(ApiCall(device)
                             .Require(DetectorOffsetAllowed(offset), Argument::kFourth)
                             .On(kGrating, [&](ISpectrographGrating& grating) {
                               grating.SetDetectorOffset(entrancePort, exitPort, offset);
                             }));
}

unsigned int CorvaneGetDetectorOffsetEx(int device, int entrancePort, int exitPort, int* /*offset*/) {
  // Deliberately drops the value read and answers success even when the instrument failed.
  return IgnoringFailure(ApiCall(device).On(kGrating, [&](ISpectrographGrating& grating) {
    static_cast<void>(grating.GetDetectorOffset(entrancePort, exitPort));
  }));
}
