// Numbers with a fixed number of decimals, as instruments and the command-line tool write them.
#pragma once

#include <array>
#include <charconv>
#include <string>

namespace corvane::sim {

/// Decimal digits as printf's %.Nf gives them, whatever the locale. Zero has no sign.
inline std::string Fixed(double value, int decimals) {
  std::array<char, 400> buffer{};
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  const std::string text(buffer.data(), error == std::errc{} ? end : buffer.data());
  const bool isNegativeZero = text.starts_with('-') && text.find_first_not_of("-0.") == std::string::npos;
  return isNegativeZero ? text.substr(1) : text;
}

}  // namespace corvane::sim
