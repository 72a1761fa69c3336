// How much of a text is kept of an instrument, for the component interfaces and for stored records.
#pragma once

#include <cstddef>

namespace corvane {

/// Longest text; what is longer is cut. A filter label is handed to callers whose buffer holds one character more.
inline constexpr std::size_t kMaxTextLength = 239;
/// What is kept of a filter label: an SX keeps kMaxTextLength, an LX or MX has ten bytes for it, an older instrument
/// ten with the terminator.
inline constexpr std::size_t kMaxByteLabelLength = 10;
inline constexpr std::size_t kMaxOlderLabelLength = 9;
/// The same for the blaze text of a grating, whose callers have less room.
inline constexpr std::size_t kMaxBlazeLength = 31;

}  // namespace corvane
