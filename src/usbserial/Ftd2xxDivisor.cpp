// Exported functions of the divisor arithmetic. They know no device.
#include "usbserial/BaudDivisor.h"
#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BaudClock;
using corvane::Store;

namespace {

int Calc(const BaudClock& clock, ULONG baud, PUSHORT divisor, PUSHORT index) {
  corvane::BaudDivisor found;
  if (divisor == nullptr || index == nullptr) {
    return corvane::kDivisorOutOfRange;
  }
  const int result = CalcDivisor(clock, baud, found);
  if (result != corvane::kDivisorOutOfRange) {
    *divisor = found.word;
    *index = found.index;
  }
  return result;
}

int Get(const BaudClock& clock, ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent,
        int* above) {
  corvane::BaudFit fit;
  if (divisor == nullptr || index == nullptr) {
    return corvane::kDivisorInexact;
  }
  const int result = FitDivisor(clock, baud, fit);
  if (result != corvane::kDivisorOutOfRange) {
    *divisor = fit.divisor.word;
    *index = fit.divisor.index;
    Store(actual, fit.actual);
    Store(errorPercent, fit.errorPercent);
    Store(above, fit.above ? 1 : 0);
  }
  return result;
}

const BaudClock& ClockOf(int newChip) {
  return newChip == 0 ? corvane::kOlderBaudClock : corvane::kBaudClock;
}

}  // namespace

int FT_CalcDivisor(ULONG baud, PUSHORT divisor, PUSHORT index, int newChip) {
  return Calc(ClockOf(newChip), baud, divisor, index);
}

int FT_CalcDivisorHi(ULONG baud, PUSHORT divisor, PUSHORT index) {
  return Calc(corvane::kFastBaudClock, baud, divisor, index);
}

int FT_GetDivisor(ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent, int* above,
                  int newChip) {
  return Get(ClockOf(newChip), baud, divisor, index, actual, errorPercent, above);
}

int FT_GetDivisorHi(ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent, int* above) {
  return Get(corvane::kFastBaudClock, baud, divisor, index, actual, errorPercent, above);
}

ULONG FT_CalcBaudRate(USHORT divisor, USHORT index) {
  return CalcBaudRate(corvane::kBaudClock, {divisor, index});
}

ULONG FT_CalcBaudRateHi(USHORT divisor, USHORT index) {
  return CalcBaudRate(corvane::kFastBaudClock, {divisor, index});
}
