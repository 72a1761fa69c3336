#include "controller/CommandSet.h"

#include <array>

#include "controller/CommandWords.h"

namespace corvane::sim {
namespace {

const CommandWord* Find(std::string_view word) {
  for (const std::span<const CommandWord> words : {DriveWords(), PartWords()}) {
    for (const CommandWord& entry : words) {
      if (entry.word == word) {
        return &entry;
      }
    }
  }
  return nullptr;
}

/// What a word does, with its question mark or without; null where it is no query or no command.
Action ActionOf(const CommandWord& entry, bool isQuery) {
  return isQuery ? entry.query : entry.command;
}

bool Knows(const ControllerInstrument& instrument, Family family) {
  return family == Family::kBoth || (family == Family::kTexts) == instrument.KeepsTexts();
}

}  // namespace

std::string_view WordOf(std::string_view line) {
  return line.substr(0, line.find(' '));
}

bool IsCommandWord(std::string_view word) {
  const bool isQuery = word.ends_with('?');
  const CommandWord* const entry = Find(word.substr(0, word.size() - (isQuery ? 1 : 0)));
  return entry != nullptr && ActionOf(*entry, isQuery) != nullptr;
}

Reply Execute(ControllerInstrument& instrument, std::string_view line) {
  std::string_view word = WordOf(line);
  const LineParameters parameters(line.substr(word.size()));
  const bool isQuery = word.ends_with('?');
  if (isQuery) {
    word.remove_suffix(1);
  }
  const CommandWord* const entry = Find(word);
  const bool isKnown = entry != nullptr && Knows(instrument, entry->family);
  const Action action = isKnown ? ActionOf(*entry, isQuery) : nullptr;
  return action == nullptr ? Error(kIllegalCommand) : action(instrument, parameters);
}

}  // namespace corvane::sim
