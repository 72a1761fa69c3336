#include "model/SimulationClock.h"

namespace corvane::sim {

SimulationClock SystemClock() {
  return [] { return std::chrono::duration_cast<SimulationTime>(std::chrono::steady_clock::now().time_since_epoch()); };
}

}  // namespace corvane::sim
