// The set of component interfaces of one instrument and its serial number: what the exported functions reach through
// the list of instruments. TMerakHardware fills it for controller instruments, TCorvaneX3Hardware for older ones.
#pragma once

#include <array>
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

class TSpectrographHardware {
 public:
  static constexpr int kSerialLength = 50;

  virtual ~TSpectrographHardware();
  /// Brings the instrument to its working state; called once after discovery.
  virtual void Initialise() = 0;

  TSpectrographHardware(const TSpectrographHardware&) = delete;
  TSpectrographHardware& operator=(const TSpectrographHardware&) = delete;

  /// Each answers null where this instrument has no such component.
  ISpectrographWavelength* GetWavelengthInterface() const { return mWavelength.get(); }
  ISpectrographAccessory* GetAccessoryInterface() const { return mAccessory.get(); }
  ISpectrographEEPROM* GetEepromInterface() const { return mEeprom.get(); }
  ISpectrographFilter* GetFilterInterface() const { return mFilter.get(); }
  ISpectrographFocusMirror* GetFocusMirrorInterface() const { return mFocusMirror.get(); }
  ISpectrographGrating* GetGratingInterface() const { return mGrating.get(); }
  ISpectrographShutter* GetShutterInterface() const { return mShutter.get(); }
  /// Also null for a position outside the enumeration.
  ISpectrographSlit* GetSlitInterface(ISpectrographSlit::TSlitPosition position) const;
  ISpectrographFlipper* GetFlipperInterface(ISpectrographFlipper::TFlipperPosition position) const;

  /// Copies min(max, kSerialLength) bytes of the serial buffer, adding no terminator.
  void GetSerialNumber(char* out, int max) const;

 protected:
  TSpectrographHardware();

  /// Destroys the components (slits, flippers, wavelength, shutter, grating, filter, focus mirror, EEPROM, accessory,
  /// in this order). For derived classes whose components must go before something of their own; may be called twice.
  void DestroyComponents();

  std::array<char, kSerialLength> mSerial{};
  std::unique_ptr<ISpectrographWavelength> mWavelength;
  std::array<std::unique_ptr<ISpectrographFlipper>, ISpectrographFlipper::kPositions> mFlipper;
  std::unique_ptr<ISpectrographAccessory> mAccessory;
  std::unique_ptr<ISpectrographEEPROM> mEeprom;
  std::unique_ptr<ISpectrographFilter> mFilter;
  std::unique_ptr<ISpectrographFocusMirror> mFocusMirror;
  std::unique_ptr<ISpectrographGrating> mGrating;
  std::unique_ptr<ISpectrographShutter> mShutter;
  std::array<std::unique_ptr<ISpectrographSlit>, ISpectrographSlit::kPositions> mSlit;
};
