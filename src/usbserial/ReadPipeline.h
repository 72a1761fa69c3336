// Keeps four bulk IN requests under way for one open device and collects their data in the receive buffer. A processor
// thread handles the completions and submits each request again from there; a reader thread submits those that cannot
// go again at once, at the start too. Slots are submitted, and processed, round robin, so bytes stay in order. When the
// endpoint stalls, the requests under way are taken back, in order and with what they brought, before its halt is
// cleared, once. Used by BridgeDevice; it does not wait on behalf of FT_Read, which polls, and whose pauses it ends.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <thread>

#include "usbserial/BridgeEnumeration.h"
#include "usbserial/DeviceEvents.h"
#include "usbserial/EventPump.h"
#include "usbserial/NewsCounter.h"
#include "usbserial/ReceiveBuffer.h"
#include "usbserial/UsbOwners.h"

namespace corvane {

class ReadPipeline {
 public:
  static constexpr std::size_t kSlots = 4;
  static constexpr std::size_t kDefaultRequest = 4096;
  static constexpr DWORD kDefaultClearRetries = 50;
  static constexpr std::size_t kMaxRequest = std::size_t{64} * 1024;

  /// Borrows context, handle and events, which outlive the pipeline. Throws std::bad_alloc.
  ReadPipeline(libusb_context* context, libusb_device_handle* handle, const BridgeEndpoints& endpoints,
               DeviceEvents& events);
  ~ReadPipeline() { Stop(); }
  ReadPipeline(const ReadPipeline&) = delete;
  ReadPipeline& operator=(const ReadPipeline&) = delete;

  /// Starts both threads. Throws std::system_error when the system has no thread left; nothing is left running then.
  void Start();

  /// Ends both threads and takes back the requests under way, waiting at most a second for them: a request that does
  /// not come back is left to libusb for good. Once stopped, a pipeline does not start again.
  void Stop();

  /// False as soon as the device failed or the pipeline was stopped.
  bool Running() const { return mRunning; }

  /// Bytes that can be taken. When they are fewer than wanted, so many are announced, and room for them is used at
  /// once.
  std::size_t Available(std::size_t wanted = SIZE_MAX);

  /// Announces as many bytes as somebody wanted, and the end of the reading.
  NewsCounter& News() { return mNews; }

  std::size_t BufferCapacity() const { return mBuffer.Capacity(); }

  /// Takes received bytes, as many as there are and `out` holds; their number.
  std::size_t Take(std::span<std::uint8_t> out);

  /// Drops received bytes, those of completed requests, and the requests under way. Bytes that arrive after the call
  /// are kept.
  void Discard();

  /// Submits no further requests while true; those under way still bring what they bring.
  void SetHeld(bool held);

  /// No request is under way while one of these lives, for what the device does not bear otherwise. What the requests
  /// brought is kept. Waits at most a second for them; Complete tells whether they have all come back.
  class Pause {
   public:
    explicit Pause(ReadPipeline& pipeline);
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

    bool Complete() const { return mComplete; }

   private:
    ReadPipeline& mPipeline;
    bool mComplete = false;
  };

  /// Ends the reading as a failure of the device does: readers see it by Running(), the host's event is signalled.
  void Fail();

  /// Makes the processor look at the events that are due.
  void Wake();

  /// How often the halt of a stalled endpoint is cleared before the next request is tried.
  void SetClearRetries(DWORD retries) { mClearRetries = retries; }

  /// Length of requests submitted from now on, rounded up to whole packets; at most kMaxRequest.
  void SetRequestLength(std::size_t length) { mRequestLength = length; }

 private:
  enum class SlotState : std::uint8_t { kFree, kInFlight, kCompleted };

  struct Slot {
    ReadPipeline* owner = nullptr;
    UsbTransfer transfer;
    std::unique_ptr<std::uint8_t[]> data;
    SlotState state = SlotState::kFree;
    bool discard = false;  ///< a purge came over it: its data is dropped
    int done = 0;          ///< what libusb's event handling watches
  };

  static void LIBUSB_CALL OnCompletion(libusb_transfer* transfer);

  void RunReader();
  void RunProcessor();
  bool MaySubmit() const;
  bool Submit(std::unique_lock<std::mutex>& lock);
  bool AwaitCompletion(EventPump& pump, Slot& slot);
  bool IsHeldStill() const;
  bool DeviceGone();
  bool Process(Slot& slot);
  bool Resume();
  void Deliver(Slot& slot);
  void AwaitRoom(std::unique_lock<std::mutex>& lock, const Slot& slot);
  void Recycle(Slot& slot);
  void CancelInFlight();
  Slot* FirstInFlight() const;
  void TellOfFailure();
  void Reap();

  libusb_context* mContext;
  libusb_device_handle* mHandle;
  int mInterfaceNumber;
  std::uint8_t mEndpoint;
  std::size_t mMaxPacket;
  DeviceEvents& mEvents;
  std::atomic<std::size_t> mRequestLength{kDefaultRequest};
  std::atomic<DWORD> mClearRetries{kDefaultClearRetries};

  // The buffer mutex guards the receive buffer and the state of the slots. It is never held while events are handled.
  mutable std::mutex mMutex;
  std::condition_variable mSlotFree;
  std::condition_variable mRoom;
  ReceiveBuffer mBuffer;
  std::array<std::unique_ptr<Slot>, kSlots> mSlots;
  std::size_t mNext = 0;           ///< the slot to be submitted next
  std::size_t mWanted = SIZE_MAX;  ///< the least that a look at what is available found missing
  bool mAwaitingRoom = false;      ///< the processor has bytes that do not fit
  bool mRoomAsked = false;         ///< and somebody waits for them
  bool mHeld = false;
  int mPauses = 0;
  bool mHalted = false;               ///< the endpoint stalled: nothing is submitted until its halt is cleared
  std::atomic<bool> mRunning{false};  ///< changed under the mutex
  NewsCounter mNews;
  bool mStopping = false;
  std::chrono::steady_clock::time_point mLastLook;  ///< the processor's: when it last asked after the device

  std::thread mReader;
  std::thread mProcessor;
};

}  // namespace corvane
