#include "legacy/CorvDataValues.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <limits>

namespace corvane {
namespace {

constexpr std::int32_t kFewest = 1;
constexpr std::int32_t kMost = 3;

bool OneToThree(std::int32_t value) {
  return value >= kFewest && value <= kMost;
}

/// Points may hold anything, so the arithmetic wraps as it does in the instruments' own 32-bit integers.
std::int32_t WrappedProduct(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

std::int32_t WrappedDifference(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

}  // namespace

CorvDataValues::CorvDataValues() {
  motors = {{
      {{5000, 80000, 1000}, 0, 480000},
      {{40000, 80000, 1000}, 0, 4800},
      {{20000, 30000, 1000}, 0, 4800},
      {{100000, 100000, 1000}, 0, 80},
      {{40000, 80000, 1000}, 0, 4800},
  }};
  holes = {{
      {480000, {4000, 80000, 1000}, 1000, 5000, {5000, 80000, 1000}},
      {3000, {10000, 80000, 1000}, 10, 2000, {400000, 400000, 1000}},
  }};
  for (Slit& slit : slits) {
    slit.points = {{{-80, 10}, {800, 2200}}};
    DeriveSlitCoefficients(slit);
  }
  for (Turret& each : turrets) {
    each.gratings[0].start = 1;
    each.gratings[1].start = 160000;
    each.gratings[2].start = 320000;
  }
}

std::size_t CorvDataValues::FilterCount() const {
  return static_cast<std::size_t>(std::clamp<std::int32_t>(numberOfFilters, 0, kFilters));
}

std::size_t CorvDataValues::ActiveTurretIndex() const {
  return OneToThree(turret) ? static_cast<std::size_t>(turret - 1) : 0;
}

void ClampTurret(CorvDataValues& values) {
  values.turret = OneToThree(values.turret) ? values.turret : kFewest;
}

void ClampGratings(CorvDataValues::Turret& turret) {
  turret.numberOfGratings = OneToThree(turret.numberOfGratings) ? turret.numberOfGratings : kMost;
}

void DeriveSlitCoefficients(CorvDataValues::Slit& slit) {
  const auto& [first, second] = slit.points;
  const std::int32_t widths = WrappedDifference(second.width, first.width);
  slit.c2 = 0.0F;
  slit.c1 = 0.0F;
  slit.c0 = 0.0F;
  if (widths != 0) {
    const std::int32_t products =
        WrappedDifference(WrappedProduct(second.width, first.steps), WrappedProduct(second.steps, first.width));
    slit.c1 = static_cast<float>(WrappedDifference(second.steps, first.steps)) / static_cast<float>(widths);
    slit.c0 = static_cast<float>(products) / static_cast<float>(widths);
  }
}

}  // namespace corvane

namespace {

bool IsDigit(char character) {
  return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

bool EndsNumber(char character) {
  return character == '\0' || (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

std::string LeadingDigits(const char*& text) {
  std::string digits;
  while (IsDigit(*text)) {
    digits += *text++;
  }
  return digits;
}

std::int32_t ToNumber(const std::string& digits) {
  constexpr int kDetectBase = 0;
  constexpr long kLargest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(std::strtol(digits.c_str(), nullptr, kDetectBase), kLargest));
}

}  // namespace

int SplitVersionString(const char* text, std::int32_t* majorNumber, std::int32_t* minorNumber) {
  const std::string majorDigits = LeadingDigits(text);
  if (*text != '.') {
    return 0;
  }
  ++text;
  const std::string minorDigits = LeadingDigits(text);
  if (!EndsNumber(*text)) {
    return 0;
  }
  *majorNumber = ToNumber(majorDigits);
  *minorNumber = ToNumber(minorDigits);
  return 1;
}
