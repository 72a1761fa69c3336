#include "platform/GlobalMemory.h"

#include <cstdlib>

namespace {

constexpr unsigned int kNotFixedMask = 0x0F;

}  // namespace

void* GlobalAlloc(unsigned int flags, unsigned int size) {
  if ((flags & kNotFixedMask) != 0) {
    return nullptr;
  }
  // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): the caller releases it with free.
  return (flags & corvane::kGlobalZeroInit) != 0 ? std::calloc(1, size) : std::malloc(size);
}
