// Builds the components of one controller instrument. TMerakHardware makes one for its construction and takes the
// device over from it.
#pragma once

#include <memory>

#include "core/ISpectrographDeviceFactory.h"

class TCorvaneMerakGrating;
class TMerakOrbis;
class TMerakSpectrographDevice;

class TMerakFactory final : public ISpectrographDeviceFactory {
 public:
  /// Creates the device, which takes the controller.
  explicit TMerakFactory(std::unique_ptr<TMerakOrbis> controller);
  /// Destroys what nobody took over: the device, and a grating that only CreateWavelength asked for.
  ~TMerakFactory() override;
  TMerakFactory(const TMerakFactory&) = delete;
  TMerakFactory& operator=(const TMerakFactory&) = delete;

  ISpectrographFlipper* CreateFlipper(ISpectrographFlipper::TFlipperPosition position) override;
  /// One grating for all calls and for the wavelengths. The first caller owns it; it must outlive the wavelengths.
  ISpectrographGrating* CreateGrating() override;
  /// Observes the one grating, which is created when it does not exist yet.
  ISpectrographWavelength* CreateWavelength() override;
  ISpectrographSlit* CreateSlit(ISpectrographSlit::TSlitPosition position) override;
  ISpectrographFilter* CreateFilter() override;
  ISpectrographFocusMirror* CreateFocusMirror() override;
  ISpectrographShutter* CreateShutter() override;
  /// The device itself, which stays owned by the factory until TakeSpectrograph.
  TSpectrographDevice* CreateCorvane() override;
  ISpectrographEEPROM* CreateEeprom() override;
  ISpectrographAccessory* CreateAccessory() override;

  /// Borrowed.
  TMerakSpectrographDevice* GetSpectrograph() const { return mDevice; }
  /// Hands the device over; the components built so far go on borrowing it.
  std::unique_ptr<TMerakSpectrographDevice> TakeSpectrograph();

 private:
  TCorvaneMerakGrating& Grating();

  std::unique_ptr<TMerakSpectrographDevice> mOwnedDevice;
  TMerakSpectrographDevice* mDevice;
  std::unique_ptr<TCorvaneMerakGrating> mOwnedGrating;
  TCorvaneMerakGrating* mGrating = nullptr;
};
