// A USB bus with bridge chips under the real libusb-1.0: device nodes whose calls are answered inside this process, and
// a umockdev test bed that shows the chips in sysfs and udev, so that listing and hotplug work as on hardware.
// Used by tests, benchmarks and simulations that link corvane_sim_bridge; the process must run with the umockdev
// preload (corvane::EnsureUmockdevPreload). One bus at a time; the chips belong to it. The process's first bus must be
// made before its first libusb context.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bridge/BridgeChip.h"
#include "bridge/UsbFault.h"
#include "bridge/UsbFaultPlan.h"

class UsbDeviceFile;
class UsbDeviceNode;

class VirtualUsbBus {
 public:
  using Clock = std::chrono::steady_clock;

  /// A root hub without chips. Throws std::runtime_error without the umockdev preload or beside another bus.
  VirtualUsbBus();
  /// Unplugs every chip first: handles still open answer "no device", then can be closed.
  ~VirtualUsbBus();
  VirtualUsbBus(const VirtualUsbBus&) = delete;
  VirtualUsbBus& operator=(const VirtualUsbBus&) = delete;

  // All of these may be called from any thread but a peer's.

  /// Plugs in a new chip at the lowest free port and the next device address; the "add" event has been sent when this
  /// returns. The peers are borrowed and must outlive every open handle of the chip: they are called only while
  /// transfers run. The reference is valid as long as the bus is, plugged in or not. A chip keeps its EEPROM and its
  /// record of requests over Unplug and Replug, which gives it a new address.
  BridgeChip& Plug(const BridgeChip::Options& options = {}, const std::vector<ISerialPeer*>& peers = {});
  /// Pulls the chip: pending transfers end, later calls answer ENODEV, the "remove" event is sent. No effect on a chip
  /// that is already unplugged.
  void Unplug(BridgeChip& chip);
  void Replug(BridgeChip& chip);
  bool IsPlugged(const BridgeChip& chip) const;
  int BusNumber() const;
  /// Device address of the chip's last plugging.
  int Address(const BridgeChip& chip) const;

  /// How long every transfer takes from when its turn has come on its endpoint and its data are there: 0 (ends inside
  /// the submission), 125 microseconds for a high-speed microframe, 1 ms for a full-speed frame. Transfers of one
  /// endpoint follow each other, so several in flight do not go faster than the bus. 0 at first.
  void SetCompletionDelay(std::chrono::microseconds delay);

  /// Opening the node fails with this error number (EACCES, EBUSY, ...); 0 lets it work again.
  void SetOpenError(BridgeChip& chip, int error);
  /// Claiming any interface fails with this error number; 0 lets it work again.
  void SetClaimError(BridgeChip& chip, int error);
  /// A kernel driver holds the interface: a plain claim answers EBUSY, a detaching one unbinds it unless detachable is
  /// false. An empty name unbinds.
  void BindKernelDriver(BridgeChip& chip, int interface, const std::string& driver, bool detachable = true);
  /// The driver that holds the interface: empty, "usbfs" for a claim through libusb, or a kernel driver's name.
  std::string BoundDriver(const BridgeChip& chip, int interface) const;

  /// Puts a fault in force (in place of an earlier one) and starts its count of operations.
  void SetFault(const UsbFault& fault);
  void ClearFault();
  /// How often the fault in force has struck.
  std::uint64_t FaultHits() const;
  /// Operations of these kinds since the bus was made or ForgetOperations was called.
  std::uint64_t Operations(unsigned kinds = UsbFault::kAny) const;
  void ForgetOperations();

  /// Device nodes now open, those of unplugged chips included, and transfers now pending.
  std::size_t OpenNodes() const;
  std::size_t PendingTransfers() const;
  /// How often the host cleared the halt of one of the chip's endpoints while transfers were queued on it, which
  /// hardware may answer with lost or repeated packets.
  std::uint64_t HurriedClears(const BridgeChip& chip) const;

  static constexpr const char* kEngineName = "usb-engine";
  /// Processor time of the bus's own thread, of this name, so far, for measurements that must not count the simulation.
  std::chrono::nanoseconds EngineTime();

  // What the interposed system calls arrive at; the lock is held.

  /// The node of the chip plugged in at this address, or null.
  UsbDeviceNode* FindNode(int address);
  int Ioctl(UsbDeviceNode& node, UsbDeviceFile& file, unsigned long request, void* argument);

 private:
  UsbDeviceNode& NodeOf(const BridgeChip& chip) const;
  void Connect(UsbDeviceNode& node);
  void Disconnect(UsbDeviceNode& node, std::unique_lock<std::mutex>& lock);
  int FreePort() const;
  void Pull(UsbDeviceNode& node);
  void Schedule(Clock::time_point when);
  void Advance(UsbDeviceNode& node);
  void RunEngine();

  std::vector<std::unique_ptr<UsbDeviceNode>> mNodes;
  std::chrono::microseconds mDelay{0};
  UsbFaultPlan mFaults;
  /// Pulled out, and the event not sent yet.
  std::vector<UsbDeviceNode*> mPulled;
  Clock::time_point mNext = Clock::time_point::max();
  bool mStopping = false;
  std::condition_variable mCondition;
  std::thread mEngine;
};
