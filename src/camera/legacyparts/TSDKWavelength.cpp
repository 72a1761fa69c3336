#include "camera/legacyparts/TSDKWavelength.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "components/optics/WavelengthSpan.h"
#include "legacy/Corvane.h"

using corvane::RunCommand;
using corvane::RunQuery;

void TSDKWavelength::SetWavelength(float nm) {
  RunCommand(*this, mDriver, &Corvane::SetWavelength, nm);
}

float TSDKWavelength::GetWavelength() {
  return RunQuery<float>(*this, mDriver, [](Corvane& driver, float& nm) { return driver.GetWavelength(&nm); });
}

void TSDKWavelength::GotoZeroOrder() {
  constexpr int kGratingInUse = 0;
  RunCommand(*this, mDriver, &Corvane::GotoZeroOrder, kGratingInUse);
}

bool TSDKWavelength::AtZeroOrder() {
  return RunQuery<bool>(*this, mDriver, [](Corvane& driver, bool& at) { return driver.AtZeroOrder(&at); });
}

void TSDKWavelength::GetDispersion(float& low, float& high) {
  GetDispersionFor(GetWavelength(), low, high, -1);
}

void TSDKWavelength::GetDispersionFor(float centre, float& low, float& high, int /*detector*/) {
  corvane::SpanAround(centre, low, high);
}

void TSDKWavelength::GetDispersionAt(float centre, float& low, float& high, int /*detector*/, int first, int last) {
  corvane::SpanOfWindow(centre, first, last, low, high);
}

void TSDKWavelength::GetWavelengthLimits(int grating, float& min, float& max) {
  struct Limits {
    float min = 0.0F;
    float max = 0.0F;
  };
  const int asked = grating == Corvane::kActiveGrating ? grating : Corvane::FromZeroBased(grating);
  const auto limits = RunQuery<Limits>(*this, mDriver, [asked](Corvane& driver, Limits& value) {
    return driver.GetWavelengthLimits(asked, &value.min, &value.max);
  });
  min = limits.min;
  max = limits.max;
}

int TSDKWavelength::GetCurrentWaveStepPosition() {
  return RunQuery<int>(*this, mDriver, [](Corvane& driver, int& steps) { return driver.GetCurrentWaveSteps(&steps); });
}
