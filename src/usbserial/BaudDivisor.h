// The divisor arithmetic of the bridge chips: from a baud rate to the divisor word and index bits of the baud request,
// and back. Used by the exported divisor functions and by LineSettings; pure.
#pragma once

#include <cstdint>

#include "usbserial/ftd2xx.h"

namespace corvane {

/// What a chip makes its baud rates from.
struct BaudClock {
  ULONG base;           ///< baud rate of divisor 0
  bool everyEighth;     ///< later chips divide by any eighth, the older ones by a half, a quarter and one eighth
  std::uint16_t index;  ///< index bits that select the clock
};

constexpr BaudClock kOlderBaudClock{3'000'000, false, 0};
constexpr BaudClock kBaudClock{3'000'000, true, 0};
constexpr BaudClock kFastBaudClock{12'000'000, true, 2};

/// The lower 14 bits of the word are the whole part; its upper two and bit 0 of the index encode eighths.
struct BaudDivisor {
  std::uint16_t word = 0;
  std::uint16_t index = 0;
};

/// Result codes of the exported functions.
constexpr int kDivisorOutOfRange = -1;
constexpr int kDivisorInexact = 0;
constexpr int kDivisorGood = 1;

/// 1; 0 the fraction lies nearer to the next whole divisor than to anything the chip can express, the divisor is
/// rounded down; -1 out of range, `divisor` untouched.
int CalcDivisor(const BaudClock& clock, ULONG baud, BaudDivisor& divisor);

/// The baud rate that a divisor stands for.
ULONG CalcBaudRate(const BaudClock& clock, const BaudDivisor& divisor);

struct BaudFit {
  BaudDivisor divisor;
  ULONG actual = 0;
  ULONG errorPercent = 0;
  bool above = false;  ///< the actual rate is not below the wanted one
};

/// The nearest divisor and how well it fits: 1 within 3 per cent; 0 beyond; -1 out of range, `fit` untouched.
int FitDivisor(const BaudClock& clock, ULONG baud, BaudFit& fit);

}  // namespace corvane
