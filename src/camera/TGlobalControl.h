// All cameras of the computer in one numbering: the sources in order, the camera SDK first. The bus behind which a
// controller may sit is taken from here. Does not look at what is on the buses.
#pragma once

#include <array>
#include <memory>

#include "camera/TI2CController.h"
#include "camera/TSDKControl.h"

class TGlobalControl final : public TI2CController {
 public:
  static constexpr int kCapacity = 8;

  /// Loads the camera SDK "libtivan.so" and has it initialised with directory.
  explicit TGlobalControl(char* directory);

  /// Appends a source, whose devices are numbered behind those of the sources before it. False, with the source
  /// dropped, when it is null or there are kCapacity already.
  bool AddController(std::unique_ptr<TI2CController> controller);

  /// Devices of all sources.
  int GetNumberDevices() override;
  /// Borrowed from the device's source; null for an unknown index.
  TI2CInterface* GetI2CInterface(int index) override;
  TDetectorInterface* GetDetectorInterface(int index) override;

  /// Splits an overall device index into a source and that source's own index; both -1 for an unknown index.
  void GetDeviceAddress(int index, int& source, int& local);
  /// The camera SDK's bus, on which controllers behind a camera are reached; null when the SDK is not usable.
  TI2CInterface* GetSDKI2CInterface();
  /// A device of source 0 or 1 counts as USB-attached, one of source 2 as the SDK's. As the camera SDK is source 0, its
  /// devices are reported as USB-attached: older instruments are driven that way. False for an unknown index.
  bool IsDeviceUSB(int index);
  bool IsDeviceSDK(int index);

 private:
  std::array<std::unique_ptr<TI2CController>, kCapacity> mControllers;
  TSDKControl* mSDKControl;
  int mCount = 0;
};
