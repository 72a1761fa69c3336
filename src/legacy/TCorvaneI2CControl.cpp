#include "legacy/TCorvaneI2CControl.h"

#include <cstddef>
#include <utility>

#include "legacy/TCorvaneDetection.h"

TCorvaneI2CControl::TCorvaneI2CControl(char* path) : TCorvaneI2CControl(std::make_unique<TGlobalControl>(path)) {
}

TCorvaneI2CControl::TCorvaneI2CControl(std::unique_ptr<TGlobalControl> globalControl)
    : mGlobalControl(std::move(globalControl)) {
  mDetected.reserve(kInitialCapacity);
  const int devices = mGlobalControl->GetNumberDevices();
  for (int index = 0; index < devices; ++index) {
    if (TCorvaneDetection::Detect(mGlobalControl->GetI2CInterface(index))) {
      mDetected.push_back(index);
    }
  }
}

int TCorvaneI2CControl::GetNumberDevices() {
  return static_cast<int>(mDetected.size());
}

int TCorvaneI2CControl::DeviceIndex(int k) const {
  return k >= 0 && static_cast<std::size_t>(k) < mDetected.size() ? mDetected[static_cast<std::size_t>(k)] : -1;
}

TI2CInterface* TCorvaneI2CControl::GetI2CInterface(int k) {
  return mGlobalControl->GetI2CInterface(DeviceIndex(k));
}

TDetectorInterface* TCorvaneI2CControl::GetDetectorInterface(int k) {
  return mGlobalControl->GetDetectorInterface(DeviceIndex(k));
}

bool TCorvaneI2CControl::IsDeviceUSB(int k) {
  return mGlobalControl->IsDeviceUSB(DeviceIndex(k));
}

bool TCorvaneI2CControl::IsDeviceSDK(int k) {
  return mGlobalControl->IsDeviceSDK(DeviceIndex(k));
}

TI2CInterface* TCorvaneI2CControl::GetSDKI2CInterface() {
  return mGlobalControl->GetSDKI2CInterface();
}
