// Runs sessions with one fault each, over all faults or a seeded sample of them, and lets the oracle judge each.
// The environment variable CORVANE_SWEEP=all asks for all; scripts/sweep sets it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Oracle.h"

struct SweepPlan {
  std::string name;
  Oracle::Kind kind;
  int failures;        ///< of the sound session
  std::size_t sample;  ///< faults in an ordinary test run
  bool disturbsReplies = true;
  bool disturbsTransfers = true;
  bool cutsLink = false;  ///< a transfer that is disturbed is the last until the instrument is opened again
};

/// Adds a failure to the running test for the first findings; prints how many faults were injected, how many of the
/// calls they hit answered success, and how many findings there were.
void Sweep(SweptInstrument& instrument, const SweepPlan& plan);
