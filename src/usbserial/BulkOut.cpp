#include "usbserial/BulkOut.h"

#include <algorithm>

namespace corvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Bounds what one transfer asks of the kernel's memory for USB.
constexpr std::size_t kMaxPart = std::size_t{64} * 1024;

}  // namespace

BulkOut::Sent BulkOut::Send(std::span<const std::uint8_t> bytes, milliseconds timeout) {
  const auto deadline = steady_clock::now() + timeout;
  Sent sent;
  while (sent.bytes < bytes.size()) {
    milliseconds left{0};
    if (timeout.count() != 0) {
      left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
      if (left.count() <= 0) {
        break;
      }
    }
    const auto part = bytes.subspan(sent.bytes, std::min(kMaxPart, bytes.size() - sent.bytes));
    const auto outcome = mTransfer.BulkOut(mEndpoint, part, left);
    sent.bytes += outcome.moved;
    if (outcome.status == LIBUSB_ERROR_PIPE) {
      libusb_clear_halt(mHandle, mEndpoint);  // this write has failed; the next one may work
    }
    sent.deviceGone = outcome.status == LIBUSB_ERROR_NO_DEVICE;
    if (outcome.status != LIBUSB_SUCCESS || outcome.moved < part.size()) {
      break;
    }
  }
  return sent;
}

}  // namespace corvane
