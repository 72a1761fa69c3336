// Plain memory blocks under the old name of their allocation call.
#pragma once

/// size bytes that the caller releases with free; zeroed when flags has kGlobalZeroInit. Null when a movable or
/// discardable block is asked for (any of the four lowest bits of flags) or there is no memory.
void* GlobalAlloc(unsigned int flags, unsigned int size);
constexpr unsigned int kGlobalZeroInit = 0x40;
