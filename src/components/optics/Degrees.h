// The angle's unit of the stored drive geometry.
#pragma once

namespace corvane {

inline constexpr long double kDegreesPerRadian = 57.29577951308232;

}  // namespace corvane
