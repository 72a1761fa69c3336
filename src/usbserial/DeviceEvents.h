// What has happened on one open device, for FT_GetEventStatus, FT_WaitOnMask and the host's own event: the events of
// ftd2xx.h, and the status bytes that every packet begins with. Filled by the read pipeline and by writes; callable
// from any thread. It never waits for the host's mutex: a host may hold that while it calls any function.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

#include "usbserial/ftd2xx.h"

namespace corvane {

class DeviceEvents {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  static constexpr DWORD kAll = FT_EVENT_RXCHAR | FT_EVENT_MODEM_STATUS | FT_EVENT_LINE_STATUS | FT_EVENT_TX_EMPTY;

  void Raise(DWORD events);
  void Clear(DWORD events);

  /// Notes that all bytes of a write went out; an event only while the host asked for it.
  void RaiseTransmitEmpty();

  /// Compares the status bytes of each packet of a received transfer with those before it.
  void NoteStatus(std::span<const std::uint8_t> transfer, std::size_t maxPacket);

  /// What has happened since the last call of TakeAll.
  DWORD Pending() const;
  DWORD TakeAll();

  /// Error bits of the line status since the last call.
  DWORD TakeLineErrors();

  /// Signals the borrowed event for these events from now on, and for those that are there already; mask 0 or null
  /// ends that. When this returns, an earlier event is no longer used.
  void SetNotification(DWORD mask, FT_EVENT* event);

  /// Signals the host's event if that is due. False when the host holds its mutex: to be tried again.
  bool Signal();

  void SetWaitMask(DWORD mask);

  /// Waits until one of the events of the wait mask is there, takes those, and is true; also with none when the mask
  /// is 0. False at the end of the time; at once after End, and nothing is taken then.
  bool Await(TimePoint until, DWORD& events);

  /// Nothing will happen any more: ends the waiting, and the host's event is due once more, for its waiters to find
  /// out.
  void End();

 private:
  void RaiseLocked(DWORD events);

  mutable std::mutex mMutex;
  std::condition_variable mChange;
  DWORD mPending = 0;
  DWORD mWaitMask = 0;
  DWORD mNotifyMask = 0;
  FT_EVENT* mEvent = nullptr;  ///< the host's
  bool mSignalDue = false;
  bool mEnded = false;
  bool mStatusKnown = false;
  std::uint8_t mModem = 0;
  std::uint8_t mLine = 0;
  DWORD mLineErrors = 0;
};

}  // namespace corvane
