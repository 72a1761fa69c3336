// One open channel of a bridge: claimed, set to its opening line settings, and reading in the background. Shared by
// the registry and the calls under way on it, so that a close from another thread never pulls it from under a reader.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <span>
#include <vector>

#include "usbserial/BridgeEnumeration.h"
#include "usbserial/BulkOut.h"
#include "usbserial/CancelShield.h"
#include "usbserial/ControlPath.h"
#include "usbserial/DeviceEvents.h"
#include "usbserial/LineSettings.h"
#include "usbserial/ReadPipeline.h"

namespace corvane {

/// How long FT_Read, which polls, pauses before it looks again after `quiet` without new data, unless some come before:
/// a microsecond at first; after 20 ms a twentieth of the time, and ten milliseconds at most (pauses of one would cost
/// 2 % of a core).
std::chrono::nanoseconds PollInterval(std::chrono::nanoseconds quiet);

class BridgeDevice {
 public:
  /// Opens the entry's channel. Throws FtFailure: 2 it vanished, 3 it cannot be opened or claimed, 4 it lacks its
  /// endpoints, 5 no thread; std::bad_alloc.
  BridgeDevice(libusb_context* context, const BridgeEntry& entry);
  ~BridgeDevice() { Close(); }
  BridgeDevice(const BridgeDevice&) = delete;
  BridgeDevice& operator=(const BridgeDevice&) = delete;

  /// Ends reads and writes under way in other threads with FT_IO_ERROR and gives the device back. Once is enough.
  void Close();

  const BridgeIdentity& Identity() const { return mIdentity; }
  const libusb_device* Chip() const { return mDevice; }
  bool IsChannelOf(const BridgeEntry& entry) const {
    return mDevice == entry.device.get() && mInterfaceIndex == entry.interfaceIndex;
  }

  /// Waits until `out` can be filled, or for the read time-out; `received` is what was taken. 0 or 4. The
  /// shield is that of the call; the host may cancel the waiting thread.
  FT_STATUS Read(std::span<std::uint8_t> out, DWORD& received, const CancelShield& shield);

  /// Takes the write lock, which the contract of FT_Write wants before its arguments are looked at. 0, 4 or 6.
  FT_STATUS Write(void* bytes, DWORD count, DWORD* written);

  FT_STATUS Purge(DWORD mask);

  /// Resets the USB port of the chip, which is as after power-on then, with what is under way on it. `channels` are
  /// all open channels of the chip, always in the same order. One that cannot be taken again has failed then. 0; 4 also
  /// in that case, and when this channel is not among them. One call at a time.
  FT_STATUS ResetPort(const std::vector<std::shared_ptr<BridgeDevice>>& channels);

  /// A request of the table, or one of the caller's own making: see ControlPath. 4 once the device is closed.
  FT_STATUS Request(BridgeRequest name, unsigned value = 0, unsigned index = 0, std::span<std::uint8_t> answer = {});
  FT_STATUS Vendor(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<std::uint8_t> buffer,
                   std::uint8_t type);

  /// Runs the body on the line settings. 4 once the device is closed.
  template <class Body>
  FT_STATUS OnLine(Body&& body) {
    return WhileOpen([&] { return body(*mLine); });
  }
  LineState Line() const { return mLine->State(); }

  /// Waits for an event of the wait mask, or for the read time-out; `events` is what came. 0 or 4.
  FT_STATUS WaitOnMask(DWORD& events, const CancelShield& shield);
  DeviceEvents& Events() { return mEvents; }
  /// Starts or ends the signalling of the host's event.
  void SetNotification(DWORD mask, FT_EVENT* event);

  void SetTimeouts(DWORD readTimeout, DWORD writeTimeout);
  DWORD ReadTimeout() const { return mReadTimeout; }
  DWORD WriteTimeout() const { return mWriteTimeout; }
  void SetControlTimeout(DWORD timeout) { mControl->SetTimeout(timeout); }
  ReadPipeline& Reads() { return *mReads; }
  DWORD Available() const { return static_cast<DWORD>(mReads->Available()); }
  /// Bytes of the write under way.
  DWORD Unsent() const { return mUnsent; }

  /// What the last serial port call on this device came to.
  void SetLastStatus(FT_STATUS status) { mLastStatus = status; }
  FT_STATUS LastStatus() const { return mLastStatus; }

 private:
  class Claim {
   public:
    Claim(libusb_device_handle* handle, int interfaceNumber);
    ~Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;

    /// Gives the interface to nobody, and takes it again; that is true when it worked.
    void Suspend();
    bool Resume();

   private:
    libusb_device_handle* mHandle;
    int mInterfaceNumber;
  };

  class Standstill;

  template <class Body>
  FT_STATUS WhileOpen(Body&& body) {
    const std::shared_lock use(mUse);
    return mClosing ? FT_IO_ERROR : body();
  }
  FT_STATUS PurgeReceive();
  void SignalEvents();
  FT_STATUS Send(std::span<std::uint8_t> bytes, DWORD& written);

  const libusb_device* mDevice;  ///< kept alive by mHandle; only compared
  int mInterfaceIndex;
  BridgeIdentity mIdentity;

  std::atomic<DWORD> mReadTimeout{0};
  std::atomic<DWORD> mWriteTimeout{0};
  std::atomic<DWORD> mUnsent{0};
  std::atomic<FT_STATUS> mLastStatus{FT_OK};

  std::mutex mWriteLock;
  // Held shared by whoever uses mHandle apart from the pipeline, exclusively to give it back.
  std::shared_mutex mUse;
  std::atomic<bool> mClosing{false};

  UsbDeviceHandle mHandle;
  std::unique_ptr<Claim> mClaim;
  std::unique_ptr<ControlPath> mControl;
  std::unique_ptr<LineSettings> mLine;
  DeviceEvents mEvents;
  std::unique_ptr<ReadPipeline> mReads;
  std::unique_ptr<BulkOut> mWrites;
};

}  // namespace corvane
