// The cameras behind which an older spectrograph was found. Looks once, when it is made; the list does not change
// later. Also the owner of the list of all cameras.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "camera/TGlobalControl.h"
#include "camera/TI2CController.h"

class TCorvaneI2CControl final : public TI2CController {
 public:
  /// Loads the camera SDK with path as its directory and probes every camera's bus.
  explicit TCorvaneI2CControl(char* path);
  /// Probes the buses of an existing list of cameras, which must not be null.
  explicit TCorvaneI2CControl(std::unique_ptr<TGlobalControl> globalControl);

  /// Detected spectrographs; they are numbered from 0 in the order of their cameras.
  int GetNumberDevices() override;
  /// The k-th detected spectrograph's camera; null for a k that is none.
  TI2CInterface* GetI2CInterface(int k) override;
  TDetectorInterface* GetDetectorInterface(int k) override;
  /// As TGlobalControl answers for the k-th detected spectrograph's camera; false for a k that is none.
  bool IsDeviceUSB(int k);
  bool IsDeviceSDK(int k);
  /// The bus on which controllers behind a camera are reached; null when the camera SDK is not usable.
  TI2CInterface* GetSDKI2CInterface();
  /// All cameras, whether or not a spectrograph was detected behind them. Lives as long as this object.
  TGlobalControl* GetGlobalControl() { return mGlobalControl.get(); }

 private:
  static constexpr int kInitialCapacity = 8;

  /// The k-th detected spectrograph's index in the list of all cameras; -1, which is none there, for an unknown k.
  int DeviceIndex(int k) const;

  std::unique_ptr<TGlobalControl> mGlobalControl;
  std::vector<std::int32_t> mDetected;
};
