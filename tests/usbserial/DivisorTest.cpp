// The divisor functions against the chips' own terms: a whole part and eighths, by hundredths of the fraction.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "usbserial/ftd2xx.h"

namespace {

// Of FT_Calc...: result, divisor, index. Of FT_Get...: result, divisor, index, actual, per cent, above.
using Figures = std::array<long, 9>;

// Eighths by the hundredths from 0 to 99; '-' where the next whole divisor is nearer.
std::string Eighths(bool newChip) {
  const auto run = [](int length, char eighth) { return std::string(static_cast<std::size_t>(length), eighth); };
  return newChip ? run(7, '0') + run(12, '1') + run(13, '2') + run(12, '3') + run(13, '4') + run(12, '5') +
                       run(13, '6') + run(12, '7') + run(6, '-')
                 : run(7, '0') + run(12, '1') + run(19, '2') + run(38, '4') + run(24, '-');
}

enum Kind { kOldest, kLater, kFast };

constexpr std::array<std::array<long, 2>, 8> kCodes{
    {{0, 0}, {0xC000, 0}, {0x8000, 0}, {0, 1}, {0x4000, 0}, {0x4000, 1}, {0x8000, 1}, {0xC000, 1}}};

Figures Expected(Kind kind, const std::string& eighths, std::uint64_t baud) {
  const bool fast = kind == kFast;
  const std::uint64_t base = fast ? 12'000'000 : 3'000'000;
  if (baud == 0 || base / baud >= 16384) {
    return {-1, 0, 0, -1};
  }
  std::uint64_t whole = base / baud;
  const auto hundredths = static_cast<std::size_t>(100 * base / baud % 100);
  char eighth = eighths[hundredths];
  if (fast && baud >= 7'760'000 && baud <= 8'240'000) {
    whole = 1;
    eighth = '0';
  } else if (whole == 0 || (fast && baud >= 11'640'000) || (whole == 1 && hundredths < 4)) {
    whole = 0;
    eighth = '0';
  }
  const bool inexact = eighth == '-';
  const auto& [code, bit] = kCodes[inexact ? 0 : static_cast<std::size_t>(eighth - '0')];
  const long index = bit | (fast ? 2 : 0);
  const std::uint64_t taken = whole + (inexact ? 1 : 0);
  const std::uint64_t parts = 8 * taken + (inexact ? 0 : static_cast<std::uint64_t>(eighth - '0'));
  std::uint64_t actual = taken == 0 ? base : 8 * base / parts;
  if (fast && parts == 8) {
    actual = 8'000'000;
  }
  const auto [low, high] = std::minmax(baud, actual);
  return {inexact ? 0 : 1,
          static_cast<long>(whole) | code,
          index,
          100 * high <= 103 * low,
          static_cast<long>(taken) | code,
          index,
          static_cast<long>(actual),
          static_cast<long>(100 * (high - low) / low),
          actual >= baud};
}

Figures Actual(Kind kind, ULONG baud) {
  const int newChip = kind == kOldest ? 0 : 1;
  std::array<USHORT, 2> calc{};
  std::array<USHORT, 2> get{};
  ULONG actual = 0;
  ULONG percent = 0;
  int above = 0;
  const std::array results =
      kind == kFast ? std::array{FT_CalcDivisorHi(baud, &calc[0], &calc[1]),
                                 FT_GetDivisorHi(baud, &get[0], &get[1], &actual, &percent, &above)}
                    : std::array{FT_CalcDivisor(baud, &calc[0], &calc[1], newChip),
                                 FT_GetDivisor(baud, &get[0], &get[1], &actual, &percent, &above, newChip)};
  if (results[1] >= 0) {
    EXPECT_EQ((kind == kFast ? FT_CalcBaudRateHi : FT_CalcBaudRate)(get[0], get[1]), actual) << baud;
  }
  return {
      results[0], calc[0], calc[1], results[1], get[0], get[1], static_cast<long>(actual), static_cast<long>(percent),
      above};
}

class DivisorTest : public testing::TestWithParam<Kind> {};

TEST_P(DivisorTest, EveryRateHasTheDivisorOfItsFraction) {
  const Kind kind = GetParam();
  const std::string eighths = Eighths(kind != kOldest);
  const auto check = [&](ULONG baud) { ASSERT_EQ(Expected(kind, eighths, baud), Actual(kind, baud)) << baud; };
  // Every rate up to 4,000,000, then in steps; the ends of the fastest rates; a rate as large as can be.
  for (ULONG baud = 0; baud <= 12'500'000 && !HasFailure(); baud += baud < 4'000'000 ? 1 : 37) {
    check(baud);
  }
  for (const ULONG begin : {7'760'000U, 8'240'001U, 11'538'462U, 11'640'000U, 12'360'001U}) {
    check(begin - 1);
    check(begin);
  }
  check(0xFFFFFFFF);
}

INSTANTIATE_TEST_SUITE_P(Kinds, DivisorTest, testing::Values(kOldest, kLater, kFast));

}  // namespace
