// The devices that this library holds open, by handle. Used by BridgeLibrary and by every function that takes a
// handle; calls under way share a device's ownership, so removing it here does not destroy it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "usbserial/BridgeDevice.h"

namespace corvane {

class HandleRegistry {
 public:
  struct Held {
    FT_HANDLE handle = nullptr;
    std::shared_ptr<BridgeDevice> device;
  };

  /// A handle that no device had before, nor one of the process that this one was forked from.
  FT_HANDLE Add(std::shared_ptr<BridgeDevice> device);

  /// Null when the handle names no open device.
  std::shared_ptr<BridgeDevice> Find(FT_HANDLE handle) const;
  std::shared_ptr<BridgeDevice> Remove(FT_HANDLE handle);

  /// The open devices on channels of the chip, in the order of their opening.
  std::vector<std::shared_ptr<BridgeDevice>> OnChip(const libusb_device* chip) const;

  /// The open device on the entry's channel, or nulls.
  Held FindChannel(const BridgeEntry& entry) const;

 private:
  mutable std::mutex mMutex;
  std::map<FT_HANDLE, std::shared_ptr<BridgeDevice>> mDevices;
};

}  // namespace corvane
