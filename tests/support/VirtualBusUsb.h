// Owners for bare libusb objects and a few short calls, for tests and benchmarks that look at the virtual bus the way
// a simple program does.
#pragma once

#include <libusb.h>

#include <cstddef>
#include <functional>
#include <memory>

#include "bridge/BridgeChip.h"
#include "bridge/VirtualUsbBus.h"

namespace corvane {

struct UsbExit {
  void operator()(libusb_context* context) const { libusb_exit(context); }
};
struct UsbClose {
  void operator()(libusb_device_handle* handle) const { libusb_close(handle); }
};
struct UsbFree {
  void operator()(libusb_transfer* transfer) const { libusb_free_transfer(transfer); }
};
using UsbContext = std::unique_ptr<libusb_context, UsbExit>;
using UsbHandle = std::unique_ptr<libusb_device_handle, UsbClose>;
using UsbTransferPointer = std::unique_ptr<libusb_transfer, UsbFree>;

inline UsbContext MakeUsbContext() {
  libusb_context* context = nullptr;
  libusb_init(&context);
  return UsbContext(context);
}

/// Calls visit for every listed device that is not a hub.
inline void ForEachUsbDevice(const UsbContext& context, const std::function<void(libusb_device&)>& visit) {
  libusb_device** devices = nullptr;
  const auto count = libusb_get_device_list(context.get(), &devices);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    libusb_device_descriptor descriptor{};
    libusb_get_device_descriptor(devices[i], &descriptor);
    if (descriptor.bDeviceClass != LIBUSB_CLASS_HUB) {
      visit(*devices[i]);
    }
  }
  libusb_free_device_list(devices, 1);
}

/// Opens the chip; null and the libusb status in result when that fails.
inline UsbHandle OpenUsb(const UsbContext& context, const VirtualUsbBus& bus, const BridgeChip& chip,
                         int* result = nullptr) {
  libusb_device_handle* handle = nullptr;
  int status = LIBUSB_ERROR_NO_DEVICE;
  ForEachUsbDevice(context, [&](libusb_device& device) {
    if (handle == nullptr && libusb_get_device_address(&device) == bus.Address(chip)) {
      status = libusb_open(&device, &handle);
    }
  });
  if (result != nullptr) {
    *result = status;
  }
  return UsbHandle(handle);
}

}  // namespace corvane
