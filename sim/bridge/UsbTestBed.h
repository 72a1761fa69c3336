// The umockdev test bed of this process: the sysfs and udev face of the virtual bus. One for the whole life of the
// process, because libraries that watch for devices connect to it once. Used by VirtualUsbBus.
#pragma once

#include <umockdev.h>

#include <memory>
#include <mutex>
#include <string>

class BridgeChip;

class UsbTestBed {
 public:
  static constexpr int kBusNumber = 1;

  /// Makes the test bed with its root hub on first use. Throws std::runtime_error without the umockdev preload.
  static UsbTestBed& Instance();

  /// Device addresses go round, so that one is not used again soon after its device left.
  int NextAddress();
  /// Shows the chip at this port of the root hub and sends the "add" event.
  void Add(const BridgeChip& chip, int port, int address);
  /// Sends the "remove" event and takes the chip away.
  void Remove(int port);

 private:
  struct Unref {
    void operator()(UMockdevTestbed* testbed) const { g_object_unref(testbed); }
  };

  UsbTestBed();
  void AddRecord(const std::string& record);

  std::mutex mMutex;
  int mLastAddress = 1;  // the root hub
  std::unique_ptr<UMockdevTestbed, Unref> mTestbed;
};
