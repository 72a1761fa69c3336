// Runs libusb's event handling on the calling thread until something that the caller waits for has happened. Used by
// the read pipeline and the bulk OUT path. Any thread may pump; libusb lets one of them handle the events of all open
// devices and wakes the others after each.
#pragma once

#include <libusb.h>

#include <chrono>

namespace corvane {

class EventPump {
 public:
  explicit EventPump(libusb_context* context) : mContext(context) {}

  static constexpr std::chrono::milliseconds kSlice{100};

  /// Handles events, or waits while another thread does, until some event was handled, `*done` is not 0, or the slice
  /// of time (below a second) is over. False when event handling has failed so often in a row that nothing is to be
  /// expected from it.
  bool Step(int* done, std::chrono::milliseconds slice = kSlice);

 private:
  libusb_context* mContext;
  int mFailures = 0;
};

}  // namespace corvane
