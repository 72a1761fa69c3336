#include "scenario/JsonSection.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>
#include <type_traits>

#include "scenario/ScenarioError.h"

namespace corvane::sim {
namespace {

using nlohmann::json;

template <typename Element>
std::string Wanted(const Bounds& bounds) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  if constexpr (std::is_integral_v<Element>) {
    text << "a whole number from " << static_cast<long long>(bounds.low) << " to "
         << static_cast<long long>(bounds.high);
  } else if constexpr (std::is_floating_point_v<Element>) {
    text << "a number from " << bounds.low << " to " << bounds.high;
  } else {
    text << "a text of ";
    if (bounds.low > 0) {
      text << bounds.low << " to ";
    } else {
      text << "at most ";
    }
    text << bounds.high << " printable ASCII characters";
    if (*bounds.without != '\0') {
      text << " without \"" << bounds.without << '"';
    }
  }
  return text.str();
}

bool Fits(double size, const Bounds& bounds) {
  return size >= bounds.low && size <= bounds.high;
}

bool IsText(const std::string& text, const Bounds& bounds) {
  return Fits(static_cast<double>(text.size()), bounds) && std::all_of(text.begin(), text.end(), [&](char character) {
           return character >= 0x20 && character < 0x7F &&
                  std::string_view(bounds.without).find(character) == std::string_view::npos;
         });
}

/// Not every number is a size that a double holds exactly; those beyond are beyond all bounds too.
template <typename Element>
bool IsWanted(const json& value, const Bounds& bounds) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return value.is_string() && IsText(value.get_ref<const std::string&>(), bounds);
  } else {
    const bool isKind = std::is_integral_v<Element> ? value.is_number_integer() : value.is_number();
    return isKind && Fits(value.get<double>(), bounds);
  }
}

}  // namespace

JsonSection::JsonSection(const json& value, std::string file, std::string place)
    : mValue(&value), mFile(std::move(file)), mPlace(std::move(place)) {
  if (!value.is_object()) {
    throw ScenarioError(mFile + ": " + (mPlace.empty() ? "the file" : mPlace) + " must be an object { }");
  }
}

std::string JsonSection::PlaceOf(const std::string& key) const {
  return mPlace.empty() ? key : mPlace + "." + key;
}

void JsonSection::Fail(const std::string& key, const std::string& problem) const {
  throw ScenarioError(mFile + ": " + PlaceOf(key) + " " + problem);
}

const json* JsonSection::Value(const char* key) {
  if (std::find(mKnown.begin(), mKnown.end(), key) == mKnown.end()) {
    mKnown.emplace_back(key);
  }
  const auto found = mValue->find(key);
  return found == mValue->end() ? nullptr : &*found;
}

template <typename Element>
void JsonSection::Convert(const json& value, const std::string& key, Element& target, const Bounds& bounds) const {
  if (!IsWanted<Element>(value, bounds)) {
    Fail(key, "must be " + Wanted<Element>(bounds));
  }
  target = value.get<Element>();
}

void JsonSection::Read(const char* key, bool& target) {
  if (const json* const value = Value(key)) {
    if (!value->is_boolean()) {
      Fail(key, "must be true or false");
    }
    target = value->get<bool>();
  }
}

template <typename Number>
void JsonSection::Read(const char* key, Number& target, const Bounds& bounds) {
  if (const json* const value = Value(key)) {
    Convert(*value, key, target, bounds);
  }
}

template void JsonSection::Read(const char*, unsigned char&, const Bounds&);
template void JsonSection::Read(const char*, int&, const Bounds&);
template void JsonSection::Read(const char*, unsigned int&, const Bounds&);
template void JsonSection::Read(const char*, unsigned long long&, const Bounds&);
template void JsonSection::Read(const char*, float&, const Bounds&);
template void JsonSection::Read(const char*, double&, const Bounds&);

void JsonSection::Read(const char* key, std::string& target, const Bounds& bounds) {
  if (const json* const value = Value(key)) {
    Convert(*value, key, target, bounds);
  }
}

void JsonSection::ReadRaw(const char* key, std::string& target) {
  if (const json* const value = Value(key)) {
    if (!value->is_string()) {
      Fail(key, "must be a text");
    }
    target = value->get<std::string>();
  }
}

template <typename Element>
std::size_t JsonSection::ReadList(const char* key, std::span<Element> target, const Bounds& bounds) {
  const json* const list = List(key, 0, target.size());
  const std::size_t count = list == nullptr ? 0 : list->size();
  for (std::size_t i = 0; i < count; ++i) {
    Convert((*list)[i], std::string(key) + "[" + std::to_string(i) + "]", target[i], bounds);
  }
  return count;
}

template std::size_t JsonSection::ReadList(const char*, std::span<unsigned char>, const Bounds&);
template std::size_t JsonSection::ReadList(const char*, std::span<int>, const Bounds&);
template std::size_t JsonSection::ReadList(const char*, std::span<float>, const Bounds&);
template std::size_t JsonSection::ReadList(const char*, std::span<std::string>, const Bounds&);

std::optional<JsonSection> JsonSection::Section(const char* key) {
  const json* const value = Value(key);
  return value == nullptr ? std::nullopt : std::optional(JsonSection(*value, mFile, PlaceOf(key)));
}

const json* JsonSection::List(const char* key, std::size_t least, std::size_t most) {
  const json* const value = Value(key);
  if (value != nullptr && (!value->is_array() || value->size() < least || value->size() > most)) {
    const std::string count =
        least == most ? std::to_string(least) : std::to_string(least) + " to " + std::to_string(most);
    Fail(key, "must be a list [ ] of " + count + " entries");
  }
  return value;
}

std::vector<JsonSection> JsonSection::Sections(const char* key, std::size_t least, std::size_t most) {
  std::vector<JsonSection> sections;
  if (const json* const list = List(key, least, most)) {
    for (std::size_t i = 0; i < list->size(); ++i) {
      sections.emplace_back((*list)[i], mFile, PlaceOf(key) + "[" + std::to_string(i) + "]");
    }
  }
  return sections;
}

void JsonSection::Finish() const {
  for (const auto& item : mValue->items()) {
    if (std::find(mKnown.begin(), mKnown.end(), item.key()) == mKnown.end()) {
      std::string known;
      for (const std::string& key : mKnown) {
        known += (known.empty() ? "" : ", ") + key;
      }
      Fail(item.key(), "is not known here (known: " + known + ")");
    }
  }
}

}  // namespace corvane::sim
