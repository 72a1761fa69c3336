// libusb's functions as the tests of the bridge library see them called: passed on, or answered in a way that the
// virtual bus cannot produce. A synchronous transfer fails the test. Every test leaves the switches as they were.
#pragma once

#include <atomic>
#include <chrono>

namespace corvane {

struct LibusbSeam {
  std::atomic<bool> refuseStart{false};  ///< libusb_init fails
  std::atomic<bool> refuseReads{false};  ///< bulk IN transfers are not taken
  std::atomic<bool> loseCancels{false};  ///< cancelling does nothing
  /// How long the thread that handles events stays behind the callback of each transfer.
  std::atomic<std::chrono::milliseconds> holdBehindCallback{};
};

extern LibusbSeam gLibusb;

}  // namespace corvane
