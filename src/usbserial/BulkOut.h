// Sends bytes on the bulk OUT endpoint of one open device, in parts, such that another thread can end a transfer that
// the device never takes. Used by BridgeDevice, which lets one writer in at a time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

#include "usbserial/AwaitedTransfer.h"

namespace corvane {

class BulkOut {
 public:
  struct Sent {
    std::size_t bytes = 0;
    bool deviceGone = false;
  };

  /// Borrows context and handle, which outlive the object. Throws std::bad_alloc.
  BulkOut(libusb_context* context, libusb_device_handle* handle, std::uint8_t endpoint)
      : mTransfer(context, handle), mHandle(handle), mEndpoint(endpoint) {}

  /// Sends the bytes within the time-out (0: none) and answers how many the device took: fewer than given when it
  /// failed, the time was over or Cancel was called. Ends two seconds after the time-out at the latest (and after the
  /// system's own five for a stalled endpoint that cannot be cleared), and sends nothing any more once a transfer has
  /// not come back by then.
  Sent Send(std::span<const std::uint8_t> bytes, std::chrono::milliseconds timeout);

  /// Ends a Send under way in another thread, and every later one at once.
  void Cancel() { mTransfer.Cancel(); }

  /// The same until it is called with false.
  void SetHeld(bool held) { mTransfer.SetHeld(held); }

 private:
  AwaitedTransfer mTransfer;
  libusb_device_handle* mHandle;
  std::uint8_t mEndpoint;
};

}  // namespace corvane
