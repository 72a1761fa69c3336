#include "usbserial/NewsCounter.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <ctime>

namespace corvane {
namespace {

static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t));

}  // namespace

// Either this side sees the pausing reader, or the reader sees the new count.
void NewsCounter::Announce() {
  ++mCount;
  if (mPausing != 0) {
    syscall(SYS_futex, &mCount, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
  }
}

void NewsCounter::Pause(std::uint32_t seen, std::chrono::nanoseconds limit) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(limit);
  const timespec time{static_cast<std::time_t>(seconds.count()), static_cast<long>((limit - seconds).count())};
  ++mPausing;
  syscall(SYS_futex, &mCount, FUTEX_WAIT_PRIVATE, seen, &time, nullptr, 0);
  --mPausing;
}

}  // namespace corvane
