// Sends bytes on the bulk OUT endpoint of one open device, such that another thread can end a transfer that the device
// never takes. Used by BridgeDevice, which lets one writer in at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "usbserial/UsbOwners.h"

namespace corvane {

class BulkOut {
 public:
  /// Borrows context and handle, which outlive the object. Throws std::bad_alloc.
  BulkOut(libusb_context* context, libusb_device_handle* handle, std::uint8_t endpoint);

  /// Sends the bytes within the time-out (0: none) and answers how many the device took: fewer than given when it
  /// failed, the time was over or Cancel was called. Ends two seconds after the time-out at the latest, and sends
  /// nothing any more once a transfer has not come back by then.
  std::size_t Send(std::span<std::uint8_t> bytes, std::chrono::milliseconds timeout);

  /// Ends a Send under way in another thread, and every later one at once.
  void Cancel();

  /// The same until it is called with false.
  void SetHeld(bool held);

 private:
  struct Request {
    BulkOut* owner = nullptr;
    UsbTransfer transfer;
    std::vector<std::uint8_t> data;  ///< a copy, for a request that is left to libusb must not point to the caller's
    bool inFlight = false;           ///< guarded by the owner's mutex
    int done = 0;                    ///< what libusb's event handling watches
  };

  static void LIBUSB_CALL OnCompletion(libusb_transfer* transfer);

  std::size_t SendPart(std::span<std::uint8_t> part, std::chrono::milliseconds timeout);
  bool Submit();
  bool AwaitCompletion(std::chrono::steady_clock::time_point overdue);
  bool InFlight();
  void CancelInFlight();

  libusb_context* mContext;
  libusb_device_handle* mHandle;
  std::uint8_t mEndpoint;
  std::mutex mMutex;
  bool mCancelled = false;
  bool mHeld = false;
  std::unique_ptr<Request> mRequest;
};

}  // namespace corvane
