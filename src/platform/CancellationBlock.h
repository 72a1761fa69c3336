// Keeps a cancellation of the host's thread (pthread_cancel) from ending it inside a call: it would unwind through code
// that swallows exceptions, which ends the process, and leave a transfer half made. It stays pending and acts once the
// host lets it. Used by the exported Corvane functions; those of the bridge have their own (usbserial/CancelShield.h).
#pragma once

#include <pthread.h>

namespace corvane {

/// In force from the first of a thread's blocks until its last; blocks may be copied and may end in any order.
class CancellationBlock {
 public:
  CancellationBlock() {
    if (mDepth++ == 0) {
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &mBefore);
    }
  }
  CancellationBlock(const CancellationBlock& /*other*/) : CancellationBlock() {}
  CancellationBlock& operator=(const CancellationBlock&) = default;
  ~CancellationBlock() {
    if (--mDepth == 0) {
      pthread_setcancelstate(mBefore, nullptr);
    }
  }

 private:
  inline static thread_local int mDepth = 0;
  inline static thread_local int mBefore = PTHREAD_CANCEL_ENABLE;
};

}  // namespace corvane
