#include "components/TMerakFactory.h"

#include <utility>

#include "components/TCorvaneMerakEeprom.h"
#include "components/TCorvaneMerakGrating.h"
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

std::unique_ptr<TMerakSpectrographDevice> TMerakFactory::TakeSpectrograph() {
  return std::move(mOwnedDevice);
}

// Parts of the instrument that this library does not drive yet. Null tells the exported functions that there is none,
// and they answer a failure.

ISpectrographFlipper* TMerakFactory::CreateFlipper(ISpectrographFlipper::TFlipperPosition /*position*/) {
  return nullptr;
}

ISpectrographSlit* TMerakFactory::CreateSlit(ISpectrographSlit::TSlitPosition /*position*/) {
  return nullptr;
}

ISpectrographFilter* TMerakFactory::CreateFilter() {
  return nullptr;
}

ISpectrographFocusMirror* TMerakFactory::CreateFocusMirror() {
  return nullptr;
}

ISpectrographShutter* TMerakFactory::CreateShutter() {
  return nullptr;
}

ISpectrographAccessory* TMerakFactory::CreateAccessory() {
  return nullptr;
}
