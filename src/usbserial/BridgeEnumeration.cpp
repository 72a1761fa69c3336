#include "usbserial/BridgeEnumeration.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <span>
#include <string>

#include "usbserial/AwaitedTransfer.h"
#include "usbserial/BulkInPayload.h"
#include "usbserial/FtFailure.h"
#include "usbserial/ProcessFork.h"

namespace corvane {
namespace {

constexpr int kPacketSizeMask = 0x07FF;

struct DeviceList {
  DeviceList() = default;
  ~DeviceList() { libusb_free_device_list(devices, 1); }
  DeviceList(const DeviceList&) = delete;
  DeviceList& operator=(const DeviceList&) = delete;

  libusb_device** devices = nullptr;
};

UsbConfig ConfigOf(libusb_device* device) {
  libusb_config_descriptor* config = nullptr;
  if (libusb_get_active_config_descriptor(device, &config) != LIBUSB_SUCCESS &&
      libusb_get_config_descriptor(device, 0, &config) != LIBUSB_SUCCESS) {
    config = nullptr;
  }
  return UsbConfig(config);
}

constexpr std::chrono::milliseconds kTextTimeout{1000};
constexpr std::size_t kDescriptorHeader = 2;
constexpr std::size_t kLongestDescriptor = 255;
constexpr unsigned kAsciiEnd = 0x80;

/// The string descriptors of one opened device.
class StringReader {
 public:
  StringReader(libusb_context* context, libusb_device_handle* handle) : mTransfer(context, handle) {}

  /// The text in the device's first language, with a question mark for what is not ASCII; empty when there is none.
  std::string Read(std::uint8_t index) {
    const auto languages = index == 0 ? Units{} : Descriptor(0, 0, kLanguageLength);
    if (languages.empty()) {
      return {};
    }
    std::string text;
    for (const std::uint16_t unit : Descriptor(index, languages.front(), kLongestDescriptor)) {
      text.push_back(unit < kAsciiEnd ? static_cast<char>(unit) : '?');
    }
    return text;
  }

 private:
  using Units = std::vector<std::uint16_t>;

  static constexpr std::size_t kLanguageLength = 4;

  // The 16-bit units of the descriptor; none when it is not sound.
  Units Descriptor(std::uint8_t index, std::uint16_t language, std::size_t length) {
    std::array<std::uint8_t, kLongestDescriptor> bytes{};
    const auto value = static_cast<std::uint16_t>(LIBUSB_DT_STRING << 8 | index);
    const auto outcome = mTransfer.Control({LIBUSB_ENDPOINT_IN, LIBUSB_REQUEST_GET_DESCRIPTOR, value, language},
                                           std::span(bytes).first(length), kTextTimeout);
    Units units;
    // A device may have more languages than were asked for.
    const std::size_t size = std::min<std::size_t>(bytes[0], length);
    if (outcome.status != LIBUSB_SUCCESS || outcome.moved < kDescriptorHeader || size > outcome.moved ||
        bytes[1] != LIBUSB_DT_STRING) {
      return units;
    }
    for (std::size_t at = kDescriptorHeader; at + 1 < size; at += 2) {
      units.push_back(static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8));
    }
    return units;
  }

  AwaitedTransfer mTransfer;
};

void AppendChannels(std::vector<BridgeEntry>& entries, libusb_device* device,
                    const libusb_device_descriptor& descriptor) {
  const UsbConfig config = ConfigOf(device);
  // A device that tells nothing about its interfaces is still there to be counted, and fails to open.
  const int channels = config == nullptr ? 1 : std::max<int>(config->bNumInterfaces, 1);
  for (int i = 0; i < channels; ++i) {
    entries.push_back({UsbDevice(libusb_ref_device(device)), descriptor, i, channels == 1 ? 0 : i + 1});
  }
}

}  // namespace

std::vector<BridgeEntry> EnumerateBridges(libusb_context* context, const SupportedDevices& supported) {
  DeviceList list;
  const ssize_t count = [&] {
    const std::lock_guard apart(ForkMutex());
    return libusb_get_device_list(context, &list.devices);
  }();
  if (count < 0) {
    throw FtFailure(count == LIBUSB_ERROR_NO_MEM ? FT_INSUFFICIENT_RESOURCES : FT_OTHER_ERROR);
  }
  std::vector<BridgeEntry> entries;
  for (libusb_device* const device : std::span(list.devices, static_cast<std::size_t>(count))) {
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(device, &descriptor) == LIBUSB_SUCCESS &&
        supported.Contains({descriptor.idVendor, descriptor.idProduct})) {
      AppendChannels(entries, device, descriptor);
    }
  }
  return entries;
}

BridgeEndpoints EndpointsOf(const BridgeEntry& entry) {
  const UsbConfig config = ConfigOf(entry.device.get());
  BridgeEndpoints found;
  if (config != nullptr && entry.interfaceIndex < config->bNumInterfaces) {
    const libusb_interface& channel = config->interface[entry.interfaceIndex];
    if (channel.num_altsetting > 0) {
      const libusb_interface_descriptor& setting = channel.altsetting[0];
      found.interfaceNumber = setting.bInterfaceNumber;
      for (const auto& endpoint : std::span(setting.endpoint, setting.bNumEndpoints)) {
        if ((endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) != LIBUSB_TRANSFER_TYPE_BULK) {
          continue;
        }
        const bool in = (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == LIBUSB_ENDPOINT_IN;
        if (in && found.in == 0) {
          found.in = endpoint.bEndpointAddress;
          found.maxPacket = endpoint.wMaxPacketSize & kPacketSizeMask;
        } else if (!in && found.out == 0) {
          found.out = endpoint.bEndpointAddress;
        }
      }
    }
  }
  if (found.in == 0 || found.out == 0 || found.maxPacket <= BulkInPayload::kStatusBytes) {
    throw FtFailure(FT_IO_ERROR);
  }
  return found;
}

BridgeIdentity IdentityOf(const BridgeEntry& entry) {
  const libusb_device_descriptor& descriptor = entry.descriptor;
  BridgeIdentity identity;
  identity.type = ChipTypeOf(descriptor.bcdDevice, descriptor.iSerialNumber);
  identity.id = static_cast<DWORD>(descriptor.idVendor) << 16 | descriptor.idProduct;
  identity.location = LocationOf(libusb_get_bus_number(entry.device.get()),
                                 libusb_get_device_address(entry.device.get()), entry.channel);
  return identity;
}

BridgeIdentity IdentityOf(const BridgeEntry& entry, libusb_context* context, libusb_device_handle* handle) {
  StringReader strings(context, handle);
  BridgeIdentity identity = IdentityOf(entry);
  identity.serial =
      ChannelText(strings.Read(entry.descriptor.iSerialNumber), entry.channel, "", BridgeIdentity::kSerialSize);
  identity.description =
      ChannelText(strings.Read(entry.descriptor.iProduct), entry.channel, " ", BridgeIdentity::kDescriptionSize);
  return identity;
}

UsbDeviceHandle OpenEntry(const BridgeEntry& entry) {
  libusb_device_handle* handle = nullptr;
  switch (libusb_open(entry.device.get(), &handle)) {
    case LIBUSB_SUCCESS:
      return UsbDeviceHandle(handle);
    case LIBUSB_ERROR_NO_DEVICE:
      throw FtFailure(FT_DEVICE_NOT_FOUND);
    case LIBUSB_ERROR_NO_MEM:
      throw FtFailure(FT_INSUFFICIENT_RESOURCES);
    default:
      throw FtFailure(FT_DEVICE_NOT_OPENED);
  }
}

}  // namespace corvane
