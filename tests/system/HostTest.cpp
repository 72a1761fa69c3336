// What programs do around the library: include its header where they like, cancel threads, close it as the process
// ends, bring a camera SDK that throws.
extern "C" {
#include <CorvaneCIF.h>
}

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/EveryFunction.h"
#include "support/TemporaryDirectory.h"

namespace {

/// Statuses of opening, of every function and of closing.
std::vector<unsigned int> Session(char* directory) {
  std::vector<unsigned int> statuses = {CorvaneInitialize(directory)};
  for (const ExportedFunction& function : EveryDeviceFunction()) {
    Outputs out;
    statuses.push_back(function.call.run(0, out));
  }
  statuses.push_back(CorvaneClose());
  return statuses;
}

class HostProgram : public testing::Test {
 protected:
  HostProgram() { mFolder.Write("corvane-sim.json", R"({"i2c": {"motion": 0, "state": "state.json"}})"); }
  void TearDown() override { CorvaneClose(); }

  char* Directory() { return mPath.data(); }

 private:
  TemporaryDirectory mFolder;
  std::string mPath = mFolder.Path().string();
};

TEST_F(HostProgram, ACancelledThreadEndsItsCallsFirst) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "a cancelled thread leaves its frames marked, and the sanitizer's own end of the thread runs on them";
#endif
  struct Work {
    char* directory;
    std::vector<unsigned int> statuses;
  } work = {Directory(), {}};
  const std::vector<unsigned int> expected = Session(Directory());
  const auto body = [](void* argument) -> void* {
    auto& mine = *static_cast<Work*>(argument);
    pthread_cancel(pthread_self());  // acts where the thread next waits or writes
    mine.statuses = Session(mine.directory);
    pthread_testcancel();
    return nullptr;
  };
  pthread_t thread{};
  ASSERT_EQ(pthread_create(&thread, nullptr, body, &work), 0);
  void* end = nullptr;
  ASSERT_EQ(pthread_join(thread, &end), 0);
  EXPECT_EQ(end, PTHREAD_CANCELED);
  EXPECT_EQ(work.statuses, expected);
  EXPECT_EQ(CorvaneInitialize(Directory()), CORVANE_SUCCESS) << "nothing is left locked";
}

using HostProgramDeathTest = HostProgram;

TEST_F(HostProgramDeathTest, ClosesAndStoresInAnExitHandlerFromBeforeInitialize) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process in which nothing was loaded before
  const auto run = [this] {
    static char* const directory = Directory();
    const auto close = [] {
      int offset = 0;
      const bool stored = CorvaneClose() == CORVANE_SUCCESS && CorvaneInitialize(directory) == CORVANE_SUCCESS &&
                          CorvaneGetDetectorOffset(0, &offset) == CORVANE_SUCCESS && offset == 1234;
      _exit(stored ? 0 : 1);
    };
    std::atexit(close);
    CorvaneInitialize(directory);
    CorvaneSetDetectorOffset(0, 1234);
    std::exit(2);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST_F(HostProgram, ACameraSdkThatThrowsIsAFailedSearch) {
  const ScopedWorkingDirectory there(CORVANE_THROWING_SDK);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(CorvaneInitialize(Directory()), CORVANE_NOT_INITIALIZED);
    int count = 77;
    EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_NOT_INITIALIZED);
  }
}

}  // namespace
