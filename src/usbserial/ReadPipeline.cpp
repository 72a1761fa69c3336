#include "usbserial/ReadPipeline.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

#include "usbserial/BulkInPayload.h"
#include "usbserial/SignalShield.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPause{1};
constexpr milliseconds kReapLimit{1000};
// Below it a full receive buffer is not filled up again, unless a reader waits: not a wake-up for every byte read.
constexpr std::size_t kLeastRoom = ReadPipeline::kDefaultRequest;

constexpr std::size_t WholePackets(std::size_t length, std::size_t maxPacket) {
  return (length + maxPacket - 1) / maxPacket * maxPacket;
}

}  // namespace

ReadPipeline::ReadPipeline(libusb_context* context, libusb_device_handle* handle, const BridgeEndpoints& endpoints,
                           DeviceEvents& events)
    : mContext(context),
      mHandle(handle),
      mInterfaceNumber(endpoints.interfaceNumber),
      mEndpoint(endpoints.in),
      mMaxPacket(endpoints.maxPacket),
      mEvents(events) {
  for (auto& slot : mSlots) {
    slot = std::make_unique<Slot>();
    slot->owner = this;
    slot->transfer.reset(libusb_alloc_transfer(0));
    if (slot->transfer == nullptr) {
      throw std::bad_alloc();
    }
    slot->data = std::make_unique_for_overwrite<std::uint8_t[]>(WholePackets(kMaxRequest, mMaxPacket));
  }
}

void ReadPipeline::Start() {
  mRunning = true;
  const SignalShield shield;
  try {
    mReader = std::thread(&ReadPipeline::RunReader, this);
    mProcessor = std::thread(&ReadPipeline::RunProcessor, this);
  } catch (...) {
    Stop();
    throw;
  }
  pthread_setname_np(mReader.native_handle(), "ft-reader");
  pthread_setname_np(mProcessor.native_handle(), "ft-processor");
}

void ReadPipeline::Stop() {
  {
    const std::lock_guard lock(mMutex);
    mRunning = false;
    mStopping = true;
    CancelInFlight();
    mSlotFree.notify_all();
    mRoom.notify_all();
  }
  mNews.Announce();
  mEvents.End();
  libusb_interrupt_event_handler(mContext);
  for (std::thread* const thread : {&mReader, &mProcessor}) {
    if (thread->joinable()) {
      thread->join();
    }
  }
  Reap();
}

// Expects the mutex to be held.
void ReadPipeline::CancelInFlight() {
  for (const auto& slot : mSlots) {
    if (slot != nullptr && slot->state == SlotState::kInFlight) {
      libusb_cancel_transfer(slot->transfer.get());
    }
  }
}

// Expects the mutex to be held.
ReadPipeline::Slot* ReadPipeline::FirstInFlight() const {
  const auto found = std::find_if(mSlots.begin(), mSlots.end(), [](const auto& slot) {
    return slot != nullptr && slot->state == SlotState::kInFlight;
  });
  return found == mSlots.end() ? nullptr : found->get();
}

// libusb may write into a request until it has handed it back, so one that stays away is never freed.
void ReadPipeline::Reap() {
  EventPump pump(mContext);
  const auto deadline = steady_clock::now() + kReapLimit;
  for (auto& slot : mSlots) {
    const auto inFlight = [&] {
      const std::lock_guard lock(mMutex);
      return slot != nullptr && slot->state == SlotState::kInFlight;
    };
    while (inFlight()) {
      if (steady_clock::now() < deadline && pump.Step(&slot->done)) {
        continue;
      }
      const std::lock_guard lock(mMutex);
      if (slot->state == SlotState::kInFlight) {
        static_cast<void>(slot.release());
      }
    }
  }
}

std::size_t ReadPipeline::Available(std::size_t wanted) {
  const std::lock_guard lock(mMutex);
  const std::size_t available = mBuffer.Size();
  if (available < wanted) {
    mWanted = std::min(mWanted, wanted);
  }
  if (mAwaitingRoom && available < wanted && available < mBuffer.Capacity()) {
    mRoomAsked = true;
    mRoom.notify_one();
  }
  return available;
}

std::size_t ReadPipeline::Take(std::span<std::uint8_t> out) {
  const std::lock_guard lock(mMutex);
  const std::size_t count = mBuffer.Take(out);
  if (mBuffer.Size() == 0) {
    mEvents.Clear(FT_EVENT_RXCHAR);
  }
  if (mAwaitingRoom && mBuffer.Capacity() - mBuffer.Size() >= kLeastRoom) {
    mRoom.notify_one();
  }
  return count;
}

void ReadPipeline::Discard() {
  const std::lock_guard lock(mMutex);
  mBuffer.Clear();
  mEvents.Clear(FT_EVENT_RXCHAR);
  if (!mRunning) {
    return;  // no request brings anything any more, and a slot may have been left to libusb
  }
  for (const auto& slot : mSlots) {
    slot->discard = slot->state != SlotState::kFree;
  }
  // What the device sends from here on goes to later requests, so dropping all of these loses nothing new.
  CancelInFlight();
  mRoom.notify_one();
}

void ReadPipeline::SetHeld(bool held) {
  const std::lock_guard lock(mMutex);
  mHeld = held;
  mSlotFree.notify_one();
}

// Handles the events itself: the processor may be waiting for room in the receive buffer.
ReadPipeline::Pause::Pause(ReadPipeline& pipeline) : mPipeline(pipeline) {
  EventPump pump(mPipeline.mContext);
  const auto deadline = steady_clock::now() + kReapLimit;
  std::unique_lock lock(mPipeline.mMutex);
  ++mPipeline.mPauses;
  mPipeline.CancelInFlight();
  bool pumping = true;
  for (Slot* slot = nullptr; pumping && (slot = mPipeline.FirstInFlight()) != nullptr;) {
    lock.unlock();
    pumping = pump.Step(&slot->done) && steady_clock::now() < deadline;
    lock.lock();
  }
  mComplete = mPipeline.FirstInFlight() == nullptr;
}

ReadPipeline::Pause::~Pause() {
  const std::lock_guard lock(mPipeline.mMutex);
  --mPipeline.mPauses;
  mPipeline.mSlotFree.notify_one();
}

void ReadPipeline::Wake() {
  libusb_interrupt_event_handler(mContext);
}

void ReadPipeline::OnCompletion(libusb_transfer* transfer) {
  auto& slot = *static_cast<Slot*>(transfer->user_data);
  const std::lock_guard lock(slot.owner->mMutex);
  slot.state = SlotState::kCompleted;
  slot.done = 1;
}

void ReadPipeline::RunReader() {
  for (;;) {
    std::unique_lock lock(mMutex);
    mSlotFree.wait(lock, [&] { return !mRunning || MaySubmit(); });
    if (!mRunning || !Submit(lock)) {
      return;
    }
  }
}

// Expects the mutex to be held.
bool ReadPipeline::MaySubmit() const {
  return mRunning && mSlots[mNext]->state == SlotState::kFree && !mHalted && !mHeld && mPauses == 0;
}

// Submits under the lock, so that a purge or a stop sees the slot either free or able to be cancelled. False when the
// device has failed.
bool ReadPipeline::Submit(std::unique_lock<std::mutex>& lock) {
  Slot& slot = *mSlots[mNext];
  libusb_fill_bulk_transfer(slot.transfer.get(), mHandle, mEndpoint, slot.data.get(),
                            static_cast<int>(WholePackets(mRequestLength, mMaxPacket)), &OnCompletion, &slot, 0);
  slot.state = SlotState::kInFlight;
  const int result = libusb_submit_transfer(slot.transfer.get());
  if (result == LIBUSB_SUCCESS) {
    mNext = (mNext + 1) % kSlots;
    return true;
  }
  if (result == LIBUSB_ERROR_OTHER) {
    // Moving on to the next slot keeps the order of bytes only if the processor passes over this one too.
    slot.transfer->status = LIBUSB_TRANSFER_CANCELLED;
    slot.transfer->actual_length = 0;
    slot.state = SlotState::kCompleted;
    slot.done = 1;
    mNext = (mNext + 1) % kSlots;
    lock.unlock();
    libusb_interrupt_event_handler(mContext);
    std::this_thread::sleep_for(kPause);
    return true;
  }
  slot.state = SlotState::kFree;
  lock.unlock();
  Fail();
  return false;
}

void ReadPipeline::RunProcessor() {
  EventPump pump(mContext);
  for (std::size_t current = 0;; current = (current + 1) % kSlots) {
    Slot& slot = *mSlots[current];
    if (!AwaitCompletion(pump, slot)) {
      break;
    }
    if (!Process(slot)) {
      Fail();
      break;
    }
    Recycle(slot);
  }
  TellOfFailure();
}

// False when there is nothing more to wait for. In order, a free slot after a stall means that every request has come
// back: then nothing is under way that clearing the halt could harm.
bool ReadPipeline::AwaitCompletion(EventPump& pump, Slot& slot) {
  for (;;) {
    const bool told = mEvents.Signal();
    bool resume = false;
    bool still = false;
    {
      const std::lock_guard lock(mMutex);
      if (!mRunning) {
        return false;
      }
      if (slot.state == SlotState::kCompleted) {
        return true;
      }
      resume = mHalted && slot.state == SlotState::kFree;
      still = IsHeldStill();
    }
    if (still && DeviceGone()) {
      Fail();
      return false;
    }
    if (resume ? !Resume() : !pump.Step(&slot.done, told ? EventPump::kSlice : kPause)) {
      Fail();
      return false;
    }
  }
}

// Expects the mutex to be held. Reading is held and every request has come back: none will tell of an unplug.
bool ReadPipeline::IsHeldStill() const {
  return mHeld && FirstInFlight() == nullptr;
}

// Asks the system, not the device, and not all the time.
bool ReadPipeline::DeviceGone() {
  const auto now = steady_clock::now();
  if (now - mLastLook < EventPump::kSlice / 2) {
    return false;
  }
  mLastLook = now;
  return libusb_kernel_driver_active(mHandle, mInterfaceNumber) == LIBUSB_ERROR_NO_DEVICE;
}

// Hands a completed slot's data on; false when the device has failed. A purged or cancelled request is no failure: it
// goes back to the reader.
bool ReadPipeline::Process(Slot& slot) {
  const libusb_transfer_status status = slot.transfer->status;
  {
    const std::lock_guard lock(mMutex);
    if (status == LIBUSB_TRANSFER_STALL) {
      mHalted = true;
      CancelInFlight();
    }
    if (slot.discard) {
      return true;
    }
  }
  switch (status) {
    case LIBUSB_TRANSFER_COMPLETED:
    case LIBUSB_TRANSFER_CANCELLED:
    case LIBUSB_TRANSFER_TIMED_OUT:
    case LIBUSB_TRANSFER_STALL:
      Deliver(slot);
      return true;
    default:
      return false;
  }
}

// Clears the halt of a stalled endpoint and lets the reader go on; false when the device is gone.
bool ReadPipeline::Resume() {
  DWORD retries = mClearRetries;
  int result = LIBUSB_SUCCESS;
  do {
    result = libusb_clear_halt(mHandle, mEndpoint);
    if (result == LIBUSB_ERROR_NO_DEVICE) {
      return false;
    }
    std::this_thread::sleep_for(kPause);  // an endpoint that stalls for ever must not take a core
  } while (result != LIBUSB_SUCCESS && mRunning && retries-- > 0);
  const std::lock_guard lock(mMutex);
  mHalted = false;
  mSlotFree.notify_one();
  return true;
}

// Moves the data into the receive buffer. While that is full the slot stays taken, so the device is not asked for more
// than there is room for.
void ReadPipeline::Deliver(Slot& slot) {
  const std::span<const std::uint8_t> transfer(slot.data.get(), static_cast<std::size_t>(slot.transfer->actual_length));
  mEvents.NoteStatus(transfer, mMaxPacket);
  BulkInPayload payload(transfer, mMaxPacket);
  std::unique_lock lock(mMutex);
  bool untold = false;
  const auto tell = [&] {
    if (std::exchange(untold, false)) {
      mEvents.Raise(FT_EVENT_RXCHAR);
    }
    if (mBuffer.Size() >= mWanted) {
      mWanted = SIZE_MAX;
      mNews.Announce();
    }
  };
  while (mRunning && !slot.discard && !payload.Front().empty()) {
    const std::size_t count = mBuffer.Append(payload.Front());
    payload.Consume(count);
    untold = untold || count != 0;
    if (count == 0) {
      tell();
      AwaitRoom(lock, slot);
    }
  }
  tell();
}

// A host that waits for its event may be the one that makes room.
void ReadPipeline::AwaitRoom(std::unique_lock<std::mutex>& lock, const Slot& slot) {
  const auto go = [&] {
    const std::size_t room = mBuffer.Capacity() - mBuffer.Size();
    return !mRunning || slot.discard || room >= kLeastRoom || (mRoomAsked && room != 0);
  };
  mAwaitingRoom = true;
  while (!go()) {
    mRoom.wait_for(lock, mEvents.Signal() ? EventPump::kSlice : kPause, go);
  }
  mAwaitingRoom = mRoomAsked = false;
}

// In the usual case the slot is the one to be submitted next, and goes again from here: the reader is not woken up.
void ReadPipeline::Recycle(Slot& slot) {
  std::unique_lock lock(mMutex);
  slot.discard = false;
  slot.done = 0;  // a free slot that looks done would let the processor wait without a pause
  slot.state = SlotState::kFree;
  if (MaySubmit()) {
    Submit(lock);
  }
}

// Both loops end by it.
void ReadPipeline::Fail() {
  {
    const std::lock_guard lock(mMutex);
    mRunning = false;
    mSlotFree.notify_all();
    mRoom.notify_all();
  }
  mNews.Announce();
  mEvents.End();
  libusb_interrupt_event_handler(mContext);
}

// The host may hold its mutex for as long as it likes, or ask for the signal only now.
void ReadPipeline::TellOfFailure() {
  std::unique_lock lock(mMutex);
  while (!mStopping) {
    mRoom.wait_for(lock, mEvents.Signal() ? EventPump::kSlice : kPause);
  }
}

}  // namespace corvane
