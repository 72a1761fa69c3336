#include "platform/TickCount.h"

#include <atomic>
#include <cstdint>

#include "platform/TimeSource.h"

namespace {

std::atomic<std::int64_t> gOriginSeconds{0};

class TickCountStart {
 public:
  TickCountStart() noexcept { InitialiseTickCount(); }
};
const TickCountStart gStart;

}  // namespace

void InitialiseTickCount() {
  gOriginSeconds.store(corvane::Time().WallClock().tv_sec);
}

unsigned int GetTickCount() {
  const timeval now = corvane::Time().WallClock();
  // Unsigned from here on: the product wraps by design.
  const auto seconds = static_cast<std::uint64_t>(now.tv_sec - gOriginSeconds.load());
  return static_cast<unsigned int>(seconds * 1'000U + static_cast<std::uint64_t>(now.tv_usec) / 1'000U);
}
