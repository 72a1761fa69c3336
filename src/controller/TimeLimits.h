// Every limit of time in talking to a controller, in milliseconds. Short ones are for the search for controllers, long
// ones for an open one: a grating change or a home run may take long before its "OK".
#pragma once

#include <cstdint>

namespace corvane {

/// Time-outs of a transport's single read and write.
struct TransportTimeouts {
  unsigned int readMs;
  unsigned int writeMs;
};
inline constexpr TransportTimeouts kShortTimeouts{.readMs = 100, .writeMs = 100};
inline constexpr TransportTimeouts kLongTimeouts{.readMs = 100'000, .writeMs = 1'000};

/// Of a whole reply. A silent controller costs this and what is left of the read under way: 200 s.
inline constexpr std::uint64_t kLongReplyMs = 120'000;
/// From a line's first character to its end. It bounds a controller that lets its characters drip. An honest line may
/// pause for the whole reply limit and one read's time-out more.
inline constexpr std::uint64_t kLongLineMs = 240'000;
inline constexpr std::uint64_t kShortReplyMs = 5'000;
/// Without a character, while searching.
inline constexpr std::uint64_t kShortSilenceMs = 1'000;

}  // namespace corvane
