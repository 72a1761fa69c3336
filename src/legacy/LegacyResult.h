// Result codes of the older instruments' record and driver.
#pragma once

namespace legacy {

inline constexpr int kSuccess = 0;
/// A transfer or a part of the operation failed, or a target lies outside the step range.
inline constexpr int kFailure = 1;
/// Record only: the instrument's structure is newer than this library.
inline constexpr int kNewerStructure = 2;
/// Driver only: the wavelength lies outside the limits of the grating.
inline constexpr int kOutsideLimits = 2;
/// Driver only: the record holds no instrument data.
inline constexpr int kNoData = 5;

}  // namespace legacy
