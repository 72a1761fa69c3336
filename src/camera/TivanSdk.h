// What the library knows of the camera SDK beyond its entry points.
#pragma once

namespace corvane {

/// The camera SDK's status for success; adapters of its bus may pass it through (TI2CInterface.h).
inline constexpr unsigned int kTivanSuccess = 20002;

}  // namespace corvane
