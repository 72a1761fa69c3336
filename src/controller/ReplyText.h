// Numbers and fields out of a controller's reply text. TMerakOrbis reads every reply value through these; they never
// read outside the text, and a number too large for its type becomes the type's limit.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

/// Walks a text by single delimiter characters. Runs of delimiters count as one, so a token is never empty. The text
/// ends at its first zero byte and must outlive the walk.
class ReplyTokens {
 public:
  ReplyTokens(const std::string& text, std::string_view delimiters);
  /// The next token, or nothing at the end.
  std::optional<std::string_view> Next();

 private:
  std::string_view mRest;
  std::string_view mDelimiters;
};

/// A number at the beginning of the text, behind white space. False, leaving value as it was, when there is none.
bool ScanInt(const std::string& text, int& value);
bool ScanUnsignedLong(const std::string& text, unsigned long& value);
/// With "." as decimal separator, whatever the locale.
bool ScanFloat(const std::string& text, float& value);
/// The first word; false when there is none.
bool ScanWord(const std::string& text, std::size_t maxLength, std::string& word);

/// The same for a token that may be missing or hold no number: 0 then.
int IntOf(const std::optional<std::string_view>& token);
float FloatOf(const std::optional<std::string_view>& token);

}  // namespace corvane
