// The numbered texts in which an SX keeps its record, and what each number holds. Used by ControllerInstrument
// (firmware) and by the state file; it does not know the library's view of the same numbers.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

class ParameterMemory {
 public:
  static constexpr int kSize = 128;
  static constexpr std::size_t kLongestText = 239;

  ParameterMemory() = default;
  /// The texts of a record; numbers without a meaning stay empty.
  ParameterMemory(const Record& record, StructureVersion version);

  static bool IsValid(int number) { return number >= 0 && number < kSize; }
  /// number is valid.
  const std::string& Text(int number) const { return mTexts[static_cast<std::size_t>(number)]; }
  /// The same; cuts what is longer than kLongestText.
  void SetText(int number, std::string_view text);

  /// What the texts hold, laid over base. A number that cannot be read counts as 0; counts are brought into range.
  Record Decode(const Record& base) const;

  const std::array<std::string, kSize>& Texts() const { return mTexts; }

 private:
  std::array<std::string, kSize> mTexts;
};

}  // namespace corvane::sim
