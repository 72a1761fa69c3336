#include "model/StrictJson.h"

#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvane::sim {
namespace {

using nlohmann::json;

/// Follows the parser through objects and lists.
class KeyWatch {
 public:
  void Note(json::parse_event_t event, const json& parsed) {
    switch (event) {
      case json::parse_event_t::object_start:
      case json::parse_event_t::array_start:
        CountElement();
        mOpen.push_back({.isList = event == json::parse_event_t::array_start});
        break;
      case json::parse_event_t::object_end:
      case json::parse_event_t::array_end:
        mOpen.pop_back();
        break;
      case json::parse_event_t::key:
        mOpen.back().key = parsed.get<std::string>();
        if (!mOpen.back().keys.insert(mOpen.back().key).second) {
          throw std::runtime_error(Place() + " is given twice");
        }
        break;
      case json::parse_event_t::value:
        CountElement();
        break;
    }
  }

 private:
  struct Open {
    bool isList = false;
    int elements = 0;
    std::string key = {};
    std::set<std::string> keys = {};
  };

  void CountElement() {
    if (!mOpen.empty()) {
      ++mOpen.back().elements;
    }
  }

  /// For example i2c.turrets[0].gratings
  std::string Place() const {
    std::string place;
    for (const Open& open : mOpen) {
      if (open.isList) {
        place += "[" + std::to_string(open.elements - 1) + "]";
      } else {
        place += (place.empty() ? "" : ".") + open.key;
      }
    }
    return place;
  }

  std::vector<Open> mOpen;
};

}  // namespace

json ParseStrictly(std::string_view text, JsonComments comments) {
  KeyWatch watch;
  const auto note = [&watch](int /*depth*/, json::parse_event_t event, json& parsed) {
    watch.Note(event, parsed);
    return true;
  };
  return json::parse(text, note, true, comments == JsonComments::kAllowed);
}

}  // namespace corvane::sim
