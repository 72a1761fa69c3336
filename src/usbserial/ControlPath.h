// The control requests of one open channel: the one primitive that sends them, and the table of requests by name with
// the channel's port filled in. Used by BridgeDevice and LineSettings, from any thread: requests may be under way
// together. The caller keeps the handle open.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "usbserial/AwaitedTransfer.h"
#include "usbserial/BridgeIdentity.h"
#include "usbserial/UsbOwners.h"
#include "usbserial/VendorRequests.h"

namespace corvane {

class ControlPath {
 public:
  static constexpr DWORD kDefaultTimeout = 5000;

  /// Borrows context and handle, which outlive the object.
  ControlPath(libusb_context* context, libusb_device_handle* handle, const BridgeIdentity& identity,
              std::uint16_t port);

  /// One control transfer. For type 0xC0 (vendor, to host) 0 when the whole buffer was filled; for any other type 0
  /// when no byte was transferred, which a request that sends data does not; 4 otherwise, and after End.
  FT_STATUS Vendor(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<std::uint8_t> buffer,
                   std::uint8_t type) const;

  /// A request of the table. `answer` has room for the row's answer. 0; 17 not for this chip, nothing was sent; 4 after
  /// End; else the row's failure.
  FT_STATUS Send(BridgeRequest name, unsigned value = 0, unsigned index = 0, std::span<std::uint8_t> answer = {}) const;

  /// The same for a request without an answer, with another time-out: 0 or libusb's error.
  int TrySend(BridgeRequest name, unsigned value, unsigned index, DWORD timeout) const;

  /// Ends the requests under way, and every later one at once.
  void End();

  /// Milliseconds; 0 for the default.
  void SetTimeout(DWORD timeout) { mTimeout = timeout == 0 ? kDefaultTimeout : timeout; }

  /// Whether the request that resets the chip reaches this channel, which is the first or the only one.
  bool HasReset() const { return mPort <= 1; }

  /// Whether baud requests carry their index bits above the port, in the upper byte.
  bool HasWideIndex() const { return mFastClock || mPort != 0; }
  bool HasFastClock() const { return mFastClock; }
  bool DividesByEveryEighth() const { return mFastClock || mLaterChip; }

 private:
  class Listed;

  int Transfer(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<std::uint8_t> buffer,
               std::uint8_t type, DWORD timeout) const;
  std::uint16_t IndexOf(const VendorRow& row, unsigned index) const;

  libusb_context* mContext;
  libusb_device_handle* mHandle;
  std::uint16_t mPort;
  bool mFastClock;
  bool mLaterChip;
  std::atomic<DWORD> mTimeout{kDefaultTimeout};
  mutable std::mutex mMutex;
  mutable std::vector<AwaitedTransfer*> mUnderWay;
  std::atomic<bool> mEnded{false};  ///< changed under the mutex
};

}  // namespace corvane
