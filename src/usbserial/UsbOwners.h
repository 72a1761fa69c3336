// Owners for what libusb hands out. Used throughout this folder; the objects themselves are libusb's.
#pragma once

#include <libusb.h>

#include <memory>

namespace corvane {

template <auto Release>
struct UsbRelease {
  template <class T>
  void operator()(T* object) const {
    Release(object);
  }
};

using UsbContext = std::unique_ptr<libusb_context, UsbRelease<libusb_exit>>;
using UsbDevice = std::unique_ptr<libusb_device, UsbRelease<libusb_unref_device>>;
using UsbDeviceHandle = std::unique_ptr<libusb_device_handle, UsbRelease<libusb_close>>;
using UsbConfig = std::unique_ptr<libusb_config_descriptor, UsbRelease<libusb_free_config_descriptor>>;
using UsbTransfer = std::unique_ptr<libusb_transfer, UsbRelease<libusb_free_transfer>>;

}  // namespace corvane
