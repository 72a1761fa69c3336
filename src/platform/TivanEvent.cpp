#include "platform/TivanEvent.h"

#include <cerrno>
#include <memory>
#include <new>

namespace {

class GuardLock {
 public:
  explicit GuardLock(pthread_mutex_t& guard) : mGuard(guard) { pthread_mutex_lock(&mGuard); }
  ~GuardLock() { pthread_mutex_unlock(&mGuard); }
  GuardLock(const GuardLock&) = delete;
  GuardLock& operator=(const GuardLock&) = delete;

 private:
  pthread_mutex_t& mGuard;
};

}  // namespace

TivanEvent* CreateEvent(void* /*attributes*/, bool manualReset, bool initialState, const char* /*name*/) {
  std::unique_ptr<TivanEvent> event(new (std::nothrow) TivanEvent);
  if (event == nullptr) {
    return nullptr;
  }
  event->manualReset = manualReset;
  if (sem_init(&event->signal, 0, initialState ? 1 : 0) != 0) {
    return nullptr;
  }
  if (pthread_mutex_init(&event->guard, nullptr) != 0) {
    sem_destroy(&event->signal);
    return nullptr;
  }
  return event.release();
}

int SetEvent(TivanEvent* event) {
  if (event == nullptr) {
    return 0;
  }
  const GuardLock lock(event->guard);
  int value = 0;
  sem_getvalue(&event->signal, &value);
  if (value == 0) {
    sem_post(&event->signal);
  }
  return 1;
}

int ResetEvent(TivanEvent* event) {
  if (event == nullptr) {
    return 0;
  }
  const GuardLock lock(event->guard);
  int value = 0;
  sem_getvalue(&event->signal, &value);
  if (value == 1) {
    sem_trywait(&event->signal);
  }
  return 1;
}

unsigned int WaitForSingleObject(TivanEvent* event, unsigned int /*milliseconds*/) {
  if (event == nullptr) {
    return 0;
  }
  {
    // A wait does not start in the middle of a set or a reset.
    const GuardLock lock(event->guard);
  }
  while (sem_wait(&event->signal) != 0 && errno == EINTR) {
  }
  if (event->manualReset) {
    SetEvent(event);
  }
  return corvane::kWaitEnded;
}

int CloseHandle(TivanEvent* event) {
  const std::unique_ptr<TivanEvent> owned(event);
  if (owned != nullptr) {
    sem_destroy(&owned->signal);
    pthread_mutex_destroy(&owned->guard);
  }
  return 1;
}

int InitializeCriticalSection(pthread_mutex_t* section) {
  pthread_mutexattr_t attributes;
  if (const int result = pthread_mutexattr_init(&attributes); result != 0) {
    return result;
  }
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  const int result = pthread_mutex_init(section, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return result;
}
