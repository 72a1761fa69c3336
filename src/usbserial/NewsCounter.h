// Counts what is new for readers that poll, so that a pause between two looks ends when there is something to see. Used
// by the read pipeline and FT_Read. It keeps nothing else: the reader looks again, whatever ended its pause.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace corvane {

class NewsCounter {
 public:
  /// To be taken before the look: news that come after it are not slept over.
  std::uint32_t Now() const { return mCount; }

  void Announce();

  /// Waits until something is announced after `seen` was taken, or for the limit.
  void Pause(std::uint32_t seen, std::chrono::nanoseconds limit);

 private:
  std::atomic<std::uint32_t> mCount{0};
  std::atomic<int> mPausing{0};
};

}  // namespace corvane
