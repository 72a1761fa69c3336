#include "camera/TGlobalControl.h"

#include <cstddef>
#include <utility>

namespace {

constexpr const char* kCameraSdk = "libtivan.so";
constexpr int kUnknown = -1;

}  // namespace

TGlobalControl::TGlobalControl(char* directory) {
  auto sdkControl = std::make_unique<TSDKControl>(directory, kCameraSdk);
  mSDKControl = sdkControl.get();
  AddController(std::move(sdkControl));
}

bool TGlobalControl::AddController(std::unique_ptr<TI2CController> controller) {
  if (controller == nullptr || mCount >= kCapacity) {
    return false;
  }
  mControllers[static_cast<std::size_t>(mCount)] = std::move(controller);
  ++mCount;
  return true;
}

int TGlobalControl::GetNumberDevices() {
  int devices = 0;
  for (std::size_t source = 0; source < static_cast<std::size_t>(mCount); ++source) {
    devices += mControllers[source]->GetNumberDevices();
  }
  return devices;
}

void TGlobalControl::GetDeviceAddress(int index, int& source, int& local) {
  source = kUnknown;
  local = kUnknown;
  if (index < 0) {
    return;
  }
  for (int candidate = 0; candidate < mCount; ++candidate) {
    const int devices = mControllers[static_cast<std::size_t>(candidate)]->GetNumberDevices();
    if (index < devices) {
      source = candidate;
      local = index;
      return;
    }
    index -= devices;
  }
}

TI2CInterface* TGlobalControl::GetI2CInterface(int index) {
  int source = kUnknown;
  int local = kUnknown;
  GetDeviceAddress(index, source, local);
  return source != kUnknown ? mControllers[static_cast<std::size_t>(source)]->GetI2CInterface(local) : nullptr;
}

TDetectorInterface* TGlobalControl::GetDetectorInterface(int index) {
  int source = kUnknown;
  int local = kUnknown;
  GetDeviceAddress(index, source, local);
  return source != kUnknown ? mControllers[static_cast<std::size_t>(source)]->GetDetectorInterface(local) : nullptr;
}

TI2CInterface* TGlobalControl::GetSDKI2CInterface() {
  return mSDKControl->GetI2CInterface(0);
}

bool TGlobalControl::IsDeviceUSB(int index) {
  int source = kUnknown;
  int local = kUnknown;
  GetDeviceAddress(index, source, local);
  return source == 0 || source == 1;
}

bool TGlobalControl::IsDeviceSDK(int index) {
  int source = kUnknown;
  int local = kUnknown;
  GetDeviceAddress(index, source, local);
  return source == 2;
}
