// One object of a scenario file, read strictly: every value has a type and a range, every key must be known. Errors
// carry the file and the place. Used by the readers of scenarios only.
#pragma once

#include <array>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

class JsonSection {
 public:
  /// value is borrowed. place is what messages call it, for example "i2c.record"; empty for the whole file.
  JsonSection(const nlohmann::json& value, std::string file, std::string place);

  // Each leaves target as it is when the key is absent.
  void Read(const char* key, bool& target);
  void Read(const char* key, int& target, int low, int high);
  void Read(const char* key, unsigned long long& target, unsigned long long low);
  void Read(const char* key, double& target, double low, double high);
  void Read(const char* key, float& target, double low, double high);
  /// Printable text of at most longest characters, none of them in `without`.
  void Read(const char* key, std::string& target, std::size_t longest, const char* without = "");
  /// Any text, control characters too.
  void ReadRaw(const char* key, std::string& target);

  /// The value of a key, marked as known; null when absent.
  const nlohmann::json* Take(const char* key);
  /// The object behind a key; none when the key is absent.
  std::optional<JsonSection> Section(const char* key);
  /// The objects of the array behind a key.
  std::vector<JsonSection> Sections(const char* key, std::size_t least, std::size_t most);
  /// The array behind a key with its elements readable under their index; none when absent.
  const nlohmann::json* Array(const char* key, std::size_t least, std::size_t most);

  std::string PlaceOf(const std::string& key) const;
  const std::string& File() const { return mFile; }
  [[noreturn]] void Fail(const std::string& key, const std::string& problem) const;
  /// To be called at the end: fails for a key that nobody asked for.
  void Finish() const;

 private:
  const nlohmann::json* mValue;
  std::string mFile;
  std::string mPlace;
  std::vector<std::string> mKnown;
};

/// Overwrites the first elements of target with the numbers of a list of at most `most`, each from low to high. Answers
/// how many there were; none when the key is absent.
template <typename Values, typename Number = typename Values::value_type>
std::size_t ReadNumbers(JsonSection& section, const char* key, Values& target, std::size_t most,
                        Number low = std::numeric_limits<Number>::lowest(),
                        Number high = std::numeric_limits<Number>::max()) {
  const nlohmann::json* const array = section.Array(key, 0, most);
  const std::size_t count = array == nullptr ? 0 : array->size();
  for (std::size_t i = 0; i < count; ++i) {
    const nlohmann::json& value = (*array)[i];
    const bool fits = std::is_integral_v<Number> ? value.is_number_integer() : value.is_number();
    if (!fits ||
        !(value.get<double>() >= static_cast<double>(low) && value.get<double>() <= static_cast<double>(high))) {
      section.Fail(key, "[" + std::to_string(i) + "] must be a " + (std::is_integral_v<Number> ? "whole " : "") +
                            "number in range");
    }
    target[i] = value.get<Number>();
  }
  return count;
}

/// Overwrites the first elements of target with the texts of a list.
void ReadTexts(JsonSection& section, const char* key, std::array<std::string, kFilters>& target, std::size_t longest);

}  // namespace corvane::sim
