// The last reply to two slow queries whose answers rarely change. TMerakOrbis switches the entries on for the models
// that want them; an empty answer always means "not cached, ask the controller".
#pragma once

#include <array>
#include <string>

/// Index of a cache entry: the value text of "PERIPHERAL" and of "GRATINGS".
enum eCachedValues { eCachePeripherals = 0, eCacheGratings = 1 };

class TMerakOrbisCache {
 public:
  /// Switches an entry on or off and forgets what it held. timeoutMs 0: a stored value never expires.
  void EnableCache(eCachedValues which, bool enable, unsigned int timeoutMs);
  /// Stores a value with the current tick count; an entry that is off ignores the call.
  void SetCacheValue(eCachedValues which, const std::string& text);
  /// The stored value, or "" when the entry is off, empty or past its time-out. An expired value is kept, only not
  /// returned.
  std::string GetCacheValue(eCachedValues which) const;

 private:
  static constexpr unsigned int kNothingStored = 0xFFFFFFFFU;

  struct CACHE {
    bool enabled = false;
    unsigned int timeout = 0;
    unsigned int timestamp = kNothingStored;
    std::string value;
  };

  std::array<CACHE, 2> mEntries;
};
