#include "components/optics/TTivanMath.h"

#include <cmath>

namespace TivanUtility {

bool TTivanMath::IsZero(float x) {
  constexpr float kZero = 1e-6F;
  return std::fabs(x) < kZero;
}

}  // namespace TivanUtility
