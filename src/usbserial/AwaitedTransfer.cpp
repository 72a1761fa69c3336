#include "usbserial/AwaitedTransfer.h"

#include <algorithm>
#include <new>

#include "usbserial/EventPump.h"

namespace corvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kReapLimit{1000};

int ErrorOf(libusb_transfer_status status) {
  switch (status) {
    case LIBUSB_TRANSFER_COMPLETED:
      return LIBUSB_SUCCESS;
    case LIBUSB_TRANSFER_TIMED_OUT:
      return LIBUSB_ERROR_TIMEOUT;
    case LIBUSB_TRANSFER_STALL:
      return LIBUSB_ERROR_PIPE;
    case LIBUSB_TRANSFER_NO_DEVICE:
      return LIBUSB_ERROR_NO_DEVICE;
    case LIBUSB_TRANSFER_OVERFLOW:
      return LIBUSB_ERROR_OVERFLOW;
    case LIBUSB_TRANSFER_CANCELLED:
      return LIBUSB_ERROR_INTERRUPTED;
    default:
      return LIBUSB_ERROR_IO;
  }
}

}  // namespace

AwaitedTransfer::AwaitedTransfer(libusb_context* context, libusb_device_handle* handle)
    : mContext(context), mHandle(handle), mRequest(std::make_unique<Request>()) {
  mRequest->transfer.reset(libusb_alloc_transfer(0));
  if (mRequest->transfer == nullptr) {
    throw std::bad_alloc();
  }
}

AwaitedTransfer::~AwaitedTransfer() {
  if (mLost) {
    static_cast<void>(mRequest.release());  // libusb may write into it until it has handed it back
  }
}

AwaitedTransfer::Outcome AwaitedTransfer::Control(const UsbSetup& setup, std::span<std::uint8_t> data,
                                                  Milliseconds timeout) {
  if (Lost()) {
    return {LIBUSB_ERROR_IO, 0};
  }
  auto& buffer = mRequest->data;
  buffer.resize(LIBUSB_CONTROL_SETUP_SIZE + data.size());
  libusb_fill_control_setup(buffer.data(), setup.type, setup.request, setup.value, setup.index,
                            static_cast<std::uint16_t>(data.size()));
  const bool toHost = (setup.type & LIBUSB_ENDPOINT_IN) != 0;
  if (!toHost) {
    std::copy(data.begin(), data.end(), buffer.begin() + LIBUSB_CONTROL_SETUP_SIZE);
  }
  libusb_fill_control_transfer(mRequest->transfer.get(), mHandle, buffer.data(), &OnCompletion, mRequest.get(),
                               static_cast<unsigned int>(timeout.count()));
  const Outcome outcome = Run(timeout);
  if (toHost) {
    std::copy_n(buffer.begin() + LIBUSB_CONTROL_SETUP_SIZE, std::min(outcome.moved, data.size()), data.begin());
  }
  return outcome;
}

AwaitedTransfer::Outcome AwaitedTransfer::BulkOut(std::uint8_t endpoint, std::span<const std::uint8_t> data,
                                                  Milliseconds timeout) {
  if (Lost()) {
    return {LIBUSB_ERROR_IO, 0};
  }
  mRequest->data.assign(data.begin(), data.end());
  libusb_fill_bulk_transfer(mRequest->transfer.get(), mHandle, endpoint, mRequest->data.data(),
                            static_cast<int>(data.size()), &OnCompletion, mRequest.get(),
                            static_cast<unsigned int>(timeout.count()));
  return Run(timeout);
}

void AwaitedTransfer::Cancel() {
  const std::lock_guard lock(mRequest->mutex);
  mCancelled = true;
  CancelInFlight();
}

void AwaitedTransfer::SetHeld(bool held) {
  const std::lock_guard lock(mRequest->mutex);
  mHeld = held;
  if (held) {
    CancelInFlight();
  }
}

// Expects the mutex to be held.
void AwaitedTransfer::CancelInFlight() {
  if (mRequest->inFlight) {
    libusb_cancel_transfer(mRequest->transfer.get());
  }
}

void AwaitedTransfer::OnCompletion(libusb_transfer* transfer) {
  auto& request = *static_cast<Request*>(transfer->user_data);
  const std::lock_guard lock(request.mutex);
  request.inFlight = false;
  request.done = 1;
}

AwaitedTransfer::Outcome AwaitedTransfer::Run(Milliseconds timeout) {
  const auto overdue = timeout.count() == 0 ? TimePoint::max() : steady_clock::now() + timeout + kReapLimit;
  if (const int refused = Submit(); refused != LIBUSB_SUCCESS) {
    return {refused, 0};
  }
  if (!AwaitCompletion(overdue)) {
    return {LIBUSB_ERROR_IO, 0};
  }
  const libusb_transfer& transfer = *mRequest->transfer;
  return {ErrorOf(transfer.status), static_cast<std::size_t>(std::max(transfer.actual_length, 0))};
}

int AwaitedTransfer::Submit() {
  const std::lock_guard lock(mRequest->mutex);
  if (mCancelled || mHeld) {
    return LIBUSB_ERROR_INTERRUPTED;
  }
  mRequest->done = 0;
  const int result = libusb_submit_transfer(mRequest->transfer.get());
  mRequest->inFlight = result == LIBUSB_SUCCESS;
  return result;
}

// Waits for the request, which libusb ends at its time-out; false when it was cancelled, or is overdue although libusb
// should have ended it, and has not come back in time.
bool AwaitedTransfer::AwaitCompletion(TimePoint overdue) {
  EventPump pump(mContext);
  bool failed = false;
  TimePoint giveUp;
  while (InFlight()) {
    const bool pumped = pump.Step(&mRequest->done);
    const std::lock_guard lock(mRequest->mutex);
    const auto now = steady_clock::now();
    if (!failed && (mCancelled || mHeld || !pumped || now >= overdue)) {
      failed = true;
      giveUp = now + kReapLimit;
      libusb_cancel_transfer(mRequest->transfer.get());
    }
    if (failed && mRequest->inFlight && now >= giveUp) {
      mLost = true;
      return false;
    }
  }
  return true;
}

bool AwaitedTransfer::InFlight() {
  const std::lock_guard lock(mRequest->mutex);
  return mRequest->inFlight;
}

bool AwaitedTransfer::Lost() {
  const std::lock_guard lock(mRequest->mutex);
  return mLost;
}

}  // namespace corvane
