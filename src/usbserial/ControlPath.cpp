#include "usbserial/ControlPath.h"

#include <algorithm>
#include <new>

namespace corvane {
namespace {

constexpr std::uint8_t kVendorOut = 0x40;
constexpr std::uint8_t kVendorIn = 0xC0;

}  // namespace

ControlPath::ControlPath(libusb_context* context, libusb_device_handle* handle, const BridgeIdentity& identity,
                         std::uint16_t port)
    : mContext(context),
      mHandle(handle),
      mPort(port),
      mFastClock(HasFastBaudClock(identity)),
      mLaterChip(corvane::IsLaterChip(identity.type)) {
}

FT_STATUS ControlPath::Vendor(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                              std::span<std::uint8_t> buffer, std::uint8_t type) const {
  if (mEnded) {
    return FT_IO_ERROR;
  }
  const int result = Transfer(request, value, index, buffer, type, mTimeout);
  // Deliberate: a request that sends data fails by its length, though the chip got it.
  const int wanted = type == kVendorIn ? static_cast<int>(buffer.size()) : 0;
  return result == wanted ? FT_OK : FT_IO_ERROR;
}

FT_STATUS ControlPath::Send(BridgeRequest name, unsigned value, unsigned index, std::span<std::uint8_t> answer) const {
  const VendorRow& row = RowOf(name);
  if (row.laterChipsOnly && !mLaterChip) {
    return FT_NOT_SUPPORTED;
  }
  const FT_STATUS status = Vendor(row.request, static_cast<std::uint16_t>(row.value | value), IndexOf(row, index),
                                  answer.first(row.answerBytes), row.answerBytes != 0 ? kVendorIn : kVendorOut);
  return status == FT_OK || mEnded ? status : row.failure;
}

int ControlPath::TrySend(BridgeRequest name, unsigned value, unsigned index, DWORD timeout) const {
  const VendorRow& row = RowOf(name);
  return Transfer(row.request, static_cast<std::uint16_t>(row.value | value), IndexOf(row, index), {}, kVendorOut,
                  timeout);
}

void ControlPath::End() {
  const std::lock_guard lock(mMutex);
  mEnded = true;
  for (AwaitedTransfer* const transfer : mUnderWay) {
    transfer->Cancel();
  }
}

std::uint16_t ControlPath::IndexOf(const VendorRow& row, unsigned index) const {
  return static_cast<std::uint16_t>(index | (row.portInIndex ? mPort : 0U));
}

// Takes a transfer off the list of those under way, whatever ends it.
class ControlPath::Listed {
 public:
  Listed(const ControlPath& path, AwaitedTransfer& transfer) : mPath(path), mTransfer(transfer) {}
  ~Listed() {
    const std::lock_guard lock(mPath.mMutex);
    std::erase(mPath.mUnderWay, &mTransfer);
  }
  Listed(const Listed&) = delete;
  Listed& operator=(const Listed&) = delete;

 private:
  const ControlPath& mPath;
  AwaitedTransfer& mTransfer;
};

// The length of the data stage that was transferred, or libusb's error.
int ControlPath::Transfer(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                          std::span<std::uint8_t> buffer, std::uint8_t type, DWORD timeout) const try {
  AwaitedTransfer transfer(mContext, mHandle);
  {
    const std::lock_guard lock(mMutex);
    if (mEnded) {
      return LIBUSB_ERROR_INTERRUPTED;
    }
    mUnderWay.push_back(&transfer);
  }
  const Listed listed(*this, transfer);
  const auto outcome = transfer.Control({type, request, value, index}, buffer, std::chrono::milliseconds(timeout));
  return outcome.status == LIBUSB_SUCCESS ? static_cast<int>(outcome.moved) : outcome.status;
} catch (const std::bad_alloc&) {
  return LIBUSB_ERROR_NO_MEM;
}

}  // namespace corvane
