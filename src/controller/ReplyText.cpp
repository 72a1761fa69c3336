#include "controller/ReplyText.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "platform/TivanLocale.h"

namespace corvane {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

}  // namespace

ReplyTokens::ReplyTokens(const std::string& text, std::string_view delimiters)
    : mRest(text.c_str()), mDelimiters(delimiters) {
}

std::optional<std::string_view> ReplyTokens::Next() {
  const std::size_t begin = mRest.find_first_not_of(mDelimiters);
  if (begin == std::string_view::npos) {
    mRest = {};
    return std::nullopt;
  }
  mRest.remove_prefix(begin);
  const std::string_view token = mRest.substr(0, mRest.find_first_of(mDelimiters));
  mRest.remove_prefix(token.size());
  return token;
}

bool ScanInt(const std::string& text, int& value) {
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) {
    return false;
  }
  using Limits = std::numeric_limits<int>;
  value = static_cast<int>(std::clamp<long>(number, Limits::min(), Limits::max()));
  return true;
}

bool ScanUnsignedLong(const std::string& text, unsigned long& value) {
  char* end = nullptr;
  const unsigned long number = std::strtoul(text.c_str(), &end, 10);
  if (end == text.c_str()) {
    return false;
  }
  value = number;
  return true;
}

bool ScanFloat(const std::string& text, float& value) {
  const TivanLocale locale;
  char* end = nullptr;
  const float number = std::strtof(text.c_str(), &end);
  if (end == text.c_str()) {
    return false;
  }
  value = number;
  return true;
}

bool ScanWord(const std::string& text, std::size_t maxLength, std::string& word) {
  const std::string_view whole(text.c_str());
  const std::size_t begin = whole.find_first_not_of(kWhiteSpace);
  if (begin == std::string_view::npos) {
    return false;
  }
  const std::size_t length = whole.substr(begin).find_first_of(kWhiteSpace);
  word = whole.substr(begin, std::min(length, maxLength));
  return true;
}

int IntOf(const std::optional<std::string_view>& token) {
  int value = 0;
  ScanInt(std::string(token.value_or("")), value);
  return value;
}

float FloatOf(const std::optional<std::string_view>& token) {
  const TivanLocale locale;
  return static_cast<float>(std::strtod(std::string(token.value_or("")).c_str(), nullptr));
}

}  // namespace corvane
