// Creates the components of one instrument.
#pragma once

#include <memory>

#include "core/ISpectrographAccessory.h"
#include "core/ISpectrographEEPROM.h"
#include "core/ISpectrographFilter.h"
#include "core/ISpectrographFlipper.h"
#include "core/ISpectrographFocusMirror.h"
#include "core/ISpectrographGrating.h"
#include "core/ISpectrographShutter.h"
#include "core/ISpectrographSlit.h"
#include "core/ISpectrographWavelength.h"
#include "core/TSpectrographDevice.h"

/// Every operation hands out a component that the caller owns, save that an implementation may share its grating and
/// its device between calls; where it does, it says who owns them. Null means that this kind of instrument has no
/// such component.
class ISpectrographDeviceFactory {
 public:
  virtual ~ISpectrographDeviceFactory() = default;
  virtual ISpectrographFlipper* CreateFlipper(ISpectrographFlipper::TFlipperPosition position) = 0;
  virtual ISpectrographGrating* CreateGrating() = 0;
  virtual ISpectrographWavelength* CreateWavelength() = 0;
  virtual ISpectrographSlit* CreateSlit(ISpectrographSlit::TSlitPosition position) = 0;
  virtual ISpectrographFilter* CreateFilter() = 0;
  virtual ISpectrographFocusMirror* CreateFocusMirror() = 0;
  virtual ISpectrographShutter* CreateShutter() = 0;
  virtual TSpectrographDevice* CreateCorvane() = 0;
  virtual ISpectrographEEPROM* CreateEeprom() = 0;
  virtual ISpectrographAccessory* CreateAccessory() = 0;
};
