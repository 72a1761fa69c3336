#include "controller/TMerakOrbisCache.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/TickCount.h"
#include "support/FakeTime.h"

namespace {

class Cache : public testing::Test {
 protected:
  /// The list that a cache of three seconds gives after this time.
  std::string After(std::uint64_t milliseconds) {
    mTime.AdvanceMilliseconds(milliseconds);
    return mCache.GetCacheValue(eCacheGratings);
  }

  FakeTime mTime;
  TMerakOrbisCache mCache;
};

TEST_F(Cache, HoldsAValueUpToAndIncludingItsTimeout) {
  mTime.SetWallSeconds(1'700'000'000);
  mCache.EnableCache(eCacheGratings, true, 3000);
  EXPECT_EQ(After(0), "");
  mCache.SetCacheValue(eCacheGratings, "list");
  EXPECT_EQ(After(3000), "list");
  EXPECT_EQ(After(1), "");
  mTime.SetWallSeconds(1'700'000'001);
  EXPECT_EQ(After(0), "list") << "an expired value is kept for a clock that is set back";
}

TEST_F(Cache, CountsIn32Bits) {
  InitialiseTickCount();
  mCache.EnableCache(eCacheGratings, true, 3000);
  mTime.AdvanceMilliseconds((1ULL << 32U) - 1000);
  ASSERT_EQ(GetTickCount(), 0xFFFFFFFFU - 999);
  mCache.SetCacheValue(eCacheGratings, "list");
  // The end of its life has wrapped already, so the value counts as expired until the ticks wrap too.
  EXPECT_EQ(After(0), "");
  EXPECT_EQ(After(1000), "list");
  EXPECT_EQ(After(2000), "list");
  EXPECT_EQ(After(1), "");
}

TEST_F(Cache, WithoutTimeoutNothingExpiresUntilItIsEnabledAgain) {
  mCache.SetCacheValue(eCachePeripherals, "lost");
  EXPECT_EQ(mCache.GetCacheValue(eCachePeripherals), "");
  mCache.EnableCache(eCachePeripherals, true, 0);
  EXPECT_EQ(mCache.GetCacheValue(eCachePeripherals), "");
  mCache.SetCacheValue(eCachePeripherals, "SI1");
  mTime.AdvanceMilliseconds(1'000'000'000);
  EXPECT_EQ(mCache.GetCacheValue(eCachePeripherals), "SI1");
  EXPECT_EQ(mCache.GetCacheValue(eCacheGratings), "");
  mCache.EnableCache(eCachePeripherals, true, 0);
  EXPECT_EQ(mCache.GetCacheValue(eCachePeripherals), "");
}

}  // namespace
