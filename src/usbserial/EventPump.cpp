#include "usbserial/EventPump.h"

#include <sys/time.h>

#include <chrono>
#include <thread>

namespace corvane {
namespace {

constexpr timeval kSlice{0, 100'000};
constexpr int kMaxFailures = 100;

}  // namespace

bool EventPump::Step(int* done) {
  timeval slice = kSlice;
  const int result = libusb_handle_events_timeout_completed(mContext, &slice, done);
  if (result == LIBUSB_SUCCESS || result == LIBUSB_ERROR_INTERRUPTED) {
    mFailures = 0;
    return true;
  }
  // Not a loop without a pause: the cause may be another device of the same context that is just going away.
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return ++mFailures < kMaxFailures;
}

}  // namespace corvane
