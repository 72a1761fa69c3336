#include "controller/TMerakControlI2C.h"

#include <algorithm>
#include <array>
#include <vector>

#include "camera/TI2CInterface.h"
#include "camera/TivanSdk.h"
#include "usbserial/ftd2xx.h"

namespace {

constexpr unsigned char kControllerAddress = 0x58;
/// First byte of a burst: the bytes behind it are the controller's output.
constexpr unsigned char kDataFollows = 0xB1;
constexpr unsigned int kProbeLength = 15;

bool Succeeded(unsigned int busStatus) {
  return busStatus == corvane::kTivanSuccess || busStatus == 0;
}

}  // namespace

bool TMerakControlI2C::IsAvailable() {
  std::array<unsigned char, kProbeLength + 1> buffer{};
  unsigned int received = 0;
  return mI2C != nullptr && Receive(buffer.data(), kProbeLength, received) == FT_OK;
}

TMerakControl::Status TMerakControlI2C::ListDevices(void* /*arg1*/, void* /*arg2*/, unsigned int /*flags*/) {
  return FT_OK;
}

TMerakControl::Status TMerakControlI2C::Open(int /*index*/) {
  return FT_OK;
}

TMerakControl::Status TMerakControlI2C::Close() {
  return FT_OK;
}

TMerakControl::Status TMerakControlI2C::Read(void* buffer, unsigned int count, unsigned int* received) {
  unsigned int got = 0;
  const Status status = Receive(static_cast<unsigned char*>(buffer), count, got);
  if (received != nullptr) {
    *received = got;
  }
  return status;
}

TMerakControl::Status TMerakControlI2C::Write(const void* buffer, unsigned int count, unsigned int* written) {
  ClearReceiveBuffer();
  unsigned int sent = 0;
  const Status status = Transmit(static_cast<const unsigned char*>(buffer), count, sent);
  if (written != nullptr) {
    *written = sent;
  }
  return status;
}

TMerakControl::Status TMerakControlI2C::SetTimeouts(unsigned int /*readTimeoutMs*/, unsigned int /*writeTimeoutMs*/) {
  return FT_OK;
}

TMerakControl::Status TMerakControlI2C::Purge(unsigned int /*mask*/) {
  return FT_OK;
}

TMerakControl::Status TMerakControlI2C::Receive(unsigned char* buffer, unsigned int count, unsigned int& received) {
  received = 0;
  if (mI2C == nullptr) {
    return FT_IO_ERROR;
  }
  // Replies are read byte by byte, so the common burst stays off the heap.
  std::array<unsigned char, kProbeLength + 1> small{};
  std::vector<unsigned char> large;
  unsigned char* frame = small.data();
  if (count >= small.size()) {
    large.resize(std::size_t{count} + 1);
    frame = large.data();
  }
  if (!Succeeded(mI2C->BurstRead(kControllerAddress, static_cast<long>(count) + 1, frame)) ||
      frame[0] != kDataFollows) {
    return FT_IO_ERROR;
  }
  const unsigned char* data = frame + 1;
  std::copy_n(data, count, buffer);
  received = static_cast<unsigned int>(std::find(data, data + count, kLineEnd) - data);
  return FT_OK;
}

TMerakControl::Status TMerakControlI2C::Transmit(const unsigned char* data, unsigned int count, unsigned int& written) {
  written = count;
  if (mI2C == nullptr || !Succeeded(mI2C->BurstWrite(kControllerAddress, static_cast<long>(count), data))) {
    return FT_IO_ERROR;
  }
  return FT_OK;
}

void TMerakControlI2C::ClearReceiveBuffer() {
  unsigned char c = 0;
  unsigned int received = 0;
  // A controller that never ends its line must not hold the caller.
  for (std::size_t i = 0; i < corvane::ReplyWatch::kMaxLength && c != kLineEnd; ++i) {
    if (Receive(&c, 1, received) != FT_OK) {
      return;
    }
  }
}
