// Plain memory blocks under the old name of their allocation call.
#pragma once

namespace corvane {

/// Flag of GlobalAlloc: the block starts as zeros.
inline constexpr unsigned int kGlobalZeroInit = 0x40;

}  // namespace corvane

/// size bytes that the caller releases with free; zeroed when flags has corvane::kGlobalZeroInit. Null when a movable
/// or discardable block is asked for (any of the four lowest bits of flags) or there is no memory.
void* GlobalAlloc(unsigned int flags, unsigned int size);
