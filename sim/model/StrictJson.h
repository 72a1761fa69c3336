// JSON text in which no object has a key twice: of two values one would be lost in silence. Read by scenario files and
// state files; what the values may be is theirs to check.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace corvane::sim {

enum class JsonComments { kNone, kAllowed };

/// Throws std::runtime_error, or what the parser throws (a std::exception too), with the place in the text.
nlohmann::json ParseStrictly(std::string_view text, JsonComments comments);

}  // namespace corvane::sim
