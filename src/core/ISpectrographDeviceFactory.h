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

/// Grating and device are one each for all calls: what is handed out is borrowed, and the factory says for how long.
/// Null means that this kind of instrument has no such component.
class ISpectrographDeviceFactory {
 public:
  virtual ~ISpectrographDeviceFactory() = default;
  virtual std::unique_ptr<ISpectrographFlipper> CreateFlipper(ISpectrographFlipper::TFlipperPosition position) = 0;
  virtual ISpectrographGrating* CreateGrating() = 0;
  virtual std::unique_ptr<ISpectrographWavelength> CreateWavelength() = 0;
  virtual std::unique_ptr<ISpectrographSlit> CreateSlit(ISpectrographSlit::TSlitPosition position) = 0;
  virtual std::unique_ptr<ISpectrographFilter> CreateFilter() = 0;
  virtual std::unique_ptr<ISpectrographFocusMirror> CreateFocusMirror() = 0;
  virtual std::unique_ptr<ISpectrographShutter> CreateShutter() = 0;
  virtual TSpectrographDevice* CreateCorvane() = 0;
  virtual std::unique_ptr<ISpectrographEEPROM> CreateEeprom() = 0;
  virtual std::unique_ptr<ISpectrographAccessory> CreateAccessory() = 0;
};
