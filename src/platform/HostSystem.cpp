#include "platform/HostSystem.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr std::size_t kMaximumHostName = 256;

}  // namespace

int GetComputerName(char* buffer, unsigned int* size) {
  if (buffer == nullptr || size == nullptr) {
    return 0;
  }
  std::array<char, kMaximumHostName> name{};
  if (gethostname(name.data(), name.size() - 1) != 0) {
    return 0;
  }
  const std::size_t length = std::strlen(name.data());
  if (length >= *size) {
    return 0;
  }
  std::memcpy(buffer, name.data(), length + 1);
  *size = static_cast<unsigned int>(length);
  return 1;
}

unsigned int GetCurrentDirectory(unsigned int size, char* buffer) {
  // getcwd allocates when it is given no buffer, and nobody would release that.
  if (buffer == nullptr || size == 0 || getcwd(buffer, size) == nullptr) {
    return 0;
  }
  return static_cast<unsigned int>(std::strlen(buffer));
}
