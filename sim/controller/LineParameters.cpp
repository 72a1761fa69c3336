#include "controller/LineParameters.h"

#include <algorithm>

namespace corvane::sim {
namespace {

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

LineParameters::LineParameters(std::string_view text) : mText(Trim(text)) {
  if (mText.empty()) {
    return;
  }
  for (std::size_t start = 0; start <= mText.size();) {
    const std::size_t comma = std::min(mText.find(',', start), mText.size());
    mParts.push_back(Trim(mText.substr(start, comma - start)));
    start = comma + 1;
  }
}

std::optional<std::string_view> LineParameters::Rest() const {
  const std::size_t comma = mText.find(',');
  return comma == std::string_view::npos ? std::nullopt : std::optional(mText.substr(comma + 1));
}

}  // namespace corvane::sim
