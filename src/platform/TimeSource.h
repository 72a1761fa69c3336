// The one seam through which the library reads clocks and sleeps. Tests put their own source in place, so waits of
// minutes run in microseconds; everybody else gets the system's clocks. Not used by usbserial, which waits on threads.
#pragma once

#include <sys/time.h>

#include <cstdint>

namespace corvane {

class TimeSource {
 public:
  /// Microseconds of a clock that only moves forward; the origin has no meaning. For measuring durations.
  virtual std::uint64_t MonotonicMicroseconds() = 0;
  /// The wall clock. For tick counts and dates.
  virtual timeval WallClock() = 0;
  /// Blocks the calling thread for at least this long.
  virtual void SleepMicroseconds(std::uint64_t microseconds) = 0;

 protected:
  // Nobody owns a source through this class. Not virtual, so that the system's has nothing to destroy at process end:
  // exit handlers of the host may still call the library.
  ~TimeSource() = default;
};

/// The source in force: the system's clocks unless a ScopedTimeSource lives.
TimeSource& Time();

/// Milliseconds of Time()'s monotonic clock.
std::uint64_t MonotonicMilliseconds();
/// Sleeps on Time().
void SleepMilliseconds(std::uint64_t milliseconds);

/// Puts a source in force for its lifetime. The source is borrowed and must outlive the scope. Not nested across
/// threads: meant for tests and benchmarks.
class ScopedTimeSource {
 public:
  explicit ScopedTimeSource(TimeSource& source);
  ~ScopedTimeSource();
  ScopedTimeSource(const ScopedTimeSource&) = delete;
  ScopedTimeSource& operator=(const ScopedTimeSource&) = delete;

 private:
  TimeSource* mPrevious;
};

}  // namespace corvane
