// A failure that a virtual bus is told to produce at a numbered operation, for fault sweeps and unplug tests.
#pragma once

#include <cerrno>
#include <cstdint>

struct UsbFault {
  /// Kinds of operation (an operation is one request block handed to the kernel), to be or-ed.
  static constexpr unsigned kControl = 1;
  static constexpr unsigned kBulkOut = 2;
  static constexpr unsigned kBulkIn = 4;
  static constexpr unsigned kAny = kControl | kBulkOut | kBulkIn;

  enum class Effect {
    /// The submission is refused with the error number.
    kSubmitFails,
    /// The operation is accepted and ends with the error number as its status, without having moved anything.
    kCompletionFails,
    /// The chip is pulled out: the submission answers ENODEV, and so does everything after it.
    kUnplug
  };

  Effect effect = Effect::kSubmitFails;
  /// The operation that is hit, counted from 1 among the given kinds since the fault was set. Bulk IN operations come
  /// with the clock (idle packets), so a sweep that must be repeatable counts control and bulk OUT only.
  std::uint64_t operation = 1;
  unsigned kinds = kAny;
  /// Hit every later operation of these kinds too.
  bool fromThenOn = false;
  /// EIO submits fail with LIBUSB_ERROR_IO; EPROTO completes with LIBUSB_TRANSFER_ERROR, EPIPE with ..._STALL.
  int error = EIO;
};
