#include "usbserial/BridgeDevice.h"

#include <algorithm>
#include <chrono>
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
constexpr DWORD kImpatientTimeout = 500;
constexpr std::uint8_t kVendorOut = 0x40;
constexpr std::chrono::microseconds kShortPause{1};
constexpr milliseconds kFastPolling{20};
constexpr milliseconds kLongestPause{10};

}  // namespace

nanoseconds PollInterval(nanoseconds quiet) {
  return quiet < kFastPolling ? nanoseconds(kShortPause) : std::min<nanoseconds>(quiet / 20, kLongestPause);
}

BridgeDevice::Claim::Claim(libusb_device_handle* handle, int interfaceNumber)
    : mHandle(handle), mInterfaceNumber(interfaceNumber) {
  libusb_set_auto_detach_kernel_driver(handle, 1);  // where it is not supported the claim tells
  if (libusb_claim_interface(handle, interfaceNumber) != LIBUSB_SUCCESS) {
    throw FtFailure(FT_DEVICE_NOT_OPENED);
  }
}

BridgeDevice::Claim::~Claim() {
  libusb_release_interface(mHandle, mInterfaceNumber);
}

BridgeDevice::BridgeDevice(libusb_context* context, const BridgeEntry& entry)
    : mDevice(entry.device.get()),
      mInterfaceIndex(entry.interfaceIndex),
      mPort(static_cast<std::uint16_t>(entry.channel)),
      mHandle(OpenEntry(entry)) {
  const BridgeEndpoints endpoints = EndpointsOf(entry);
  mClaim = std::make_unique<Claim>(mHandle.get(), endpoints.interfaceNumber);
  mIdentity = IdentityOf(entry, mHandle.get());
  mIdentity.highSpeed = endpoints.maxPacket > kFullSpeedPacket;

  DWORD timeout = mControlTimeout;
  for (const VendorOut& request : OpeningRequests(HasFastBaudClock(mIdentity.type), mPort)) {
    const int result = Control(request, timeout);
    if (result == LIBUSB_ERROR_NO_DEVICE) {
      break;
    }
    if (result == LIBUSB_ERROR_TIMEOUT) {
      timeout = kImpatientTimeout;  // the line is still to be set, but opening must come to an end
    }
  }

  mWrites = std::make_unique<BulkOut>(context, mHandle.get(), endpoints.out);
  mReads = std::make_unique<ReadPipeline>(context, mHandle.get(), endpoints.in, endpoints.maxPacket);
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
  mWrites->Cancel();  // first, so that a write ends while the reads come back
  mReads->Stop();
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
    // The device's state comes first: after an unplug the answer is 4, also when bytes are waiting.
    if (!mReads->Running()) {
      return FT_IO_ERROR;
    }
    const std::size_t available = mReads->Available();
    const std::size_t missing = out.size() - received;
    // More than the buffer ever holds is fetched in parts, early enough that the device need not pause.
    if (missing <= available || (missing > capacity && available >= capacity / 2)) {
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
    shield.Sleep(pause);
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
  const std::shared_lock use(mUse);
  if (mClosing) {
    return FT_IO_ERROR;
  }
  written = static_cast<DWORD>(mWrites->Send(bytes, milliseconds(mWriteTimeout.load())));
  if (written != bytes.size()) {
    return FT_IO_ERROR;
  }
  std::this_thread::sleep_for(kShortPause);
  return FT_OK;
}

// Only the two bits do something: a mask without them keeps received bytes.
FT_STATUS BridgeDevice::Purge(DWORD mask) {
  const std::shared_lock use(mUse);
  if (mClosing) {
    return FT_IO_ERROR;
  }
  if ((mask & FT_PURGE_RX) != 0) {
    const FT_STATUS status = PurgeReceive();
    if (status != FT_OK) {
      return status;
    }
  }
  if ((mask & FT_PURGE_TX) != 0) {
    return Control({kRequestReset, kPurgeTransmit, mPort}, mControlTimeout) == 0 ? FT_OK : FT_IO_ERROR;
  }
  return FT_OK;
}

FT_STATUS BridgeDevice::PurgeReceive() {
  int result = 0;
  for (int i = 0; i < kPurgeRepeats; ++i) {
    result = mClosing ? LIBUSB_ERROR_INTERRUPTED : Control({kRequestReset, kPurgeReceive, mPort}, mControlTimeout);
  }
  if (result != 0) {
    return FT_IO_ERROR;
  }
  mReads->Discard();
  return FT_OK;
}

void BridgeDevice::SetTimeouts(DWORD readTimeout, DWORD writeTimeout) {
  mReadTimeout = readTimeout;
  mWriteTimeout = writeTimeout;
}

// 0 or libusb's error code.
int BridgeDevice::Control(const VendorOut& request, DWORD timeout) {
  return libusb_control_transfer(mHandle.get(), kVendorOut, request.request, request.value, request.index, nullptr, 0,
                                 timeout);
}

}  // namespace corvane
