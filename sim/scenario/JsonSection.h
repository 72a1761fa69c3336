// One object of a scenario file, read strictly: every value has a type and a range, every key must be known. Errors
// carry the file and the place. Used by the readers of scenarios only, most of whose keys are tables of SectionKey.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "model/Limits.h"

namespace corvane::sim {

/// What a value may be: a number from low to high, or a text of low to high characters and none of those in `without`.
struct Bounds {
  double low = 0;
  double high = 0;
  const char* without = "";
};

/// A text of at most so many characters.
constexpr Bounds Text(std::size_t longest, const char* without = "") {
  return {0, static_cast<double>(longest), without};
}

constexpr Bounds Within(Limits limits) {
  return {static_cast<double>(limits.least), static_cast<double>(limits.most)};
}

class JsonSection {
 public:
  /// value is borrowed. place is what messages call it, for example "i2c.record"; empty for the whole file.
  JsonSection(const nlohmann::json& value, std::string file, std::string place);

  // Each leaves target as it is when the key is absent.
  void Read(const char* key, bool& target);
  /// Number: whole numbers of several sizes, float, double. Whole ones take no decimals.
  template <typename Number>
  void Read(const char* key, Number& target, const Bounds& bounds);
  /// Printable ASCII.
  void Read(const char* key, std::string& target, const Bounds& bounds);
  /// Any text, control characters too.
  void ReadRaw(const char* key, std::string& target);

  /// Overwrites the first elements of target with those of a list, which must not be longer. Answers how many there
  /// were; 0 when the key is absent.
  template <typename Element>
  std::size_t ReadList(const char* key, std::span<Element> target, const Bounds& bounds);

  /// The value of a key, marked as known; null when absent.
  const nlohmann::json* Value(const char* key);
  /// The object behind a key; none when the key is absent.
  std::optional<JsonSection> Section(const char* key);
  /// The objects of the list behind a key.
  std::vector<JsonSection> Sections(const char* key, std::size_t least, std::size_t most);

  std::string PlaceOf(const std::string& key) const;
  const std::string& File() const { return mFile; }
  [[noreturn]] void Fail(const std::string& key, const std::string& problem) const;
  /// To be called at the end: fails for a key that nobody asked for.
  void Finish() const;

 private:
  template <typename Element>
  void Convert(const nlohmann::json& value, const std::string& key, Element& target, const Bounds& bounds) const;
  const nlohmann::json* List(const char* key, std::size_t least, std::size_t most);

  const nlohmann::json* mValue;
  std::string mFile;
  std::string mPlace;
  std::vector<std::string> mKnown;
};

/// A key of a section, the member that its value goes to, and what it may be.
template <typename Target>
struct SectionKey {
  const char* name = nullptr;
  std::variant<bool Target::*, unsigned char Target::*, int Target::*, unsigned int Target::*,
               unsigned long long Target::*, float Target::*, double Target::*, std::string Target::*>
      member;
  Bounds bounds = {};
};

template <typename Target, std::size_t Count>
void ReadKeys(JsonSection& section, const SectionKey<Target> (&keys)[Count], Target& target) {
  for (const SectionKey<Target>& key : keys) {
    const auto read = [&](auto member) {
      if constexpr (std::is_same_v<decltype(member), bool Target::*>) {
        section.Read(key.name, target.*member);
      } else {
        section.Read(key.name, target.*member, key.bounds);
      }
    };
    std::visit(read, key.member);
  }
}

/// A section that has no other keys.
template <typename Target, std::size_t Count>
void ReadOnlyKeys(JsonSection section, const SectionKey<Target> (&keys)[Count], Target& target) {
  ReadKeys(section, keys, target);
  section.Finish();
}

}  // namespace corvane::sim
