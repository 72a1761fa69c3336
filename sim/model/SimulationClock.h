// The time that simulated instruments live by: a clock that only moves forward, injected so that tests need not wait.
#pragma once

#include <chrono>
#include <functional>

namespace corvane::sim {

using SimulationTime = std::chrono::microseconds;
using SimulationClock = std::function<SimulationTime()>;

/// The machine's own monotonic clock.
SimulationClock SystemClock();

}  // namespace corvane::sim
