// One open channel of a bridge: claimed, set to its opening line settings, and reading in the background. Shared by
// the registry and the calls under way on it, so that a close from another thread never pulls it from under a reader.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <span>

#include "usbserial/BridgeEnumeration.h"
#include "usbserial/BulkOut.h"
#include "usbserial/CancelShield.h"
#include "usbserial/ReadPipeline.h"
#include "usbserial/VendorRequests.h"

namespace corvane {

/// How long FT_Read, which polls and waits for nothing else, sleeps before it looks again after `quiet` without new
/// data: a microsecond at first; after 20 ms a twentieth of the time, so that a late answer is seen at most that much
/// later, and ten milliseconds at most (pauses of one would cost 2 % of a core).
std::chrono::nanoseconds PollInterval(std::chrono::nanoseconds quiet);

class BridgeDevice {
 public:
  static constexpr DWORD kDefaultControlTimeout = 5000;

  /// Opens the entry's channel. Throws FtFailure: 2 it vanished, 3 it cannot be opened or claimed, 4 it lacks its
  /// endpoints, 5 no thread; std::bad_alloc.
  BridgeDevice(libusb_context* context, const BridgeEntry& entry);
  ~BridgeDevice() { Close(); }
  BridgeDevice(const BridgeDevice&) = delete;
  BridgeDevice& operator=(const BridgeDevice&) = delete;

  /// Ends reads and writes under way in other threads with FT_IO_ERROR and gives the device back. Once is enough.
  void Close();

  const BridgeIdentity& Identity() const { return mIdentity; }
  bool IsChannelOf(const BridgeEntry& entry) const {
    return mDevice == entry.device.get() && mInterfaceIndex == entry.interfaceIndex;
  }

  /// Waits until `out` can be filled, or for the read time-out; `received` is what was taken. 0 or 4. The
  /// shield is that of the call; the host may cancel the waiting thread.
  FT_STATUS Read(std::span<std::uint8_t> out, DWORD& received, const CancelShield& shield);

  /// Takes the write lock, which the contract of FT_Write wants before its arguments are looked at. 0, 4 or 6.
  FT_STATUS Write(void* bytes, DWORD count, DWORD* written);

  FT_STATUS Purge(DWORD mask);
  void SetTimeouts(DWORD readTimeout, DWORD writeTimeout);
  void SetControlTimeout(DWORD timeout) { mControlTimeout = timeout == 0 ? kDefaultControlTimeout : timeout; }
  void SetRequestLength(DWORD length) { mReads->SetRequestLength(length); }
  DWORD Available() const { return static_cast<DWORD>(mReads->Available()); }

 private:
  class Claim {
   public:
    Claim(libusb_device_handle* handle, int interfaceNumber);
    ~Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;

   private:
    libusb_device_handle* mHandle;
    int mInterfaceNumber;
  };

  int Control(const VendorOut& request, DWORD timeout);
  FT_STATUS PurgeReceive();
  FT_STATUS Send(std::span<std::uint8_t> bytes, DWORD& written);

  const libusb_device* mDevice;  ///< kept alive by mHandle; only compared
  int mInterfaceIndex;
  std::uint16_t mPort;
  BridgeIdentity mIdentity;

  std::atomic<DWORD> mReadTimeout{0};
  std::atomic<DWORD> mWriteTimeout{0};
  std::atomic<DWORD> mControlTimeout{kDefaultControlTimeout};

  std::mutex mWriteLock;
  // Held shared by whoever uses mHandle apart from the pipeline, exclusively to give it back.
  std::shared_mutex mUse;
  std::atomic<bool> mClosing{false};

  UsbDeviceHandle mHandle;
  std::unique_ptr<Claim> mClaim;
  std::unique_ptr<ReadPipeline> mReads;
  std::unique_ptr<BulkOut> mWrites;
};

}  // namespace corvane
