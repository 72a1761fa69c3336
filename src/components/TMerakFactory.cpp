#include "components/TMerakFactory.h"

#include <utility>

#include "components/TCorvaneMerakAccessory.h"
#include "components/TCorvaneMerakEeprom.h"
#include "components/TCorvaneMerakFilter.h"
#include "components/TCorvaneMerakFlipper.h"
#include "components/TCorvaneMerakFocusMirror.h"
#include "components/TCorvaneMerakGrating.h"
#include "components/TCorvaneMerakSlit.h"
#include "components/TMerakShutter.h"
#include "components/TMerakSpectrographDevice.h"
#include "components/TMerakWavelength.h"
#include "controller/TMerakOrbis.h"

TMerakFactory::TMerakFactory(std::unique_ptr<TMerakOrbis> controller)
    : mOwnedDevice(std::make_unique<TMerakSpectrographDevice>(std::move(controller))), mDevice(mOwnedDevice.get()) {
}

TMerakFactory::~TMerakFactory() = default;

TCorvaneMerakGrating& TMerakFactory::Grating() {
  if (mGrating == nullptr) {
    mOwnedGrating = std::make_unique<TCorvaneMerakGrating>(*mDevice);
    mGrating = mOwnedGrating.get();
  }
  return *mGrating;
}

ISpectrographGrating* TMerakFactory::CreateGrating() {
  return &Grating();
}

std::unique_ptr<ISpectrographWavelength> TMerakFactory::CreateWavelength() {
  return std::make_unique<TMerakWavelength>(*mDevice, Grating());
}

TSpectrographDevice* TMerakFactory::CreateCorvane() {
  return mDevice;
}

std::unique_ptr<ISpectrographEEPROM> TMerakFactory::CreateEeprom() {
  return std::make_unique<TCorvaneMerakEeprom>(mDevice->GetMerakOrbis());
}

std::unique_ptr<ISpectrographFlipper> TMerakFactory::CreateFlipper(ISpectrographFlipper::TFlipperPosition position) {
  return std::make_unique<TCorvaneMerakFlipper>(mDevice->GetMerakOrbis(), mDevice->GetStepTurret(), position);
}

std::unique_ptr<ISpectrographSlit> TMerakFactory::CreateSlit(ISpectrographSlit::TSlitPosition position) {
  return std::make_unique<TCorvaneMerakSlit>(mDevice->GetMerakOrbis(), position);
}

std::unique_ptr<ISpectrographFilter> TMerakFactory::CreateFilter() {
  return std::make_unique<TCorvaneMerakFilter>(mDevice->GetMerakOrbis());
}

std::unique_ptr<ISpectrographFocusMirror> TMerakFactory::CreateFocusMirror() {
  return std::make_unique<TCorvaneMerakFocusMirror>(mDevice->GetMerakOrbis());
}

std::unique_ptr<ISpectrographShutter> TMerakFactory::CreateShutter() {
  return std::make_unique<TMerakShutter>();
}

std::unique_ptr<ISpectrographAccessory> TMerakFactory::CreateAccessory() {
  return std::make_unique<TCorvaneMerakAccessory>(mDevice->GetMerakOrbis());
}

std::unique_ptr<ISpectrographGrating> TMerakFactory::TakeGrating() {
  Grating();
  return std::move(mOwnedGrating);
}

std::unique_ptr<TMerakSpectrographDevice> TMerakFactory::TakeSpectrograph() {
  return std::move(mOwnedDevice);
}
