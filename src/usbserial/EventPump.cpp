#include "usbserial/EventPump.h"

#include <sys/time.h>

#include <thread>

namespace corvane {
namespace {

constexpr int kMaxFailures = 100;

}  // namespace

bool EventPump::Step(int* done, std::chrono::milliseconds slice) {
  timeval limit{0, std::chrono::microseconds(slice).count()};
  const int result = libusb_handle_events_timeout_completed(mContext, &limit, done);
  if (result == LIBUSB_SUCCESS || result == LIBUSB_ERROR_INTERRUPTED) {
    mFailures = 0;
    return true;
  }
  // Not a loop without a pause: the cause may be another device of the same context that is just going away.
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return ++mFailures < kMaxFailures;
}

}  // namespace corvane
