// The parameters of a command line: what stands behind its word. Used by the commands only.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <vector>

namespace corvane::sim {

/// Texts between commas, without surrounding blanks. None for an empty text.
class LineParameters {
 public:
  explicit LineParameters(std::string_view text);

  std::size_t Count() const { return mParts.size(); }
  std::string_view Text() const { return mText; }
  std::string_view Part(std::size_t index) const { return index < mParts.size() ? mParts[index] : ""; }
  /// Everything behind the first comma, as it stands; none without a comma.
  std::optional<std::string_view> Rest() const;

  template <typename Number>
  std::optional<Number> Get(std::size_t index) const {
    const std::string_view part = Part(index);
    Number number{};
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), number);
    const bool whole = error == std::errc{} && end == part.data() + part.size();
    return whole ? std::optional(number) : std::nullopt;
  }
  std::optional<int> Int(std::size_t index) const { return Get<int>(index); }
  /// The only parameter.
  std::optional<int> OnlyInt() const { return Count() == 1 ? Int(0) : std::nullopt; }

 private:
  std::string_view mText;
  std::vector<std::string_view> mParts;
};

}  // namespace corvane::sim
