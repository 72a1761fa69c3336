// An ordinary session (initialise, exported functions, close) that is run again and again with something disturbed, and
// what the instrument shows past the library after each call. Links the library's objects and not the shared library,
// so that the pauses between reply lines cost nothing.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "SweptInstrument.h"
#include "support/EveryFunction.h"

using Calls = std::vector<ExportedFunction>;

struct SessionResult {
  struct Answer {
    unsigned int status = 0;
    Outputs out;
    bool isHit = false;
    Stand stand;          ///< after the call
    StoredRecord record;  ///< after the call, if kept
  };
  bool found = false;
  bool isOpeningHit = false;
  bool isClosingHit = false;
  std::vector<Answer> answers;  ///< of every call in order
  StoredRecord record;          ///< after closing
  /// Transfers and lines before the first call, after the last, and at the end.
  struct Marks {
    std::uint64_t opened = 0;
    std::uint64_t driven = 0;
    std::uint64_t closed = 0;
  } transfers, lines;
  std::string broken;  ///< the rule that a single call broke: an undefined status, an output written on failure
};

struct SessionOptions {
  bool liftsBeforeClosing = true;  ///< the faults
  bool keepsRecords = false;       ///< after each call
};

/// Runs a session without the calls of some numbers, whose answers stay empty.
SessionResult RunSession(SweptInstrument& instrument, const Calls& calls, const std::set<std::size_t>& left,
                         const SessionOptions& options = {});

/// Every exported function, an older instrument's parts, and how many fail on a sound controller: the shutter's five
/// and the coefficients' four; on an SX also the entrance mirror's two and the accessory lines' two.
const Calls& ControllerSession();
const Calls& LegacySession();
constexpr int kControllerFailures = 9;
constexpr int kSxFailures = 13;
