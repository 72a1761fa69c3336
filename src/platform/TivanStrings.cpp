#include "platform/TivanStrings.h"

#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kItoaBufferSize = 256;
constexpr std::size_t kLongestInt = 11;  // "-2147483648"

int Folded(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

char* Convert(char* text, int (*convert)(int)) {
  for (char* character = text; *character != '\0'; ++character) {
    *character = static_cast<char>(convert(static_cast<unsigned char>(*character)));
  }
  return text;
}

}  // namespace

int stricmp(const char* a, const char* b) {
  while (*a != '\0' && Folded(*a) == Folded(*b)) {
    ++a;
    ++b;
  }
  return Folded(*a) - Folded(*b);
}

char* strupr(char* text) {
  return Convert(text, std::toupper);
}

char* strlwr(char* text) {
  return Convert(text, std::tolower);
}

char* itoa(int value, char* buffer, int /*radix*/) {
  if (buffer == nullptr) {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): the caller releases it with free.
    buffer = static_cast<char*>(std::malloc(kItoaBufferSize));
    if (buffer == nullptr) {
      return nullptr;
    }
  }
  *std::to_chars(buffer, buffer + kLongestInt, value).ptr = '\0';
  return buffer;
}

bool has_wild(const char* text) {
  return std::strpbrk(text, "*?") != nullptr;
}
