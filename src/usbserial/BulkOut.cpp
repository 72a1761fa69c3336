#include "usbserial/BulkOut.h"

#include <algorithm>
#include <new>

#include "usbserial/EventPump.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Bounds what one transfer asks of the kernel's memory for USB.
constexpr std::size_t kMaxPart = std::size_t{64} * 1024;
constexpr milliseconds kReapLimit{1000};

}  // namespace

BulkOut::BulkOut(libusb_context* context, libusb_device_handle* handle, std::uint8_t endpoint)
    : mContext(context), mHandle(handle), mEndpoint(endpoint), mRequest(std::make_unique<Request>()) {
  mRequest->owner = this;
  mRequest->data.reserve(kMaxPart);
  mRequest->transfer.reset(libusb_alloc_transfer(0));
  if (mRequest->transfer == nullptr) {
    throw std::bad_alloc();
  }
}

std::size_t BulkOut::Send(std::span<std::uint8_t> bytes, milliseconds timeout) {
  const auto deadline = steady_clock::now() + timeout;
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    milliseconds left{0};
    if (timeout.count() != 0) {
      left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
      if (left.count() <= 0) {
        break;
      }
    }
    const auto part = bytes.subspan(sent, std::min(kMaxPart, bytes.size() - sent));
    const std::size_t taken = SendPart(part, left);
    sent += taken;
    if (taken < part.size()) {
      break;
    }
  }
  return sent;
}

void BulkOut::Cancel() {
  const std::lock_guard lock(mMutex);
  mCancelled = true;
  CancelInFlight();
}

void BulkOut::SetHeld(bool held) {
  const std::lock_guard lock(mMutex);
  mHeld = held;
  if (held) {
    CancelInFlight();
  }
}

// Expects the mutex to be held.
void BulkOut::CancelInFlight() {
  if (mRequest != nullptr && mRequest->inFlight) {
    libusb_cancel_transfer(mRequest->transfer.get());
  }
}

void BulkOut::OnCompletion(libusb_transfer* transfer) {
  auto& request = *static_cast<Request*>(transfer->user_data);
  const std::lock_guard lock(request.owner->mMutex);
  request.inFlight = false;
  request.done = 1;
}

std::size_t BulkOut::SendPart(std::span<std::uint8_t> part, milliseconds timeout) {
  if (mRequest == nullptr) {
    return 0;
  }
  mRequest->data.assign(part.begin(), part.end());
  libusb_fill_bulk_transfer(mRequest->transfer.get(), mHandle, mEndpoint, mRequest->data.data(),
                            static_cast<int>(part.size()), &OnCompletion, mRequest.get(),
                            static_cast<unsigned int>(timeout.count()));
  const auto overdue =
      timeout.count() == 0 ? steady_clock::time_point::max() : steady_clock::now() + timeout + kReapLimit;
  if (!Submit() || !AwaitCompletion(overdue)) {
    return 0;
  }
  if (mRequest->transfer->status == LIBUSB_TRANSFER_STALL) {
    libusb_clear_halt(mHandle, mEndpoint);  // this write has failed; the next one may work
  }
  return static_cast<std::size_t>(std::max(mRequest->transfer->actual_length, 0));
}

bool BulkOut::Submit() {
  const std::lock_guard lock(mMutex);
  if (mCancelled || mHeld) {
    return false;
  }
  mRequest->done = 0;
  mRequest->inFlight = libusb_submit_transfer(mRequest->transfer.get()) == LIBUSB_SUCCESS;
  return mRequest->inFlight;
}

// Waits for the request, which libusb ends at its time-out; false when it was cancelled, or is overdue although libusb
// should have ended it, and has not come back in time. It is left to libusb then.
bool BulkOut::AwaitCompletion(steady_clock::time_point overdue) {
  EventPump pump(mContext);
  bool failed = false;
  steady_clock::time_point giveUp;
  while (InFlight()) {
    const bool pumped = pump.Step(&mRequest->done);
    const std::lock_guard lock(mMutex);
    const auto now = steady_clock::now();
    if (!failed && (mCancelled || !pumped || now >= overdue)) {
      failed = true;
      giveUp = now + kReapLimit;
      libusb_cancel_transfer(mRequest->transfer.get());
    }
    if (failed && mRequest->inFlight && now >= giveUp) {
      mCancelled = true;
      static_cast<void>(mRequest.release());
      return false;
    }
  }
  return true;
}

bool BulkOut::InFlight() {
  const std::lock_guard lock(mMutex);
  return mRequest->inFlight;
}

}  // namespace corvane
