// Event objects and the recursive critical section that the library's threads meet at. Simpler than their namesakes
// elsewhere: an event has no name and a wait has no time-out.
#pragma once

#include <pthread.h>
#include <semaphore.h>

namespace corvane {

/// Answer of a wait that ended.
inline constexpr unsigned int kWaitEnded = 100;

}  // namespace corvane

/// Made by CreateEvent, released by CloseHandle; to everybody else a handle.
struct TivanEvent {
  bool manualReset = false;  ///< A wait leaves the event signalled.
  sem_t signal{};            ///< 1 signalled, 0 not; private to the process.
  pthread_mutex_t guard{};   ///< Serialises set, reset and the start of a wait.
};

/// A new event, owned by the caller until CloseHandle; null when the system has no semaphore or mutex left.
/// attributes and name are ignored.
TivanEvent* CreateEvent(void* attributes, bool manualReset, bool initialState, const char* name);

/// Signals the event; setting a signalled event changes nothing. 1, or 0 for null. Any thread.
int SetEvent(TivanEvent* event);

/// Takes the signal away. 1, or 0 for null. Any thread.
int ResetEvent(TivanEvent* event);

/// Waits until the event is signalled. milliseconds is ignored: the wait ends with a signal only, so no event may be
/// waited for that could stay unset. An auto-reset event is taken by one waiter, a manual-reset event stays signalled.
/// corvane::kWaitEnded, or 0 at once for null. Any thread.
unsigned int WaitForSingleObject(TivanEvent* event, unsigned int milliseconds);

/// Releases the event, for which nobody may wait any more. Always 1, also for null.
int CloseHandle(TivanEvent* event);

/// Makes the mutex recursive: the thread that holds it may lock it again. Answers the initialisation's result, 0 for
/// success.
int InitializeCriticalSection(pthread_mutex_t* section);
