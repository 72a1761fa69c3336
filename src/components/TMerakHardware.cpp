#include "components/TMerakHardware.h"

#include <algorithm>
#include <utility>

#include "components/TMerakFactory.h"
#include "components/TMerakSpectrographDevice.h"

TMerakHardware::TMerakHardware(std::unique_ptr<TMerakOrbis> controller) : mController(controller.get()) {
  TMerakFactory factory(std::move(controller));
  try {
    CreateComponents(factory);
    mDevice = factory.TakeSpectrograph();
    ReadSystemInfo();
  } catch (...) {
    // While the grating and the device that they borrow are still alive.
    DestroyComponents();
    throw;
  }
}

TMerakHardware::~TMerakHardware() {
  try {
    if (mController->IsOpen()) {
      mController->Close();
    }
  } catch (...) {
    // Out of memory while saving: the device tries once more and drops what is left.
  }
  DestroyComponents();
}

void TMerakHardware::CreateComponents(TMerakFactory& factory) {
  mWavelength = factory.CreateWavelength();
  for (std::size_t i = 0; i < mFlipper.size(); ++i) {
    mFlipper[i] = factory.CreateFlipper(static_cast<ISpectrographFlipper::TFlipperPosition>(i));
  }
  mAccessory = factory.CreateAccessory();
  mEeprom = factory.CreateEeprom();
  mFilter = factory.CreateFilter();
  mFocusMirror = factory.CreateFocusMirror();
  mGrating = factory.TakeGrating();
  mShutter = factory.CreateShutter();
  for (std::size_t i = 0; i < mSlit.size(); ++i) {
    mSlit[i] = factory.CreateSlit(static_cast<ISpectrographSlit::TSlitPosition>(i));
  }
}

void TMerakHardware::ReadSystemInfo() {
  // Silent while its record was read: a second wait would tell no more than it told when it was opened.
  if (mController->IsSilent()) {
    mSystemInfo = mController->LatestSystemInfo();
  } else {
    mController->GetSystemInfoEx(mSystemInfo);
  }
  const std::size_t length = std::min(mSystemInfo.serialNumber.size(), mSerial.size() - 1);
  std::copy_n(mSystemInfo.serialNumber.begin(), length, mSerial.begin());
}

TSpectrographDevice* TMerakHardware::GetSpectrographDevice() const {
  return mDevice.get();
}
