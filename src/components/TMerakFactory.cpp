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
  Grating();
  // The first caller owns it from here on; further calls only name it.
  static_cast<void>(mOwnedGrating.release());
  return mGrating;
}

ISpectrographWavelength* TMerakFactory::CreateWavelength() {
  return std::make_unique<TMerakWavelength>(*mDevice, Grating()).release();
}

TSpectrographDevice* TMerakFactory::CreateCorvane() {
  return mDevice;
}

ISpectrographEEPROM* TMerakFactory::CreateEeprom() {
  return std::make_unique<TCorvaneMerakEeprom>(mDevice->GetMerakOrbis()).release();
}

ISpectrographFlipper* TMerakFactory::CreateFlipper(ISpectrographFlipper::TFlipperPosition position) {
  return std::make_unique<TCorvaneMerakFlipper>(mDevice->GetMerakOrbis(), mDevice->GetStepTurret(), position).release();
}

ISpectrographSlit* TMerakFactory::CreateSlit(ISpectrographSlit::TSlitPosition position) {
  return std::make_unique<TCorvaneMerakSlit>(mDevice->GetMerakOrbis(), position).release();
}

ISpectrographFilter* TMerakFactory::CreateFilter() {
  return std::make_unique<TCorvaneMerakFilter>(mDevice->GetMerakOrbis()).release();
}

ISpectrographFocusMirror* TMerakFactory::CreateFocusMirror() {
  return std::make_unique<TCorvaneMerakFocusMirror>(mDevice->GetMerakOrbis()).release();
}

ISpectrographShutter* TMerakFactory::CreateShutter() {
  return std::make_unique<TMerakShutter>().release();
}

ISpectrographAccessory* TMerakFactory::CreateAccessory() {
  return std::make_unique<TCorvaneMerakAccessory>(mDevice->GetMerakOrbis()).release();
}

std::unique_ptr<TMerakSpectrographDevice> TMerakFactory::TakeSpectrograph() {
  return std::move(mOwnedDevice);
}
