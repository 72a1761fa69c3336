// What the bridge knows of the camera SDK beyond its entry points.
#pragma once

namespace corvane {

/// The camera SDK's status for success.
constexpr unsigned int kTivanSuccess = 20002;

}  // namespace corvane
