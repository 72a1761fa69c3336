#include "Progress.h"

#include <unistd.h>

#include <chrono>
#include <iostream>

Progress::Progress(std::string what) : mWhat(std::move(what)), mThread([this] { Run(); }) {
}

Progress::~Progress() {
  {
    const std::scoped_lock lock(mMutex);
    mIsDone = true;
  }
  mDone.notify_one();
  mThread.join();
}

void Progress::Run() {
  const bool onTerminal = isatty(STDERR_FILENO) != 0;
  // A log file gets a line now and then, a terminal one line that counts.
  const std::chrono::seconds step(onTerminal ? 1 : 10);
  std::unique_lock lock(mMutex);
  std::chrono::seconds elapsed(1);
  bool shown = false;
  for (auto wait = elapsed; !mDone.wait_for(lock, wait, [this] { return mIsDone; }); wait = step, elapsed += step) {
    std::cerr << (onTerminal ? "\r" : "") << mWhat << " ... " << elapsed.count() << " s" << (onTerminal ? "" : "\n")
              << std::flush;
    shown = true;
  }
  if (shown && onTerminal) {
    std::cerr << "\r\x1b[K" << std::flush;
  }
}
