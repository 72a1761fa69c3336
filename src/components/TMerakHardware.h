// The components of one controller instrument and what its controller says of itself. Discovery makes one for every
// controller that it lists, open or not.
#pragma once

#include <memory>

#include "controller/TMerakOrbis.h"
#include "core/TSpectrographDevice.h"
#include "core/TSpectrographHardware.h"

class TMerakFactory;
class TMerakSpectrographDevice;

class TMerakHardware final : public TSpectrographHardware {
 public:
  /// Reads the EEPROM and the system information (third field: the serial number). Failures of the controller leave
  /// these empty and do not throw.
  explicit TMerakHardware(std::unique_ptr<TMerakOrbis> controller);
  /// Closes the controller, which saves what the EEPROM record holds unsaved, then destroys the components, then the
  /// device with the controller.
  ~TMerakHardware() override;
  TMerakHardware(const TMerakHardware&) = delete;
  TMerakHardware& operator=(const TMerakHardware&) = delete;

  /// Nothing: the constructor did it all.
  void Initialise() override {}

  TSpectrographDevice* GetSpectrographDevice() const;
  /// As the controller gave it at construction.
  const TMerakOrbis::SystemInfo& GetSystemInfo() const { return mSystemInfo; }

 private:
  void CreateComponents(TMerakFactory& factory);
  void ReadSystemInfo();

  /// Owned by the device.
  TMerakOrbis* mController;
  std::unique_ptr<TMerakSpectrographDevice> mDevice;
  TMerakOrbis::SystemInfo mSystemInfo;
};
