// Small numeric tests shared by components and calibration.
#pragma once

namespace TivanUtility {

class TTivanMath {
 public:
  /// True when |x| < 1e-6. A NaN is not zero.
  static bool IsZero(float x);
};

}  // namespace TivanUtility
