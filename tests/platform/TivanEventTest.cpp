#include "platform/TivanEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

using EventHandle = std::unique_ptr<TivanEvent, decltype(&CloseHandle)>;

/// True when a wait for the event, with a time-out of 0, is still waiting after a while; then sets the event.
bool WaitBlocks(TivanEvent* event) {
  std::atomic<bool> ended{false};
  std::thread waiter([&] {
    EXPECT_EQ(kWaitEnded, WaitForSingleObject(event, 0));
    ended = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const bool blocked = !ended;
  SetEvent(event);
  waiter.join();
  return blocked;
}

TEST(TivanEvent, AnAutoResetEventSetTwiceReleasesOneWait) {
  const EventHandle event(CreateEvent(nullptr, false, false, "ignored"), &CloseHandle);
  EXPECT_EQ(1, SetEvent(event.get()));
  EXPECT_EQ(1, SetEvent(event.get()));
  EXPECT_EQ(kWaitEnded, WaitForSingleObject(event.get(), 0));
  EXPECT_TRUE(WaitBlocks(event.get()));
}

TEST(TivanEvent, AManualResetEventStaysSignalledUntilItIsReset) {
  const EventHandle event(CreateEvent(nullptr, true, true, "ignored"), &CloseHandle);
  EXPECT_EQ(100U, WaitForSingleObject(event.get(), 0));
  EXPECT_EQ(100U, WaitForSingleObject(event.get(), 0));
  EXPECT_EQ(1, ResetEvent(event.get()));
  EXPECT_TRUE(WaitBlocks(event.get()));
}

TEST(TivanEvent, TakesNoHandleForNone) {
  EXPECT_EQ(0, SetEvent(nullptr));
  EXPECT_EQ(0, ResetEvent(nullptr));
  EXPECT_EQ(0U, WaitForSingleObject(nullptr, 1'000));
  EXPECT_EQ(1, CloseHandle(nullptr));
}

TEST(CriticalSection, IsRecursiveForItsHolderOnly) {
  pthread_mutex_t section;
  ASSERT_EQ(0, InitializeCriticalSection(&section));
  EXPECT_EQ(0, pthread_mutex_trylock(&section));
  EXPECT_EQ(0, pthread_mutex_trylock(&section));
  std::thread([&] { EXPECT_NE(0, pthread_mutex_trylock(&section)); }).join();
  pthread_mutex_unlock(&section);
  pthread_mutex_unlock(&section);
  pthread_mutex_destroy(&section);
}

}  // namespace
