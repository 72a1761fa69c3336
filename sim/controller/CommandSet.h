// The controller's command words: a table from word to action on the instrument. Used by MotionController, which does
// the framing; it knows neither bytes nor time.
#pragma once

#include <string>
#include <string_view>

#include "controller/ControllerInstrument.h"

namespace corvane::sim {

struct Reply {
  enum class Kind { kDone, kValue, kError };
  Kind kind = Kind::kDone;
  std::string text;         ///< the value, or the error word
  double milliseconds = 0;  ///< that the action takes
};

/// Carries out one line (no carriage return). A word with a question mark is a query.
Reply Execute(ControllerInstrument& instrument, std::string_view line);

/// The word of a line, with its question mark where it is a query.
std::string_view WordOf(std::string_view line);

/// Whether controllers of some model know the word.
bool IsCommandWord(std::string_view word);

}  // namespace corvane::sim
