// The bytes of one device that the host has not fetched yet: a ring of 64 KiB. Filled by the read pipeline, emptied by
// FT_Read and FT_Purge, whose common mutex guards it. It never drops a byte: what does not fit stays with the writer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace corvane {

class ReceiveBuffer {
 public:
  static constexpr std::size_t kCapacity = std::size_t{64} * 1024;

  explicit ReceiveBuffer(std::size_t capacity = kCapacity) : mBytes(capacity) {}

  std::size_t Size() const { return mSize; }
  std::size_t Capacity() const { return mBytes.size(); }

  /// Appends as many of the bytes as there is room for; their number.
  std::size_t Append(std::span<const std::uint8_t> bytes);

  /// Takes the oldest bytes out, as many as there are and `out` holds; their number.
  std::size_t Take(std::span<std::uint8_t> out);

  void Clear() { mSize = mFront = 0; }

 private:
  std::vector<std::uint8_t> mBytes;
  std::size_t mFront = 0;
  std::size_t mSize = 0;
};

}  // namespace corvane
