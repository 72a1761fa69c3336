#include "usbserial/ReceiveBuffer.h"

#include <algorithm>

namespace corvane {

std::size_t ReceiveBuffer::Append(std::span<const std::uint8_t> bytes) {
  const std::size_t count = std::min(bytes.size(), Capacity() - mSize);
  const std::size_t back = (mFront + mSize) % Capacity();
  const std::size_t first = std::min(count, Capacity() - back);
  std::copy_n(bytes.begin(), first, mBytes.begin() + static_cast<std::ptrdiff_t>(back));
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(first), count - first, mBytes.begin());
  mSize += count;
  return count;
}

std::size_t ReceiveBuffer::Take(std::span<std::uint8_t> out) {
  const std::size_t count = std::min(out.size(), mSize);
  const std::size_t first = std::min(count, Capacity() - mFront);
  std::copy_n(mBytes.begin() + static_cast<std::ptrdiff_t>(mFront), first, out.begin());
  std::copy_n(mBytes.begin(), count - first, out.begin() + static_cast<std::ptrdiff_t>(first));
  mFront = (mFront + count) % Capacity();
  mSize -= count;
  return count;
}

}  // namespace corvane
