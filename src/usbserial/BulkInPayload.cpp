#include "usbserial/BulkInPayload.h"

#include <algorithm>

namespace corvane {

BulkInPayload::BulkInPayload(std::span<const std::uint8_t> transfer, std::size_t maxPacket)
    : mRest(transfer), mMaxPacket(maxPacket) {
  EnterPacket();
}

void BulkInPayload::Consume(std::size_t count) {
  mRest = mRest.subspan(count);
  mInPacket -= count;
  if (mInPacket == 0) {
    EnterPacket();
  }
}

// Stops at the next packet that carries data, or at the end.
void BulkInPayload::EnterPacket() {
  while (mInPacket == 0 && !mRest.empty()) {
    const std::size_t packet = std::min(mMaxPacket, mRest.size());
    const std::size_t status = std::min(kStatusBytes, packet);
    mRest = mRest.subspan(status);
    mInPacket = packet - status;
  }
}

}  // namespace corvane
