// Numbers with a fraction to whole ones, for values that come from instruments and callers and may be anything.
#pragma once

#include <cmath>
#include <limits>

namespace corvane {

/// Cuts toward zero; a value outside the range of int gives its end, NaN gives 0.
inline int Truncated(float value) {
  if (std::isnan(value)) {
    return 0;
  }
  // 2^31 is exact in float, INT_MAX is not.
  constexpr float kEnd = 2147483648.0F;
  if (value >= kEnd) {
    return std::numeric_limits<int>::max();
  }
  return value <= -kEnd ? std::numeric_limits<int>::min() : static_cast<int>(value);
}

}  // namespace corvane
