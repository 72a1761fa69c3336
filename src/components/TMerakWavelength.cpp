#include "components/TMerakWavelength.h"

#include <cstdint>

#include "components/MerakOperation.h"
#include "components/TCorvaneMerakGrating.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "components/TCorvaneMerakStepTurret.h"
#include "components/TMerakSpectrographDevice.h"
#include "controller/TMerakOrbis.h"
#include "eeprom/MerakEepromRecord.h"

namespace {

/// Half of the span reported around a centre, nm.
constexpr float kHalfSpan = 50.0F;
/// Pixels by which a window's ends are counted.
constexpr int kPixelStep = 512;

}  // namespace

TMerakWavelength::TMerakWavelength(TMerakSpectrographDevice& device, TCorvaneMerakGrating& grating)
    : mDevice(device), mController(device.GetMerakOrbis()), mGrating(grating), mBuiltIn(mController) {
  mGrating.Connect(this);
}

TMerakWavelength::~TMerakWavelength() {
  mGrating.Disconnect(this);
}

TMCorvaneWaveStrategy& TMerakWavelength::Strategy() {
  if (mController.GetWaveToStepsEnable() != 0) {
    return mDevice.GetStepTurret();
  }
  return mBuiltIn;
}

void TMerakWavelength::ServerChanged(TDeviceServer* /*server*/) {
  StateChanged();
}

void TMerakWavelength::SetWavelength(float nm) {
  corvane::RunBusy(mAborter, *this, [&] { return Strategy().SetWavelength(nm); });
}

float TMerakWavelength::GetWavelength() {
  float nm = -1.0F;
  corvane::RunPaused(mAborter, [&] { return Strategy().GetWavelength(nm); });
  return nm;
}

void TMerakWavelength::GotoZeroOrder() {
  SetWavelength(0.0F);
}

bool TMerakWavelength::AtZeroOrder() {
  return GetWavelength() == 0.0F;
}

void TMerakWavelength::RequirePresent() {
  if (!IsPresent()) {
    throw TCorvaneException(1);
  }
}

void TMerakWavelength::GetDispersion(float& low, float& high) {
  RequirePresent();
  GetDispersionFor(GetWavelength(), low, high, -1);
}

void TMerakWavelength::GetDispersionFor(float centre, float& low, float& high, int /*detector*/) {
  RequirePresent();
  low = centre - kHalfSpan;
  high = centre + kHalfSpan;
}

void TMerakWavelength::GetDispersionAt(float centre, float& low, float& high, int /*detector*/, int first, int last) {
  RequirePresent();
  // Whole numbers, both divided before anything else: a last pixel of 1023 still counts as the centre.
  const int below = 1 - first / kPixelStep;
  const std::int64_t above = (std::int64_t{last} - kPixelStep) / kPixelStep;
  low = centre - kHalfSpan * static_cast<float>(below);
  high = centre + kHalfSpan * static_cast<float>(above);
}

void TMerakWavelength::GetWavelengthLimits(int grating, float& min, float& max) {
  const int asked = grating == -1 ? mGrating.GetGrating() : grating;
  corvane::RequireIndex(asked, corvane::MerakEepromRecord::kGratings);
  corvane::ReadRecord(mAborter, mController, [&] {
    min = 0.0F;
    max = TCorvaneMerakGratingInfo(mController).GetMaxWave(asked);
  });
}
