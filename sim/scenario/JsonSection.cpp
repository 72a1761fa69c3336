#include "scenario/JsonSection.h"

#include <algorithm>
#include <sstream>

#include "scenario/ScenarioError.h"

namespace corvane::sim {
namespace {

using nlohmann::json;

template <typename Number>
std::string Range(Number low, Number high) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << "must be a number from " << low << " to " << high;
  return text.str();
}

bool IsPrintable(const std::string& text, const char* without) {
  return std::all_of(text.begin(), text.end(), [&](char character) {
    return static_cast<unsigned char>(character) >= 0x20 && static_cast<unsigned char>(character) < 0x7F &&
           std::string_view(without).find(character) == std::string_view::npos;
  });
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

const json* JsonSection::Take(const char* key) {
  mKnown.emplace_back(key);
  const auto found = mValue->find(key);
  return found == mValue->end() ? nullptr : &*found;
}

void JsonSection::Read(const char* key, bool& target) {
  if (const json* const value = Take(key)) {
    if (!value->is_boolean()) {
      Fail(key, "must be true or false");
    }
    target = value->get<bool>();
  }
}

void JsonSection::Read(const char* key, int& target, int low, int high) {
  if (const json* const value = Take(key)) {
    // Unsigned values beyond the signed range would wrap into it.
    const bool fits = value->is_number_integer() &&
                      (!value->is_number_unsigned() ||
                       value->get<std::uint64_t>() <= static_cast<std::uint64_t>(std::numeric_limits<int>::max()));
    const std::int64_t number = fits ? value->get<std::int64_t>() : 0;
    if (!fits || number < low || number > high) {
      Fail(key, Range(low, high) + ", without decimals");
    }
    target = static_cast<int>(number);
  }
}

void JsonSection::Read(const char* key, unsigned long long& target, unsigned long long low) {
  if (const json* const value = Take(key)) {
    if (!value->is_number_unsigned() || value->get<std::uint64_t>() < low) {
      Fail(key, "must be a whole number from " + std::to_string(low));
    }
    target = value->get<std::uint64_t>();
  }
}

void JsonSection::Read(const char* key, double& target, double low, double high) {
  if (const json* const value = Take(key)) {
    const double number = value->is_number() ? value->get<double>() : low - 1.0;
    if (!(number >= low && number <= high)) {
      Fail(key, Range(low, high));
    }
    target = number;
  }
}

void JsonSection::Read(const char* key, float& target, double low, double high) {
  double number = static_cast<double>(target);
  Read(key, number, low, high);
  target = static_cast<float>(number);
}

void JsonSection::Read(const char* key, std::string& target, std::size_t longest, const char* without) {
  if (const json* const value = Take(key)) {
    if (!value->is_string() || value->get_ref<const std::string&>().size() > longest ||
        !IsPrintable(value->get_ref<const std::string&>(), without)) {
      const std::string exception = *without == '\0' ? "" : std::string(" without \"") + without + "\"";
      Fail(key, "must be a text of at most " + std::to_string(longest) + " printable ASCII characters" + exception);
    }
    target = value->get<std::string>();
  }
}

void JsonSection::ReadRaw(const char* key, std::string& target) {
  if (const json* const value = Take(key)) {
    if (!value->is_string()) {
      Fail(key, "must be a text");
    }
    target = value->get<std::string>();
  }
}

std::optional<JsonSection> JsonSection::Section(const char* key) {
  const json* const value = Take(key);
  return value == nullptr ? std::nullopt : std::optional(JsonSection(*value, mFile, PlaceOf(key)));
}

const json* JsonSection::Array(const char* key, std::size_t least, std::size_t most) {
  const json* const value = Take(key);
  if (value != nullptr && (!value->is_array() || value->size() < least || value->size() > most)) {
    const std::string count =
        least == most ? std::to_string(least) : std::to_string(least) + " to " + std::to_string(most);
    Fail(key, "must be a list [ ] of " + count + " entries");
  }
  return value;
}

std::vector<JsonSection> JsonSection::Sections(const char* key, std::size_t least, std::size_t most) {
  std::vector<JsonSection> sections;
  if (const json* const array = Array(key, least, most)) {
    for (std::size_t i = 0; i < array->size(); ++i) {
      sections.emplace_back((*array)[i], mFile, PlaceOf(key) + "[" + std::to_string(i) + "]");
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

void ReadTexts(JsonSection& section, const char* key, std::array<std::string, kFilters>& target, std::size_t longest) {
  if (const json* const array = section.Array(key, 0, target.size())) {
    for (std::size_t i = 0; i < array->size(); ++i) {
      const json& value = (*array)[i];
      if (!value.is_string() || value.get_ref<const std::string&>().size() > longest) {
        section.Fail(
            key, "[" + std::to_string(i) + "] must be a text of at most " + std::to_string(longest) + " characters");
      }
      target[i] = value.get<std::string>();
    }
  }
}

}  // namespace corvane::sim
