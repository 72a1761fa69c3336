#include "controller/TMerakOrbisCache.h"

#include "platform/TickCount.h"

void TMerakOrbisCache::EnableCache(eCachedValues which, bool enable, unsigned int timeoutMs) {
  mEntries.at(which) = {enable, timeoutMs, kNothingStored, {}};
}

void TMerakOrbisCache::SetCacheValue(eCachedValues which, const std::string& text) {
  CACHE& entry = mEntries.at(which);
  if (entry.enabled) {
    entry.value = text;
    entry.timestamp = GetTickCount();
  }
}

std::string TMerakOrbisCache::GetCacheValue(eCachedValues which) const {
  const CACHE& entry = mEntries.at(which);
  // Tick counts wrap, and so does the sum.
  const bool expired = entry.timeout != 0 && entry.timestamp + entry.timeout < GetTickCount();
  return entry.enabled && !expired ? entry.value : std::string();
}
