// Result codes of the motion controller and of every operation that talks to it. Contracts name them (kIoError) without
// their namespace.
#pragma once

/// Unsigned so that a code can be compared and carried without conversion; 0 is success.
using MerakResult = unsigned int;

namespace merak {

inline constexpr MerakResult kSuccess = 0;
inline constexpr MerakResult kUnknownError = 1;
inline constexpr MerakResult kDeviceNotFound = 2;
inline constexpr MerakResult kDeviceNotOpen = 3;
inline constexpr MerakResult kIoError = 4;
inline constexpr MerakResult kOutOfMemory = 5;
inline constexpr MerakResult kInvalidParameter = 6;
inline constexpr MerakResult kIllegalAccess = 7;
inline constexpr MerakResult kEepromError = 8;
inline constexpr MerakResult kNotSupported = 9;
inline constexpr MerakResult kCoarseTurretError = 10;
inline constexpr MerakResult kFineTurretError = 11;
inline constexpr MerakResult kIllegalCommand = 12;
inline constexpr MerakResult kNoText = 13;

}  // namespace merak
