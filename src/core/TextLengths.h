// How much of a text is kept of an instrument, for the component interfaces and for stored records.
#pragma once

#include <cstddef>

namespace corvane {

/// Longest text; what is longer is cut. A filter label is handed to callers whose buffer holds one character more. A
/// record of bytes has less room for most texts, ten of them for a label (MerakEepromLayout.cpp).
inline constexpr std::size_t kMaxTextLength = 239;
/// The same for the blaze text of a grating, whose callers have less room.
inline constexpr std::size_t kMaxBlazeLength = 31;

}  // namespace corvane
