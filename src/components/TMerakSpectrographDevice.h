// A controller instrument as a whole: owns the connection to its controller and the step turret, opens and closes the
// connection, names model and serial number. TMerakHardware owns it; the components of the instrument borrow
// controller and turret from it.
#pragma once

#include <memory>
#include <string>

#include "core/TSpectrographDevice.h"

class TCorvaneMerakStepTurret;
class TMerakOrbis;

/// The controller of the most recently constructed device; null once any device was destroyed. Borrowed.
extern TMerakOrbis* gblMerakOrbis;

class TMerakSpectrographDevice final : public TSpectrographDevice {
 public:
  /// Reads the instrument's EEPROM; what fails there shows in the record only. The device is not active yet.
  explicit TMerakSpectrographDevice(std::unique_ptr<TMerakOrbis> controller);
  /// Closes the controller.
  ~TMerakSpectrographDevice() override;
  TMerakSpectrographDevice(const TMerakSpectrographDevice&) = delete;
  TMerakSpectrographDevice& operator=(const TMerakSpectrographDevice&) = delete;

  /// Whether any controller can be seen.
  bool IsPresent() override;
  /// Opens the first controller and reads its EEPROM, or closes, where that is still to do; tells the clients in any
  /// case. A failure to open is not reported.
  void SetActive(bool active) override;
  bool IsActive() override { return mActive; }
  /// Opens the first controller and reads its EEPROM where that is still to do. Unlike SetActive it neither marks the
  /// device active nor tells anybody.
  void Load(bool unused) override;
  /// "CV-LX", "CV-MX", "CV-SX" or "Unknown".
  void GetModelNumber(const char*& model) override;
  /// As the EEPROM record holds it; "" while there is none.
  void GetSpectrographSerial(const char*& serial) override;

  TMerakOrbis& GetMerakOrbis() { return *mController; }
  TCorvaneMerakStepTurret& GetStepTurret() { return *mStepTurret; }

 private:
  std::unique_ptr<TMerakOrbis> mController;
  std::unique_ptr<TCorvaneMerakStepTurret> mStepTurret;
  bool mActive = false;
  std::string mSerialText;
};
