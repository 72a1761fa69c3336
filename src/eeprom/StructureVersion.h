// Version of an EEPROM record's structure, as its text states it ("2.5"). The record's layout and the sign of the sine
// correction depend on it.
#pragma once

#include <string_view>

namespace corvane {

struct StructureVersion {
  int majorNumber = 0;
  int minorNumber = 0;

  /// The text up to the first "." and the text from there to the next ".", each as far as it is a decimal number; a
  /// missing part is 0, a number beyond int its nearest bound.
  static StructureVersion Parse(std::string_view text);

  /// The earlier of the two layouts of a record of bytes: one entrance, short blaze texts.
  constexpr bool IsUpToMajor2() const { return majorNumber <= 2; }
  constexpr bool IsAtLeast(StructureVersion other) const {
    return majorNumber != other.majorNumber ? majorNumber > other.majorNumber : minorNumber >= other.minorNumber;
  }
};

}  // namespace corvane
