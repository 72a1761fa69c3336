#include "usbserial/DeviceEvents.h"

#include <pthread.h>

#include <utility>

#include "usbserial/BulkInPayload.h"

namespace corvane {
namespace {

// Input lines of the first status byte, error bits of the second; the rest tells about the chip's buffers.
constexpr std::uint8_t kModemLines = 0xF0;
constexpr std::uint8_t kLineErrors = 0x1E;

}  // namespace

void DeviceEvents::Raise(DWORD events) {
  const std::lock_guard lock(mMutex);
  RaiseLocked(events);
}

void DeviceEvents::Clear(DWORD events) {
  const std::lock_guard lock(mMutex);
  mPending &= ~events;
}

void DeviceEvents::RaiseTransmitEmpty() {
  const std::lock_guard lock(mMutex);
  RaiseLocked((mNotifyMask | mWaitMask) & FT_EVENT_TX_EMPTY);
}

void DeviceEvents::NoteStatus(std::span<const std::uint8_t> transfer, std::size_t maxPacket) {
  const std::lock_guard lock(mMutex);
  for (std::size_t at = 0; at + BulkInPayload::kStatusBytes <= transfer.size(); at += maxPacket) {
    const auto modem = static_cast<std::uint8_t>(transfer[at] & kModemLines);
    const auto line = static_cast<std::uint8_t>(transfer[at + 1] & kLineErrors);
    mLineErrors |= line;
    if (mStatusKnown && modem != mModem) {
      RaiseLocked(FT_EVENT_MODEM_STATUS);
    }
    if (line != mLine) {
      RaiseLocked(FT_EVENT_LINE_STATUS);
    }
    mStatusKnown = true;
    mModem = modem;
    mLine = line;
  }
}

DWORD DeviceEvents::Pending() const {
  const std::lock_guard lock(mMutex);
  return mPending;
}

DWORD DeviceEvents::TakeAll() {
  const std::lock_guard lock(mMutex);
  return std::exchange(mPending, 0);
}

DWORD DeviceEvents::TakeLineErrors() {
  const std::lock_guard lock(mMutex);
  return std::exchange(mLineErrors, 0);
}

void DeviceEvents::SetNotification(DWORD mask, FT_EVENT* event) {
  const std::lock_guard lock(mMutex);
  mNotifyMask = event == nullptr ? 0 : mask & kAll;
  mEvent = mNotifyMask == 0 ? nullptr : event;
  mSignalDue = mEvent != nullptr && (mEnded || (mPending & mNotifyMask) != 0);
}

bool DeviceEvents::Signal() {
  const std::lock_guard lock(mMutex);
  if (!mSignalDue) {
    return true;
  }
  if (pthread_mutex_trylock(&mEvent->mutex) != 0) {
    return false;
  }
  mEvent->set = 1;
  pthread_cond_broadcast(&mEvent->condition);
  pthread_mutex_unlock(&mEvent->mutex);
  mSignalDue = false;
  return true;
}

void DeviceEvents::SetWaitMask(DWORD mask) {
  const std::lock_guard lock(mMutex);
  mWaitMask = mask & kAll;
  mChange.notify_all();
}

bool DeviceEvents::Await(TimePoint until, DWORD& events) {
  std::unique_lock lock(mMutex);
  mChange.wait_until(lock, until, [&] { return mEnded || mWaitMask == 0 || (mPending & mWaitMask) != 0; });
  if (mEnded) {
    return false;
  }
  events = mPending & mWaitMask;
  mPending &= ~events;
  return mWaitMask == 0 || events != 0;
}

void DeviceEvents::End() {
  const std::lock_guard lock(mMutex);
  mEnded = true;
  mSignalDue = mEvent != nullptr;
  mChange.notify_all();
}

void DeviceEvents::RaiseLocked(DWORD events) {
  if (events == 0) {
    return;
  }
  mPending |= events;
  mSignalDue = mSignalDue || (events & mNotifyMask) != 0;
  mChange.notify_all();
}

}  // namespace corvane
