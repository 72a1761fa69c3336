// Tells a waiting user what is going on: after a second of work a line on stderr, kept up to date on a terminal. Lives
// as long as the work.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class Progress {
 public:
  /// what: for example "Moving to 550 nm".
  explicit Progress(std::string what);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void Run();

  std::string mWhat;
  std::mutex mMutex;
  std::condition_variable mDone;
  bool mIsDone = false;
  std::thread mThread;
};
