// What a detector at an exit port may see. No instrument stores it: the values are fixed, for instruments of every
// kind.
#pragma once

namespace corvane {

/// In nm.
struct PortLimits {
  float low;
  float high;
  bool limited;
};
inline constexpr PortLimits kDirectPort{.low = 180.0F, .high = 1000.0F, .limited = true};
inline constexpr PortLimits kSidePort{.low = 0.0F, .high = 2000.0F, .limited = false};

}  // namespace corvane
