#include "usbserial/BridgeDevice.h"

#include <algorithm>
#include <chrono>
#include <list>
#include <optional>
#include <system_error>
#include <thread>

#include "usbserial/FtFailure.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

constexpr std::size_t kFullSpeedPacket = 64;
constexpr int kPurgeRepeats = 6;
constexpr int kSignalTries = 20;
constexpr milliseconds kSignalPause{1};
constexpr milliseconds kEventSlice{100};
constexpr std::chrono::microseconds kShortPause{1};
constexpr milliseconds kFastPolling{20};
constexpr milliseconds kLongestPause{10};

}  // namespace

nanoseconds PollInterval(nanoseconds quiet) {
  return quiet < kFastPolling ? nanoseconds(kShortPause) : std::min<nanoseconds>(quiet / 20, kLongestPause);
}

BridgeDevice::Claim::Claim(libusb_device_handle* handle, int interfaceNumber)
    : mHandle(handle), mInterfaceNumber(interfaceNumber) {
  if (!Resume()) {
    throw FtFailure(FT_DEVICE_NOT_OPENED);
  }
}

BridgeDevice::Claim::~Claim() {
  libusb_release_interface(mHandle, mInterfaceNumber);
}

// A kernel driver is not asked back for the time between.
void BridgeDevice::Claim::Suspend() {
  libusb_set_auto_detach_kernel_driver(mHandle, 0);
  libusb_release_interface(mHandle, mInterfaceNumber);
}

bool BridgeDevice::Claim::Resume() {
  libusb_set_auto_detach_kernel_driver(mHandle, 1);  // where it is not supported the claim tells
  return libusb_claim_interface(mHandle, mInterfaceNumber) == LIBUSB_SUCCESS;
}

/// While one lives, nothing but control requests is under way on an open channel, and it is not given back.
class BridgeDevice::Standstill {
 public:
  explicit Standstill(BridgeDevice& device) : mDevice(device), mUse(device.mUse), mOpen(!device.mClosing) {
    mDevice.mWrites->SetHeld(true);
    mPause.emplace(*mDevice.mReads);
  }
  ~Standstill() { mDevice.mWrites->SetHeld(false); }
  Standstill(const Standstill&) = delete;
  Standstill& operator=(const Standstill&) = delete;

  bool IsOpen(const BridgeDevice& device) const { return mOpen && &mDevice == &device; }
  bool Complete() const { return mPause->Complete(); }

  void Suspend() {
    if (mOpen) {
      mDevice.mClaim->Suspend();
    }
  }
  bool Resume() {
    const bool done = !mOpen || mDevice.mClaim->Resume();
    if (!done) {
      mDevice.mReads->Fail();
    }
    return done;
  }

 private:
  BridgeDevice& mDevice;
  std::shared_lock<std::shared_mutex> mUse;
  bool mOpen;
  std::optional<ReadPipeline::Pause> mPause;
};

BridgeDevice::BridgeDevice(libusb_context* context, const BridgeEntry& entry)
    : mDevice(entry.device.get()), mInterfaceIndex(entry.interfaceIndex), mHandle(OpenEntry(entry)) {
  const BridgeEndpoints endpoints = EndpointsOf(entry);
  mClaim = std::make_unique<Claim>(mHandle.get(), endpoints.interfaceNumber);
  mIdentity = IdentityOf(entry, context, mHandle.get());
  mIdentity.highSpeed = endpoints.maxPacket > kFullSpeedPacket;

  mControl =
      std::make_unique<ControlPath>(context, mHandle.get(), mIdentity, static_cast<std::uint16_t>(entry.channel));
  mLine = std::make_unique<LineSettings>(*mControl);
  mLine->Open();

  mWrites = std::make_unique<BulkOut>(context, mHandle.get(), endpoints.out);
  mReads = std::make_unique<ReadPipeline>(context, mHandle.get(), endpoints, mEvents);
  try {
    mReads->Start();
  } catch (const std::system_error&) {
    throw FtFailure(FT_INSUFFICIENT_RESOURCES);
  }
}

void BridgeDevice::Close() {
  if (mClosing.exchange(true)) {
    return;
  }
  mControl->End();
  mWrites->Cancel();  // before the reads, so that a write ends while these come back
  mReads->Stop();
  // The one who closes may be the one who holds the event's mutex.
  for (int i = 0; i < kSignalTries && !mEvents.Signal(); ++i) {
    std::this_thread::sleep_for(kSignalPause);
  }
  mEvents.SetNotification(0, nullptr);
  const std::unique_lock use(mUse);
  mClaim.reset();
  mHandle.reset();
}

FT_STATUS BridgeDevice::Read(std::span<std::uint8_t> out, DWORD& received, const CancelShield& shield) {
  const auto start = steady_clock::now();
  const milliseconds timeout(mReadTimeout.load());
  const std::size_t capacity = mReads->BufferCapacity();
  auto lastNews = start;
  std::size_t lastAvailable = 0;
  for (;;) {
    const auto seen = mReads->News().Now();
    // The device's state comes first: after an unplug the answer is 4, also when bytes are waiting.
    if (!mReads->Running()) {
      return FT_IO_ERROR;
    }
    // More than the buffer ever holds is fetched in parts, early enough that the device need not pause.
    const std::size_t missing = out.size() - received;
    const std::size_t wanted = missing > capacity ? capacity / 2 : missing;
    const std::size_t available = mReads->Available(wanted);
    if (wanted <= available) {
      received += static_cast<DWORD>(mReads->Take(out.subspan(received)));
      if (received == out.size()) {
        return FT_OK;
      }
    }
    const auto now = steady_clock::now();
    if (timeout.count() != 0 && now - start >= timeout) {
      received += static_cast<DWORD>(mReads->Take(out.subspan(received)));
      return FT_OK;
    }
    if (available != lastAvailable) {
      lastAvailable = available;
      lastNews = now;
    }
    nanoseconds pause = PollInterval(now - lastNews);
    if (timeout.count() != 0) {
      pause = std::min<nanoseconds>(pause, start + timeout - now);
    }
    shield.Lower([&] { mReads->News().Pause(seen, pause); });
  }
}

FT_STATUS BridgeDevice::Write(void* bytes, DWORD count, DWORD* written) {
  const std::lock_guard writer(mWriteLock);
  if (bytes == nullptr || written == nullptr) {
    return FT_INVALID_PARAMETER;
  }
  *written = 0;
  if (count == 0) {
    return FT_OK;
  }
  return Send({static_cast<std::uint8_t*>(bytes), count}, *written);
}

FT_STATUS BridgeDevice::Send(std::span<std::uint8_t> bytes, DWORD& written) {
  return WhileOpen([&] {
    mUnsent = static_cast<DWORD>(bytes.size());
    const auto sent = mWrites->Send(bytes, milliseconds(mWriteTimeout.load()));
    written = static_cast<DWORD>(sent.bytes);
    mUnsent = 0;
    if (sent.deviceGone) {
      mReads->Fail();
    }
    if (written != bytes.size()) {
      return FT_IO_ERROR;
    }
    mEvents.RaiseTransmitEmpty();
    SignalEvents();
    // Not a sleep: the shortest lasts more than fifty times as long.
    for (const auto end = steady_clock::now() + kShortPause; steady_clock::now() < end;) {
    }
    return FT_OK;
  });
}

// Only the two bits do something: a mask without them keeps received bytes.
FT_STATUS BridgeDevice::Purge(DWORD mask) {
  return WhileOpen([&] {
    if ((mask & FT_PURGE_RX) != 0) {
      const FT_STATUS status = PurgeReceive();
      if (status != FT_OK) {
        return status;
      }
    }
    if ((mask & FT_PURGE_TX) != 0) {
      return mControl->Send(BridgeRequest::kPurgeTransmit);
    }
    return FT_OK;
  });
}

FT_STATUS BridgeDevice::PurgeReceive() {
  FT_STATUS status = FT_OK;
  for (int i = 0; i < kPurgeRepeats; ++i) {
    status = mControl->Send(BridgeRequest::kPurgeReceive);
  }
  if (status == FT_OK) {
    mReads->Discard();
  }
  return status;
}

// A reset takes every interface from its holder, with the requests under way, and lets kernel drivers have it.
FT_STATUS BridgeDevice::ResetPort(const std::vector<std::shared_ptr<BridgeDevice>>& channels) {
  std::list<Standstill> still;
  for (const auto& channel : channels) {
    still.emplace_back(*channel);
  }
  if (std::none_of(still.begin(), still.end(), [&](const auto& each) { return each.IsOpen(*this); }) ||
      !std::all_of(still.begin(), still.end(), [](const auto& each) { return each.Complete(); })) {
    return FT_IO_ERROR;
  }
  std::for_each(still.begin(), still.end(), [](auto& each) { each.Suspend(); });
  bool done = libusb_reset_device(mHandle.get()) == LIBUSB_SUCCESS;
  if (done) {
    std::for_each(channels.begin(), channels.end(), [](const auto& channel) { channel->mLine->Forget(); });
  }
  for (Standstill& each : still) {
    done = each.Resume() && done;
  }
  return done ? FT_OK : FT_IO_ERROR;
}

FT_STATUS BridgeDevice::Request(BridgeRequest name, unsigned value, unsigned index, std::span<std::uint8_t> answer) {
  return WhileOpen([&] { return mControl->Send(name, value, index, answer); });
}

FT_STATUS BridgeDevice::Vendor(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                               std::span<std::uint8_t> buffer, std::uint8_t type) {
  return WhileOpen([&] { return mControl->Vendor(request, value, index, buffer, type); });
}

FT_STATUS BridgeDevice::WaitOnMask(DWORD& events, const CancelShield& shield) {
  const milliseconds timeout(mReadTimeout.load());
  const auto end = timeout.count() == 0 ? steady_clock::time_point::max() : steady_clock::now() + timeout;
  for (;;) {
    if (!mReads->Running()) {
      return FT_IO_ERROR;
    }
    const auto now = steady_clock::now();
    if (mEvents.Await(std::min(end, now + kEventSlice), events) || now >= end) {
      return FT_OK;
    }
    shield.Lower([] {});  // where a cancelled thread ends
  }
}

void BridgeDevice::SetNotification(DWORD mask, FT_EVENT* event) {
  mEvents.SetNotification(mask, event);
  SignalEvents();
}

// The processor thread goes on trying while the host holds its mutex.
void BridgeDevice::SignalEvents() {
  if (!mEvents.Signal()) {
    mReads->Wake();
  }
}

void BridgeDevice::SetTimeouts(DWORD readTimeout, DWORD writeTimeout) {
  mReadTimeout = readTimeout;
  mWriteTimeout = writeTimeout;
}

}  // namespace corvane
