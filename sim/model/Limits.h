// What whole numbers of a simulated instrument may be. Its commands, its state file and scenario files share these.
#pragma once

#include <cstdint>
#include <string_view>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

struct Limits {
  int least;
  int most;
  constexpr bool Hold(std::int64_t value) const { return value >= least && value <= most; }
};

inline constexpr Limits kPortNumbers{0, 1};    ///< 0 direct, 1 side
inline constexpr Limits kLinePatterns{0, 15};  ///< four input or output lines
inline constexpr Limits kShutterModes{0, 1};
inline constexpr Limits kFilterNumbers{1, kFilters};
inline constexpr Limits kGratingNumbers{1, kMaxGratings};
inline constexpr Limits kTurretNumbers{1, kMaxTurrets};

// Slit widths in micrometres.
inline constexpr Limits kSlit{10, 2500};
inline constexpr Limits kWideSlit{10, 24000};

/// A firmware without slit modes does not make a wide slit narrower.
constexpr Limits SlitWidths(std::string_view mode) {
  return mode == "SLIT-I24" ? kWideSlit : kSlit;
}

}  // namespace corvane::sim
