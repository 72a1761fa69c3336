#include "components/TMerakSpectrographDevice.h"

#include <utility>

#include "components/TCorvaneMerakStepTurret.h"
#include "controller/TMerakOrbis.h"

TMerakOrbis* gblMerakOrbis = nullptr;

namespace {

struct Model {
  const char* code;
  const char* name;
};

/// The first code found in the controller's model designation names the model.
constexpr Model kModels[] = {{"LX", "CV-LX"}, {"MX", "CV-MX"}, {"SX", "CV-SX"}};

}  // namespace

TMerakSpectrographDevice::TMerakSpectrographDevice(std::unique_ptr<TMerakOrbis> controller)
    : mController(std::move(controller)), mStepTurret(std::make_unique<TCorvaneMerakStepTurret>(*mController)) {
  mController->ReadEeprom();
  // Last: a constructor that throws must not leave the name of a dead controller.
  gblMerakOrbis = mController.get();
}

TMerakSpectrographDevice::~TMerakSpectrographDevice() {
  mStepTurret.reset();
  gblMerakOrbis = nullptr;
  try {
    mController->Close();
  } catch (...) {
    // Out of memory while saving: the controller's own end lets go of the connection.
  }
}

bool TMerakSpectrographDevice::IsPresent() {
  int count = 0;
  mController->GetDeviceCount(count);
  return count > 0;
}

void TMerakSpectrographDevice::SetActive(bool active) {
  if (active) {
    Load(false);
  } else if (mController->IsOpen()) {
    mController->Close();
  }
  mActive = active;
  StateChanged();
}

void TMerakSpectrographDevice::Load(bool /*unused*/) {
  if (!mController->IsOpen() && mController->Open(0) == merak::kSuccess) {
    mController->ReadEeprom();
  }
}

void TMerakSpectrographDevice::GetModelNumber(const char*& model) {
  TMerakOrbis::SystemInfo info;
  mController->GetSystemInfoEx(info);
  model = "Unknown";
  for (const Model& known : kModels) {
    if (info.model.find(known.code) != std::string::npos) {
      model = known.name;
      break;
    }
  }
}

void TMerakSpectrographDevice::GetSpectrographSerial(const char*& serial) {
  mSerialText = mController->GetSerialNumber();
  serial = mSerialText.c_str();
}
