#include "usbserial/BaudDivisor.h"

#include <algorithm>
#include <array>

namespace corvane {
namespace {

constexpr std::uint16_t kWholeMask = 0x3FFF;
constexpr std::uint16_t kUpperEighths = 1;  // index bit
constexpr ULONG kLargestWhole = 16383;
constexpr ULONG kAlmostWhole = 4;
constexpr std::uint64_t kToleratedPercent = 3;

struct FractionCode {
  std::uint16_t code;
  std::uint16_t index;
  int result;
};

struct FractionRow {
  ULONG upTo;  ///< hundredths
  FractionCode older;
  FractionCode later;
};

constexpr std::array<FractionRow, 11> kFractions{{{6, {0, 0, 1}, {0, 0, 1}},
                                                  {18, {0xC000, 0, 1}, {0xC000, 0, 1}},
                                                  {31, {0x8000, 0, 1}, {0x8000, 0, 1}},
                                                  {37, {0x8000, 0, 1}, {0, 1, 1}},
                                                  {43, {0x4000, 0, 1}, {0, 1, 1}},
                                                  {56, {0x4000, 0, 1}, {0x4000, 0, 1}},
                                                  {68, {0x4000, 0, 1}, {0x4000, 1, 1}},
                                                  {75, {0x4000, 0, 1}, {0x8000, 1, 1}},
                                                  {81, {0, 0, 0}, {0x8000, 1, 1}},
                                                  {93, {0, 0, 0}, {0xC000, 1, 1}},
                                                  {99, {0, 0, 0}, {0, 0, 0}}}};

// Eighths by code (the upper two bits) without and with the index bit.
constexpr std::array<std::array<ULONG, 4>, 2> kEighths{{{0, 4, 2, 1}, {3, 5, 6, 7}}};
constexpr int kCodeShift = 14;

// The two fastest rates of the fast clock, which stand outside the division, within 3 per cent.
struct FastRate {
  ULONG lowest;
  ULONG highest;
  std::uint16_t word;
};
constexpr std::array<FastRate, 2> kFastRates{{{11'640'000, 12'360'000, 0}, {7'760'000, 8'240'000, 1}}};

const FractionCode& CodeOf(const BaudClock& clock, ULONG hundredths) {
  const auto* const row =
      std::find_if(kFractions.begin(), kFractions.end(), [&](const FractionRow& r) { return hundredths <= r.upTo; });
  return clock.everyEighth ? row->later : row->older;
}

}  // namespace

int CalcDivisor(const BaudClock& clock, ULONG baud, BaudDivisor& divisor) {
  if (baud == 0 || clock.base / baud > kLargestWhole) {
    return kDivisorOutOfRange;
  }
  divisor.index = clock.index;
  if (clock.base == kFastBaudClock.base) {
    for (const FastRate& rate : kFastRates) {
      if (rate.lowest <= baud && baud <= rate.highest) {
        divisor.word = rate.word;
        return kDivisorGood;
      }
    }
  }
  divisor.word = static_cast<std::uint16_t>(clock.base / baud);
  const ULONG hundredths = clock.base % baud * 100 / baud;
  if (divisor.word == 1 && hundredths < kAlmostWhole) {
    divisor.word = 0;
  }
  if (divisor.word == 0) {
    return kDivisorGood;
  }
  const FractionCode& fraction = CodeOf(clock, hundredths);
  divisor.word |= fraction.code;
  divisor.index |= fraction.index;
  return fraction.result;
}

ULONG CalcBaudRate(const BaudClock& clock, const BaudDivisor& divisor) {
  const ULONG whole = divisor.word & kWholeMask;
  const ULONG eighths =
      kEighths.at(divisor.index & kUpperEighths).at(static_cast<std::size_t>(divisor.word >> kCodeShift));
  if (whole == 0) {
    return clock.base;
  }
  if (clock.base == kFastBaudClock.base && whole == 1 && eighths == 0) {
    return clock.base * 2 / 3;
  }
  return clock.base * 8 / (8 * whole + eighths);
}

int FitDivisor(const BaudClock& clock, ULONG baud, BaudFit& fit) {
  BaudDivisor divisor;
  const int result = CalcDivisor(clock, baud, divisor);
  if (result == kDivisorOutOfRange) {
    return kDivisorOutOfRange;
  }
  if (result == kDivisorInexact) {
    divisor.word = static_cast<std::uint16_t>((divisor.word & kWholeMask) + 1);
  }
  const ULONG actual = CalcBaudRate(clock, divisor);
  const bool above = baud <= actual;
  const std::uint64_t low = std::min(baud, actual);
  const std::uint64_t high = std::max(baud, actual);
  const std::uint64_t errorPercent = high * 100 / low - 100;
  const std::uint64_t remainder = high % low * 100 % low;
  fit = {divisor, actual, static_cast<ULONG>(errorPercent), above};
  const bool good = errorPercent < kToleratedPercent || (errorPercent == kToleratedPercent && remainder == 0);
  return good ? kDivisorGood : kDivisorInexact;
}

}  // namespace corvane
