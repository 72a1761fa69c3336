#include "PropertyArguments.h"

#include <charconv>

#include "Failure.h"

PropertyArguments::PropertyArguments(const std::vector<std::string>& words, std::size_t values)
    : mProperty(FindProperty(words[0])) {
  if (mProperty == nullptr) {
    throw Failure(ExitCode::kUsage, "there is no property \"" + words[0] + "\"", "corvane get --help lists them");
  }
  const std::size_t indices = mProperty->index == nullptr ? 0 : 1;
  if (words.size() != 1 + indices + values) {
    throw Failure(ExitCode::kUsage, words[0] + (indices == 0 ? " takes no index" : " needs an index") +
                                        (values == 0 ? "" : " and one value"));
  }
  if (indices == 1) {
    const std::string& word = words[1];
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), mIndex);
    if (error != std::errc{} || end != word.data() + word.size()) {
      throw Failure(ExitCode::kUsage, "\"" + word + "\" is not a number of a " + mProperty->index);
    }
  }
  if (values == 1) {
    mValue = words.back();
  }
}

void PropertyArguments::CheckIndex(int device) const {
  if (mProperty->index == nullptr) {
    return;
  }
  const int last = Indices(*mProperty, device);
  if (mIndex < 1 || mIndex > last) {
    throw Failure(ExitCode::kUsage, std::string("there is no ") + mProperty->index + " " + std::to_string(mIndex) +
                                        "; they count from 1 to " + std::to_string(last));
  }
}

std::string PropertyHelp(bool (*listed)(const Property&)) {
  constexpr std::size_t kWidth = 30;
  std::string text = "Properties:\n";
  for (const Property& property : Properties()) {
    if (!listed(property)) {
      continue;
    }
    std::string name = std::string("  ") + property.name;
    if (property.index != nullptr) {
      name += std::string(" ") + property.index;
    }
    name.resize(std::max(kWidth, name.size() + 2), ' ');
    text += name + property.help + '\n';
  }
  return text;
}
