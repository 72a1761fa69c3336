// The data in one received bulk transfer: every packet in it, the short last one too, begins with two modem-status
// bytes that are not data. Used by the read pipeline; a cursor over borrowed bytes, it copies nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace corvane {

class BulkInPayload {
 public:
  static constexpr std::size_t kStatusBytes = 2;

  /// `transfer` outlives the cursor; maxPacket is the packet size of the IN endpoint, not 0.
  BulkInPayload(std::span<const std::uint8_t> transfer, std::size_t maxPacket);

  /// The data bytes at the cursor that lie side by side; empty when the transfer has no more.
  std::span<const std::uint8_t> Front() const { return mRest.first(mInPacket); }

  /// Moves the cursor over `count` of the bytes of Front().
  void Consume(std::size_t count);

 private:
  void EnterPacket();

  std::span<const std::uint8_t> mRest;
  std::size_t mMaxPacket;
  std::size_t mInPacket = 0;
};

}  // namespace corvane
