// Keeps the host's signals away from threads that are started in its scope: they inherit a mask that blocks all.
#pragma once

#include <csignal>

namespace corvane {

class SignalShield {
 public:
  SignalShield() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &mBefore);
  }
  ~SignalShield() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
  SignalShield(const SignalShield&) = delete;
  SignalShield& operator=(const SignalShield&) = delete;

 private:
  sigset_t mBefore{};
};

}  // namespace corvane
