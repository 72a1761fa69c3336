#include "platform/TimeSource.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <type_traits>

namespace corvane {
namespace {

class SystemTime final : public TimeSource {
 public:
  std::uint64_t MonotonicMicroseconds() override {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000U + static_cast<std::uint64_t>(now.tv_nsec) / 1'000U;
  }

  timeval WallClock() override {
    timeval now{};
    gettimeofday(&now, nullptr);
    return now;
  }

  void SleepMicroseconds(std::uint64_t microseconds) override {
    timespec left{static_cast<time_t>(microseconds / 1'000'000U), static_cast<long>(microseconds % 1'000'000U) * 1'000};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
  }
};

static_assert(std::is_trivially_destructible_v<SystemTime>, "exit handlers of the host may still wait by it");

SystemTime& System() {
  static SystemTime time;
  return time;
}

std::atomic<TimeSource*> gReplacement{nullptr};

}  // namespace

TimeSource& Time() {
  TimeSource* replacement = gReplacement.load(std::memory_order_acquire);
  return replacement != nullptr ? *replacement : System();
}

std::uint64_t MonotonicMilliseconds() {
  return Time().MonotonicMicroseconds() / 1'000U;
}

void SleepMilliseconds(std::uint64_t milliseconds) {
  Time().SleepMicroseconds(milliseconds * 1'000U);
}

ScopedTimeSource::ScopedTimeSource(TimeSource& source) : mPrevious(gReplacement.exchange(&source)) {
}

ScopedTimeSource::~ScopedTimeSource() {
  gReplacement.store(mPrevious);
}

}  // namespace corvane
