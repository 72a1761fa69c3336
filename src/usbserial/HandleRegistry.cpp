#include "usbserial/HandleRegistry.h"

#include <atomic>
#include <utility>

namespace corvane {
namespace {

constexpr std::uintptr_t kStep = 16;
std::atomic<std::uintptr_t> gLast{0};

}  // namespace

FT_HANDLE HandleRegistry::Add(std::shared_ptr<BridgeDevice> device) {
  const std::lock_guard lock(mMutex);
  // A number, not an address: a handle kept after its close can never come to name another device.
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  auto* const handle = reinterpret_cast<FT_HANDLE>(gLast += kStep);
  mDevices.emplace(handle, std::move(device));
  return handle;
}

std::shared_ptr<BridgeDevice> HandleRegistry::Find(FT_HANDLE handle) const {
  const std::lock_guard lock(mMutex);
  const auto found = mDevices.find(handle);
  return found == mDevices.end() ? nullptr : found->second;
}

std::shared_ptr<BridgeDevice> HandleRegistry::Remove(FT_HANDLE handle) {
  const std::lock_guard lock(mMutex);
  const auto found = mDevices.find(handle);
  if (found == mDevices.end()) {
    return nullptr;
  }
  auto device = std::move(found->second);
  mDevices.erase(found);
  return device;
}

std::vector<std::shared_ptr<BridgeDevice>> HandleRegistry::OnChip(const libusb_device* chip) const {
  const std::lock_guard lock(mMutex);
  std::vector<std::shared_ptr<BridgeDevice>> found;
  for (const auto& [handle, device] : mDevices) {
    if (device->Chip() == chip) {
      found.push_back(device);
    }
  }
  return found;
}

HandleRegistry::Held HandleRegistry::FindChannel(const BridgeEntry& entry) const {
  const std::lock_guard lock(mMutex);
  for (const auto& [handle, device] : mDevices) {
    if (device->IsChannelOf(entry)) {
      return {handle, device};
    }
  }
  return {};
}

}  // namespace corvane
