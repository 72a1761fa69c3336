// The device node of one bridge chip: what the kernel keeps per device (claims, bound drivers, pending requests per
// endpoint) and its answers to the usbfs calls that libusb makes. Used by VirtualUsbBus, which locks and keeps time.
#pragma once

#include <linux/usbdevice_fs.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "bridge/BridgeChip.h"
#include "bridge/UsbFaultPlan.h"

class UsbDeviceFile;

class UsbDeviceNode {
 public:
  using Clock = std::chrono::steady_clock;

  /// The fault plan is borrowed from the bus.
  UsbDeviceNode(std::unique_ptr<BridgeChip> chip, UsbFaultPlan& faults);

  BridgeChip& Chip() const { return *mChip; }
  int Port() const { return mPort; }
  int Address() const { return mAddress; }
  bool IsPlugged() const { return mPlugged; }
  void Connect(int port, int address);
  /// Ends every pending request with "shut down" and cuts the open files off.
  void Disconnect();

  /// 0, or the negative error number with which opening fails.
  int OpenStatus() const { return -mOpenError; }
  void SetOpenError(int error) { mOpenError = error; }
  void SetClaimError(int error) { mClaimError = error; }
  void BindDriver(int interface, const std::string& driver, bool detachable);
  std::string BoundDriver(int interface) const;

  /// A file came or goes; its requests and claims go with it.
  void Adopt(UsbDeviceFile& file);
  void Forget(UsbDeviceFile& file);

  /// Answers a usbfs call: 0 or more, or a negative error number.
  int Ioctl(UsbDeviceFile& file, unsigned long request, void* argument, Clock::time_point now);
  /// Moves every endpoint as far as the time allows. Answers when to come back.
  Clock::time_point Advance(std::chrono::microseconds delay, Clock::time_point now);
  std::size_t PendingTransfers() const;
  std::uint64_t HurriedClears() const { return mHurriedClears; }

 private:
  struct Interface {
    std::string driver;
    bool bound = false;
    bool detachable = true;
    UsbDeviceFile* claimedBy = nullptr;
  };
  struct Transfer {
    UsbDeviceFile* file = nullptr;
    usbdevfs_urb* urb = nullptr;
    std::size_t moved = 0;
    bool looked = false;
    int status = 0;
    Clock::time_point start;
    std::optional<Clock::time_point> end;
  };
  struct Endpoint {
    std::deque<Transfer> transfers;
    Clock::time_point free;
  };

  int Claim(UsbDeviceFile& file, unsigned interface);
  int Release(UsbDeviceFile& file, unsigned interface);
  int DisconnectAndClaim(UsbDeviceFile& file, const usbdevfs_disconnect_claim& wanted);
  int DriverIoctl(const usbdevfs_ioctl& wanted);
  int GetDriver(usbdevfs_getdriver& wanted) const;
  int SetConfiguration(unsigned value) const;
  int Submit(UsbDeviceFile& file, usbdevfs_urb& urb, Clock::time_point now);
  int Check(UsbDeviceFile& file, const usbdevfs_urb& urb);
  int Discard(const UsbDeviceFile& file, const usbdevfs_urb* urb, Clock::time_point now);
  int ClearHalt(unsigned endpoint);
  int Reset();

  Clock::time_point AdvanceEndpoint(std::uint8_t address, Endpoint& endpoint, std::chrono::microseconds delay,
                                    Clock::time_point now);
  Clock::time_point Look(std::uint8_t address, Transfer& transfer, std::chrono::microseconds delay,
                         Clock::time_point now);
  void Execute(std::uint8_t address, Transfer& transfer);
  void Control(Transfer& transfer);
  static void Finish(const Transfer& transfer, int status);
  /// Ends the transfers that the predicate names with the status, or drops them silently without one.
  template <class Predicate>
  void End(Predicate predicate, std::optional<int> status);

  std::unique_ptr<BridgeChip> mChip;
  UsbFaultPlan& mFaults;
  bool mPlugged = false;
  int mPort = 0;
  int mAddress = 0;
  int mOpenError = 0;
  int mClaimError = 0;
  std::uint64_t mHurriedClears = 0;
  std::vector<Interface> mInterfaces;
  std::map<std::uint8_t, Endpoint> mEndpoints;
  std::set<UsbDeviceFile*> mFiles;
};
