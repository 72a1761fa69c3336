// Strings, host, file copy, debug output, tick count and events.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/DebugOutput.h"
#include "platform/FileCopy.h"
#include "platform/HostSystem.h"
#include "platform/TickCount.h"
#include "platform/TivanEvent.h"
#include "platform/TivanStrings.h"
#include "support/FakeTime.h"
#include "support/TemporaryDirectory.h"

namespace {

struct Free {
  void operator()(void* block) const { std::free(block); }
};

TEST(Strings, CompareWithAsciiLettersFolded) {
  EXPECT_EQ(0, stricmp("Wave", "wAVE"));
  EXPECT_LT(stricmp("_", "A"), 0) << "'_' lies between the upper and the lower case letters";
  EXPECT_GT(stricmp("\xE4", "z"), 0) << "bytes compare unsigned";
  EXPECT_NE(0, stricmp("@[", "`{")) << "neighbours of the letters are not letters";
}

TEST(Strings, ConvertAsciiLettersInPlace) {
  std::string text = "Tivan_e07\xE4";
  EXPECT_STREQ("TIVAN_E07\xE4", strupr(text.data()));
  EXPECT_STREQ("tivan_e07\xE4", strlwr(text.data()));
}

TEST(Strings, NumbersAreDecimalWhateverTheRadix) {
  std::array<char, 12> buffer{};
  EXPECT_STREQ("255", itoa(255, buffer.data(), 16));
  EXPECT_STREQ("-2147483648", itoa(INT_MIN, buffer.data(), 2));
  const std::unique_ptr<char, Free> allocated(itoa(7, nullptr, 10));
  EXPECT_STREQ("7", allocated.get());
}

TEST(Host, ComputerNameNeedsRoomForItsTerminator) {
  std::array<char, 300> expected{};
  ASSERT_EQ(0, gethostname(expected.data(), expected.size()));
  const auto length = static_cast<unsigned int>(std::string(expected.data()).size());
  std::string name(length + 1, '#');
  unsigned int size = length;
  EXPECT_EQ(0, GetComputerName(name.data(), &size));
  EXPECT_EQ('#', name[0]);
  size = length + 1;
  EXPECT_EQ(1, GetComputerName(name.data(), &size));
  EXPECT_STREQ(expected.data(), name.c_str());
  EXPECT_EQ(length, size);
}

TEST(Host, CurrentDirectoryNeedsRoomForItsTerminator) {
  const std::string directory = std::filesystem::current_path().string();
  const auto count = static_cast<unsigned int>(directory.size());
  std::string text(count + 1, '#');
  EXPECT_EQ(0U, GetCurrentDirectory(count, text.data()));
  EXPECT_EQ(count, GetCurrentDirectory(count + 1, text.data()));
  EXPECT_EQ(directory, text.c_str());
}

TEST(FileCopy, DropsWhiteSpaceAndDoublesTheLastCharacter) {
  const TemporaryDirectory directory;
  const std::string to = directory.Write("to", "an older and longer content");
  const auto content = [&] {
    std::ifstream stream(to, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  };
  const std::pair<const char*, const char*> cases[] = {{"a b\nc", "abcc"}, {"\ta\r\nb\n\n", "abb"}, {" \n", ""}};
  for (const auto& [from, copied] : cases) {
    EXPECT_EQ(1, CopyFile(directory.Write("from", from).c_str(), to.c_str(), true));
    EXPECT_EQ(copied, content());
  }
  EXPECT_EQ(1, CopyFile(directory.Path().c_str(), to.c_str(), false)) << "a directory opens but does not read";
  EXPECT_EQ("", content());
  EXPECT_EQ(1, CopyFile(to.c_str(), "/absent/to", false));
}

TEST(DebugOutput, AClosedPipeIsNoMatterOfTheHostsSignals) {
  const auto host = [] {
    signal(SIGPIPE, SIG_DFL);
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) {
      std::abort();
    }
    close(ends[0]);
    close(ends[1]);
    OutputDebugString(std::string(100'000, 'x').c_str());
    std::fflush(stdout);  // What is left would kill the host at its end.
    // One that the host itself holds back stays pending.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    raise(SIGPIPE);
    OutputDebugString("line");
    sigpending(&signals);
    std::exit(sigismember(&signals, SIGPIPE) == 1 ? 7 : 1);
  };
  EXPECT_EXIT(host(), testing::ExitedWithCode(7), "");
}

TEST(TickCount, CountsMillisecondsFromTheWholeSecondOfItsOrigin) {
  FakeTime time;
  time.SetWallSeconds(1'000);
  time.Advance(750'999);
  InitialiseTickCount();
  EXPECT_EQ(750U, GetTickCount()) << "the origin keeps whole seconds only";
  time.SetWallSeconds(999);
  EXPECT_EQ(static_cast<unsigned int>(-1'000), GetTickCount()) << "a clock set back";
  time.AdvanceMilliseconds((std::uint64_t{1} << 32U) + 999U);
  EXPECT_EQ(0xFFFFFFFFU, GetTickCount());
  time.AdvanceMilliseconds(1);
  EXPECT_EQ(0U, GetTickCount());
}

using EventHandle = std::unique_ptr<TivanEvent, decltype(&CloseHandle)>;

/// True when a wait for the event, with a time-out of 0, is still waiting after a while; then sets the event.
bool WaitBlocks(TivanEvent* event) {
  std::atomic<bool> ended{false};
  std::thread waiter([&] {
    EXPECT_EQ(corvane::kWaitEnded, WaitForSingleObject(event, 0));
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
  EXPECT_EQ(corvane::kWaitEnded, WaitForSingleObject(event.get(), 0));
  EXPECT_TRUE(WaitBlocks(event.get()));
}

TEST(TivanEvent, AManualResetEventStaysSignalledUntilItIsReset) {
  const EventHandle event(CreateEvent(nullptr, true, true, "ignored"), &CloseHandle);
  EXPECT_EQ(corvane::kWaitEnded, WaitForSingleObject(event.get(), 0));
  EXPECT_EQ(corvane::kWaitEnded, WaitForSingleObject(event.get(), 0));
  EXPECT_EQ(1, ResetEvent(event.get()));
  EXPECT_TRUE(WaitBlocks(event.get()));
}

}  // namespace
