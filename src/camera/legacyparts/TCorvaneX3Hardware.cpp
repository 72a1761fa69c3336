#include "camera/legacyparts/TCorvaneX3Hardware.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

#include "camera/legacyparts/TSDKAccessory.h"
#include "camera/legacyparts/TSDKEeprom.h"
#include "camera/legacyparts/TSDKFilter.h"
#include "camera/legacyparts/TSDKFlipper.h"
#include "camera/legacyparts/TSDKFocusMirror.h"
#include "camera/legacyparts/TSDKGrating.h"
#include "camera/legacyparts/TSDKOutputSlit.h"
#include "camera/legacyparts/TSDKShutter.h"
#include "camera/legacyparts/TSDKSlit.h"
#include "camera/legacyparts/TSDKWavelength.h"
#include "legacy/Corvane.h"

TCorvaneX3Hardware::TCorvaneX3Hardware(Corvane* driver) : mDriver(driver) {
  mWavelength = std::make_unique<TSDKWavelength>(driver);
  mFlipper[0] = std::make_unique<TSDKFlipper>(driver, ISpectrographFlipper::kFlipperPosition0);
  mFlipper[1] = std::make_unique<TSDKFlipper>(driver, ISpectrographFlipper::kFlipperPosition1);
  mAccessory = std::make_unique<TSDKAccessory>(driver);
  mEeprom = std::make_unique<TSDKEeprom>(driver);
  mFilter = std::make_unique<TSDKFilter>(driver);
  mFocusMirror = std::make_unique<TSDKFocusMirror>(driver);
  mGrating = std::make_unique<TSDKGrating>(driver);
  mShutter = std::make_unique<TSDKShutter>(driver);
  // The second slit of each side is one that no older instrument has.
  mSlit[0] = std::make_unique<TSDKSlit>(driver);
  mSlit[1] = std::make_unique<TSDKSlit>(nullptr);
  mSlit[2] = std::make_unique<TSDKOutputSlit>(driver);
  mSlit[3] = std::make_unique<TSDKOutputSlit>(nullptr);

  if (driver != nullptr) {
    const std::string serial = driver->QuickReadSerialNumber();
    std::copy_n(serial.begin(), std::min(serial.size(), mSerial.size() - 1), mSerial.begin());
  }
}

void TCorvaneX3Hardware::Initialise() {
  if (mDriver == nullptr) {
    return;
  }
  // Results are dropped: one instrument that fails must not keep the others from starting, and its own operations
  // report what is wrong.
  static_cast<void>(mDriver->ReadSpectCfg(nullptr));
  int grating = 0;
  float nm = 0.0F;
  static_cast<void>(mDriver->GetGrating(&grating));
  const bool known = mDriver->GetWavelength(&nm) == Corvane::kSuccess;
  static_cast<void>(mDriver->ResetWavelength(true));
  if (!known) {
    return;  // There is no wavelength to go back to.
  }
  static_cast<void>(mDriver->SetGrating(grating));
  static_cast<void>(mDriver->SetWavelength(nm));
}
