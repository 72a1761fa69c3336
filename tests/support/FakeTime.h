// A clock that tests move: sleeping advances it at once. In force for its lifetime.
#pragma once

#include <cstdint>

#include "platform/TimeSource.h"

class FakeTime final : public corvane::TimeSource {
 public:
  std::uint64_t MonotonicMicroseconds() override { return mMonotonic; }
  timeval WallClock() override {
    return {static_cast<time_t>(mWall / 1'000'000U), static_cast<suseconds_t>(mWall % 1'000'000U)};
  }
  void SleepMicroseconds(std::uint64_t microseconds) override {
    mSlept += microseconds;
    Advance(microseconds);
  }

  /// Lets time pass on both clocks.
  void Advance(std::uint64_t microseconds) {
    mMonotonic += microseconds;
    mWall += microseconds;
  }
  void AdvanceMilliseconds(std::uint64_t milliseconds) { Advance(milliseconds * 1'000U); }
  void SetWallSeconds(std::uint64_t seconds) { mWall = seconds * 1'000'000U; }
  /// Microseconds spent in SleepMicroseconds so far.
  std::uint64_t Slept() const { return mSlept; }

 private:
  std::uint64_t mMonotonic = 1'000'000U;
  std::uint64_t mWall = 1'700'000'000'000'000U;
  std::uint64_t mSlept = 0;
  corvane::ScopedTimeSource mScope{*this};
};
