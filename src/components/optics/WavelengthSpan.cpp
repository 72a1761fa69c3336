#include "components/optics/WavelengthSpan.h"

#include <cmath>
#include <cstdint>

#include "components/optics/TTivanMath.h"

namespace corvane {
namespace {

/// Half of the span reported around a centre, nm.
constexpr float kHalfSpan = 50.0F;
/// Pixels by which a window's ends are counted.
constexpr int kPixelStep = 512;

}  // namespace

float GreatestWavelength(float lines, float angularDeviation) {
  // Square root of 3, in nm per mm: 2 sin(60 degrees), the turret's greatest angle.
  constexpr float kGreatestSine = 1732050.75F;
  constexpr double kRadiansPerDegree = 0.017453292519943278;
  if (TivanUtility::TTivanMath::IsZero(lines)) {
    return 0.0F;
  }
  const auto angle = static_cast<float>(angularDeviation * kRadiansPerDegree);
  return static_cast<float>(kGreatestSine * std::cos(static_cast<double>(angle)) / lines);
}

void SpanAround(float centre, float& low, float& high) {
  low = centre - kHalfSpan;
  high = centre + kHalfSpan;
}

void SpanOfWindow(float centre, int first, int last, float& low, float& high) {
  // Whole numbers, both divided before anything else: a last pixel of 1023 still counts as the centre.
  const int below = 1 - first / kPixelStep;
  const std::int64_t above = (std::int64_t{last} - kPixelStep) / kPixelStep;
  low = centre - kHalfSpan * static_cast<float>(below);
  high = centre + kHalfSpan * static_cast<float>(above);
}

}  // namespace corvane
