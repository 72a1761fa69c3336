// An ordinary session (initialise, exported functions, close) that is run again and again with one transfer failing,
// and the rules that hold after each run whatever failed. Links the library's objects and not the shared library, so
// that the pauses between reply lines cost nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/EveryFunction.h"

struct SessionResult {
  struct Answer {
    std::string call;
    unsigned int status;
    Outputs out;
  };
  bool found = false;
  /// Of every call in order.
  std::vector<Answer> answers;
  /// Operations before the first and after the last of them.
  std::uint64_t opened = 0;
  std::uint64_t driven = 0;

  /// Calls that did not succeed.
  int Failures() const;
  /// Every call answered as in the other session.
  bool SameStatuses(const SessionResult& other) const;
  /// The first call that reports something else, though its status does not say why; empty when there is none.
  std::string Difference(const SessionResult& other) const;
};

/// Every exported function, and how many of them fail on a sound controller: the shutter's five and the coefficients'
/// four; on an SX also the entrance mirror's two and the accessory lines' two.
const std::vector<ExportedFunction>& ControllerSession();
constexpr int kControllerFailures = 9;
constexpr int kSxFailures = 13;

/// Runs a session. Fails the running test when a status is not a defined one or a failing call wrote an output.
/// operations counts what can fail.
SessionResult RunSession(const std::string& directory, const std::vector<ExportedFunction>& calls,
                         const std::function<std::uint64_t()>& operations);

/// Operations from one fault to the next, by phase. Opening and closing repeat themselves some hundred times for the
/// record: behind their first operations a prime meets every kind.
struct Strides {
  std::uint64_t record;
  std::uint64_t driving;
};

/// Runs sessions with a fault at operations 1 to the last, and a sound one at the end, which must be as the baseline.
/// None may leave a descriptor or a thread behind. Ends at the first failure.
void Sweep(const SessionResult& baseline, std::uint64_t operations, const Strides& strides,
           const std::function<void(std::uint64_t)>& runWithFaultAt, const std::function<SessionResult()>& run);
