// The value by which a motor position says that there is none. For the component interfaces and the drivers behind
// them.
#pragma once

namespace corvane {

/// Stands for a step position that is not known, or not to be had from this kind of instrument.
inline constexpr int kNoStepPosition = -999999;

}  // namespace corvane
