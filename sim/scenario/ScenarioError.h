// What every reader of a scenario file throws.
#pragma once

#include <stdexcept>

namespace corvane::sim {

/// The message names the file and the place in it, and what was expected there.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace corvane::sim
