#include "platform/DebugOutput.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <string>

namespace {

bool IsSigPipePending() {
  sigset_t pending;
  sigemptyset(&pending);
  return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

/// Keeps SIGPIPE from the calling thread for its lifetime, and takes the one that a write of this scope raised.
class SigPipeBlock {
 public:
  SigPipeBlock() : mWasPending(IsSigPipePending()) {
    sigemptyset(&mPipe);
    sigaddset(&mPipe, SIGPIPE);
    mBlocked = pthread_sigmask(SIG_BLOCK, &mPipe, &mPrevious) == 0;
  }
  ~SigPipeBlock() {
    if (!mBlocked) {
      return;
    }
    if (!mWasPending && IsSigPipePending()) {
      const timespec now{};
      while (sigtimedwait(&mPipe, nullptr, &now) < 0 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
  }
  SigPipeBlock(const SigPipeBlock&) = delete;
  SigPipeBlock& operator=(const SigPipeBlock&) = delete;

 private:
  sigset_t mPipe{};
  sigset_t mPrevious{};
  bool mWasPending;
  bool mBlocked = false;
};

}  // namespace

void OutputDebugString(const char* text) {
  if (text == nullptr) {
    return;
  }
  std::string line(text);
  line += '\n';

  const SigPipeBlock block;
  // What the host printed before comes first. The line itself does not go through the stream: one that failed would
  // stay in its buffer and be written, signal and all, when the host next flushes.
  std::fflush(stdout);
  std::size_t written = 0;
  while (written < line.size()) {
    const ssize_t count = write(STDOUT_FILENO, line.data() + written, line.size() - written);
    if (count > 0) {
      written += static_cast<std::size_t>(count);
    } else if (count == 0 || errno != EINTR) {
      return;
    }
  }
}
