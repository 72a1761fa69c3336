// Result codes of the older instruments' record and driver, and what their bus answers.
#pragma once

#include "camera/TivanSdk.h"

namespace corvane::legacy {

inline constexpr int kSuccess = 0;
/// A transfer or a part of the operation failed, or a target lies outside the step range.
inline constexpr int kFailure = 1;
/// Beyond what is served: a record whose structure is newer than this library, a wavelength outside the limits of its
/// grating.
inline constexpr int kBeyondLimits = 2;
/// Driver only: the record holds no instrument data.
inline constexpr int kNoData = 5;

/// The bus answers the camera SDK's own status; any other than this is a failure.
inline constexpr unsigned int kBusSuccess = kTivanSuccess;

}  // namespace corvane::legacy
