#include "components/TMerakWavelength.h"

#include "components/MerakOperation.h"
#include "components/TCorvaneMerakGrating.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "components/TCorvaneMerakStepTurret.h"
#include "components/TMerakSpectrographDevice.h"
#include "components/optics/WavelengthSpan.h"
#include "controller/TMerakOrbis.h"
#include "eeprom/MerakEepromRecord.h"

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

void TMerakWavelength::GetDispersion(float& low, float& high) {
  corvane::RequirePresent(*this);
  GetDispersionFor(GetWavelength(), low, high, -1);
}

void TMerakWavelength::GetDispersionFor(float centre, float& low, float& high, int /*detector*/) {
  corvane::RequirePresent(*this);
  corvane::SpanAround(centre, low, high);
}

void TMerakWavelength::GetDispersionAt(float centre, float& low, float& high, int /*detector*/, int first, int last) {
  corvane::RequirePresent(*this);
  corvane::SpanOfWindow(centre, first, last, low, high);
}

void TMerakWavelength::GetWavelengthLimits(int grating, float& min, float& max) {
  const int asked = grating == -1 ? mGrating.GetGrating() : grating;
  corvane::RequireIndex(asked, corvane::MerakEepromRecord::kGratings);
  corvane::ReadGratings(mAborter, mController, [&] {
    min = 0.0F;
    max = TCorvaneMerakGratingInfo(mController).GetMaxWave(asked);
  });
}
