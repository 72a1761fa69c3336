#include "bridge/UsbTestBed.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "bridge/BridgeChip.h"
#include "bridge/UmockdevPreload.h"

namespace {

// Device addresses are 7 bits; 1 is the root hub.
constexpr int kFirstAddress = 2;
constexpr int kLastAddress = 127;
constexpr const char* kRootHubPath = "/devices/pci0000:00/0000:00:14.0/usb1";

std::string Format(const char* format, int value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), format, value);
  return text.data();
}

std::string ChipPath(int port) {
  return std::string(kRootHubPath) + "/" + Format("1-%d", port);
}

std::string Hex(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += Format("%02X", byte);
  }
  return text;
}

// A device as umockdev reads it. The attribute lines end with the escaped line end that sysfs has.
std::string Record(const std::string& path, int address, std::string_view speed,
                   std::span<const std::uint8_t> descriptors) {
  const std::string bus = Format("%03d", UsbTestBed::kBusNumber);
  const std::string device = Format("%03d", address);
  const std::string node = "bus/usb/" + bus + "/" + device;
  std::string record = "P: " + path + "\nN: " + node + "\n";
  record += "E: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nE: DEVNAME=/dev/" + node + "\n";
  record += "E: BUSNUM=" + bus + "\nE: DEVNUM=" + device + "\n";
  record += "A: busnum=" + std::to_string(UsbTestBed::kBusNumber) + "\\n\n";
  record += "A: devnum=" + std::to_string(address) + "\\n\n";
  record += "A: bConfigurationValue=1\\n\n";
  record += "A: speed=" + std::string(speed) + "\\n\n";
  record += "H: descriptors=" + Hex(descriptors) + "\n\n";
  return record;
}

// A root hub without strings: device, configuration, interface and one interrupt endpoint.
constexpr std::array<std::uint8_t, 43> kRootHub{18,   1,    0x00, 0x02, 9,    0, 1, 64,   0x6B,
                                                0x1D, 0x02, 0x00, 0x00, 0x05, 0, 0, 0,    1,  // device
                                                9,    2,    25,   0,    1,    1, 0, 0xE0, 0,  // configuration
                                                9,    4,    0,    0,    1,    9, 0, 0,    0,  // interface
                                                7,    5,    0x81, 3,    4,    0, 12};         // endpoint

}  // namespace

UsbTestBed& UsbTestBed::Instance() {
  static UsbTestBed instance;
  return instance;
}

UsbTestBed::UsbTestBed() {
  if (!corvane::HasUmockdevPreload()) {
    throw std::runtime_error("a virtual USB bus needs the umockdev preload: run the program with umockdev-wrapper");
  }
  mTestbed.reset(umockdev_testbed_new());
  AddRecord(Record(kRootHubPath, 1, "480", kRootHub));
}

int UsbTestBed::NextAddress() {
  const std::lock_guard lock(mMutex);
  mLastAddress = mLastAddress < kLastAddress ? mLastAddress + 1 : kFirstAddress;
  return mLastAddress;
}

void UsbTestBed::Add(const BridgeChip& chip, int port, int address) {
  auto descriptors = chip.DeviceDescriptor();
  const auto configuration = chip.ConfigurationDescriptor();
  descriptors.insert(descriptors.end(), configuration.begin(), configuration.end());
  AddRecord(Record(ChipPath(port), address, chip.GetOptions().highSpeed ? "480" : "12", descriptors));
}

void UsbTestBed::Remove(int port) {
  const std::lock_guard lock(mMutex);
  const std::string path = "/sys" + ChipPath(port);
  umockdev_testbed_uevent(mTestbed.get(), path.c_str(), "remove");
  umockdev_testbed_remove_device(mTestbed.get(), path.c_str());
}

void UsbTestBed::AddRecord(const std::string& record) {
  const std::lock_guard lock(mMutex);
  GError* error = nullptr;
  if (umockdev_testbed_add_from_string(mTestbed.get(), record.c_str(), &error) == FALSE) {
    const std::string reason = error != nullptr ? error->message : "unknown";
    g_clear_error(&error);
    throw std::runtime_error("umockdev refuses a device: " + reason);
  }
}
