// One transfer that a thread hands to libusb and waits for: a control request, a string descriptor, or bytes on their
// way out. Used by ControlPath, BridgeEnumeration and BulkOut, in the place of libusb's synchronous functions, whose
// transfers libusb 1.0.26 still reads when they may be freed already. It is freed, and used again, only after its
// completion was marked under its own mutex, which is the last that is done to it on that side.
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

/// The setup packet of a control request; its length is that of the data.
struct UsbSetup {
  std::uint8_t type;
  std::uint8_t request;
  std::uint16_t value;
  std::uint16_t index;
};

class AwaitedTransfer {
 public:
  using Milliseconds = std::chrono::milliseconds;

  struct Outcome {
    int status = 0;         ///< LIBUSB_SUCCESS, or libusb's error
    std::size_t moved = 0;  ///< bytes of data, also of a transfer that failed
  };

  /// Borrows context and handle, which outlive the object. Throws std::bad_alloc.
  AwaitedTransfer(libusb_context* context, libusb_device_handle* handle);
  ~AwaitedTransfer();
  AwaitedTransfer(const AwaitedTransfer&) = delete;
  AwaitedTransfer& operator=(const AwaitedTransfer&) = delete;

  /// Runs one transfer within the time-out (0: none) and answers when it has come back. One that does not come back
  /// within two seconds after its time-out, or a second after Cancel, is left to libusb for good, and every later one
  /// fails at once. One thread at a time.
  Outcome Control(const UsbSetup& setup, std::span<std::uint8_t> data, Milliseconds timeout);
  Outcome BulkOut(std::uint8_t endpoint, std::span<const std::uint8_t> data, Milliseconds timeout);

  /// Ends a transfer under way in another thread, and every later one at once.
  void Cancel();

  /// The same until it is called with false.
  void SetHeld(bool held);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;

  // All that a request needs which is left to libusb, and may come back when this object is gone.
  struct Request {
    UsbTransfer transfer;
    std::vector<std::uint8_t> data;
    std::mutex mutex;
    bool inFlight = false;
    int done = 0;  ///< what libusb's event handling watches
  };

  static void LIBUSB_CALL OnCompletion(libusb_transfer* transfer);

  Outcome Run(Milliseconds timeout);
  int Submit();
  bool AwaitCompletion(TimePoint overdue);
  bool InFlight();
  bool Lost();
  void CancelInFlight();

  libusb_context* mContext;
  libusb_device_handle* mHandle;
  std::unique_ptr<Request> mRequest;
  // Guarded by the request's mutex.
  bool mCancelled = false;
  bool mHeld = false;
  bool mLost = false;
};

}  // namespace corvane
