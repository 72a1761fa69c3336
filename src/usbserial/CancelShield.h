// Keeps a cancellation of the host's thread (pthread_cancel) from ending it inside a call, where it may hold libusb's
// or this library's locks: they would stay locked for good. Used by the frame of the exported functions.
#pragma once

#include <pthread.h>

namespace corvane {

class CancelShield {
 public:
  CancelShield() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mBefore); }
  ~CancelShield() { pthread_setcancelstate(mBefore, nullptr); }
  CancelShield(const CancelShield&) = delete;
  CancelShield& operator=(const CancelShield&) = delete;

  /// Waits with the shield down, for a short time: a cancellation that the host allows acts before it or behind it. The
  /// caller holds no lock.
  template <class Wait>
  void Lower(Wait&& wait) const {
    const Gap gap(mBefore);
    pthread_testcancel();
    wait();
    pthread_testcancel();
  }

 private:
  class Gap {
   public:
    explicit Gap(int state) { pthread_setcancelstate(state, nullptr); }
    ~Gap() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr); }
    Gap(const Gap&) = delete;
    Gap& operator=(const Gap&) = delete;
  };

  int mBefore = PTHREAD_CANCEL_ENABLE;
};

}  // namespace corvane
