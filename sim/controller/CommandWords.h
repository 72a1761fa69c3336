// What the tables of command words are made of. CommandSet looks a word up in them; the words themselves stand in
// DriveCommands.cpp (identity, memory, gratings, turret) and PartCommands.cpp (ports, filter, focus, slits, lines).
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "controller/CommandSet.h"
#include "controller/LineParameters.h"

namespace corvane::sim {

inline constexpr const char* kIllegalCommand = "E01";
inline constexpr const char* kMemoryError = "E02";
inline constexpr const char* kBadParameter = "E03";
inline constexpr const char* kNoFilterWheel = "E05";
inline constexpr const char* kNoSlit = "E09";
inline constexpr const char* kPositionUnknown = "E10";
inline constexpr const char* kNotFitted = "E12";

using Action = Reply (*)(ControllerInstrument&, const LineParameters&);

/// Which controllers know a word: those that keep their record in bytes (LX, MX), in texts (SX), or both.
enum class Family { kBoth, kBytes, kTexts };

struct CommandWord {
  std::string_view word;
  Action query;    ///< null: the word is no query
  Action command;  ///< null: the word is no command
  Family family = Family::kBoth;
};

std::span<const CommandWord> DriveWords();
std::span<const CommandWord> PartWords();

inline Reply Done(double milliseconds = 0) {
  return {Reply::Kind::kDone, "", milliseconds};
}
inline Reply Value(std::string text) {
  return {Reply::Kind::kValue, std::move(text), 0};
}
inline Reply Value(int number) {
  return Value(std::to_string(number));
}
inline Reply Error(const char* word) {
  return {Reply::Kind::kError, word, 0};
}
inline Reply DoneOr(bool done, const char* word, double milliseconds) {
  return done ? Done(milliseconds) : Error(word);
}

inline const MotionTimes& Motion(const ControllerInstrument& instrument) {
  return instrument.Description().motion;
}
inline const Parts& PartsOf(const ControllerInstrument& instrument) {
  return instrument.Description().parts;
}

}  // namespace corvane::sim
