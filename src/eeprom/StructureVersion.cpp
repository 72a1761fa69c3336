#include "eeprom/StructureVersion.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace corvane {

namespace {

int LeadingInteger(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) {
    return 0;
  }
  text.remove_prefix(start);
  const bool negative = text.front() == '-';
  if (text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') {
      return 0;
    }
  }
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    return negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
  }
  return value;
}

}  // namespace

StructureVersion StructureVersion::Parse(std::string_view text) {
  StructureVersion version;
  const std::size_t dot = text.find('.');
  version.majorNumber = LeadingInteger(text.substr(0, dot));
  if (dot != std::string_view::npos) {
    const std::string_view rest = text.substr(dot + 1);
    version.minorNumber = LeadingInteger(rest.substr(0, rest.find('.')));
  }
  return version;
}

}  // namespace corvane
