// The attached supported devices, one entry per channel, in libusb's order. Used by BridgeLibrary; asks for
// descriptors only, so it opens nothing and needs no access rights.
#pragma once

#include <vector>

#include "usbserial/BridgeIdentity.h"
#include "usbserial/SupportedDevices.h"
#include "usbserial/UsbOwners.h"

namespace corvane {

struct BridgeEntry {
  UsbDevice device;
  libusb_device_descriptor descriptor{};
  int interfaceIndex = 0;  ///< place of the channel's interface in the configuration
  int channel = 0;         ///< 0 when the chip has one channel, else counted from 1
};

/// Bulk endpoints of a channel.
struct BridgeEndpoints {
  int interfaceNumber = 0;
  std::uint8_t in = 0;
  std::uint8_t out = 0;
  std::size_t maxPacket = 0;  ///< of the IN endpoint
};

/// Throws FtFailure (5 no memory, 18 otherwise) when the bus cannot be listed.
std::vector<BridgeEntry> EnumerateBridges(libusb_context* context, const SupportedDevices& supported);

/// The endpoints as the active configuration describes them. Throws FtFailure (4) when one is missing or cannot carry
/// data.
BridgeEndpoints EndpointsOf(const BridgeEntry& entry);

/// What the entry is, but for its speed and its texts.
BridgeIdentity IdentityOf(const BridgeEntry& entry);

/// The same with the texts, which are asked of the opened device. Throws std::bad_alloc.
BridgeIdentity IdentityOf(const BridgeEntry& entry, libusb_context* context, libusb_device_handle* handle);

/// Opens the entry's device without taking an interface. Throws FtFailure: 2 it vanished, 5 no memory, 3 otherwise.
UsbDeviceHandle OpenEntry(const BridgeEntry& entry);

}  // namespace corvane
