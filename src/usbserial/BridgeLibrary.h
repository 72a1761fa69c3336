// The state behind the FT_* functions: the libusb context of this library, the table of supported devices, the stored
// device list and the open devices. One per process, and another one in the child of a fork; the exported functions are
// its only users. Every member function takes the library lock itself where it needs it, so none calls another.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "usbserial/HandleRegistry.h"
#include "usbserial/SupportedDevices.h"

namespace corvane {

class BridgeLibrary {
 public:
  /// The texts that name a device.
  enum class Name { kSerial, kDescription };

  /// Never destroyed: threads of open devices and late callers may outlive static destruction.
  static BridgeLibrary& Instance();

  void SetCustomId(UsbId id);
  UsbId CustomId();

  DWORD CountDevices();

  /// Identity of the index-th device; only its texts need it opened. Throws FtFailure: 2 beyond the list, otherwise as
  /// OpenEntry.
  BridgeIdentity Describe(std::uintptr_t index, bool withTexts);

  /// Identities of all devices, without texts for those that cannot be opened.
  std::vector<BridgeIdentity> DescribeAll(bool withTexts);

  /// Starts libusb if nothing has done so yet. Throws FtFailure (18) when that fails.
  void Start();

  /// Rebuilds the stored list and answers its length.
  DWORD CreateList();
  std::vector<FT_DEVICE_LIST_INFO_NODE> StoredList();

  /// Opens the index-th device, or the first whose name is `text` or `location`. Throws FtFailure: 2 no such device,
  /// 3 already open, otherwise as BridgeDevice.
  FT_HANDLE OpenByIndex(int index);
  FT_HANDLE OpenByText(Name name, const std::string& text);
  FT_HANDLE OpenByLocation(DWORD location);

  /// False when the handle names no open device.
  bool Close(FT_HANDLE handle);
  /// See BridgeDevice::ResetPort.
  FT_STATUS ResetPort(BridgeDevice& device);
  std::shared_ptr<BridgeDevice> Find(FT_HANDLE handle) const { return mOpen.Find(handle); }

 private:
  // The functions below expect the library lock to be held.
  libusb_context* Context();
  std::vector<BridgeEntry> Entries();
  BridgeIdentity Identify(const BridgeEntry& entry);
  std::shared_ptr<BridgeDevice> OpenFree(const BridgeEntry& entry);
  FT_HANDLE OpenFirst(const std::function<bool(const BridgeEntry&)>& matches);
  FT_DEVICE_LIST_INFO_NODE NodeOf(const BridgeEntry& entry);

  std::mutex mLock;
  UsbContext mContext;
  SupportedDevices mSupported;
  std::vector<FT_DEVICE_LIST_INFO_NODE> mList;
  HandleRegistry mOpen;
};

}  // namespace corvane
