// Builds the components of one controller instrument. TMerakHardware makes one for its construction and takes grating
// and device over from it.
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
  /// Destroys what nobody took over: the grating, then the device.
  ~TMerakFactory() override;
  TMerakFactory(const TMerakFactory&) = delete;
  TMerakFactory& operator=(const TMerakFactory&) = delete;

  std::unique_ptr<ISpectrographFlipper> CreateFlipper(ISpectrographFlipper::TFlipperPosition position) override;
  /// The one grating, which the wavelengths observe and do not outlive. The factory's until TakeGrating.
  ISpectrographGrating* CreateGrating() override;
  /// Observes the one grating, which is created when it does not exist yet.
  std::unique_ptr<ISpectrographWavelength> CreateWavelength() override;
  std::unique_ptr<ISpectrographSlit> CreateSlit(ISpectrographSlit::TSlitPosition position) override;
  std::unique_ptr<ISpectrographFilter> CreateFilter() override;
  std::unique_ptr<ISpectrographFocusMirror> CreateFocusMirror() override;
  std::unique_ptr<ISpectrographShutter> CreateShutter() override;
  /// The device itself. The factory's until TakeSpectrograph.
  TSpectrographDevice* CreateCorvane() override;
  std::unique_ptr<ISpectrographEEPROM> CreateEeprom() override;
  std::unique_ptr<ISpectrographAccessory> CreateAccessory() override;

  /// Borrowed.
  TMerakSpectrographDevice* GetSpectrograph() const { return mDevice; }
  /// Hand grating and device over, once; further calls of the operations above go on naming them.
  std::unique_ptr<ISpectrographGrating> TakeGrating();
  std::unique_ptr<TMerakSpectrographDevice> TakeSpectrograph();

 private:
  TCorvaneMerakGrating& Grating();

  std::unique_ptr<TMerakSpectrographDevice> mOwnedDevice;
  TMerakSpectrographDevice* mDevice;
  std::unique_ptr<TCorvaneMerakGrating> mOwnedGrating;
  TCorvaneMerakGrating* mGrating = nullptr;
};
