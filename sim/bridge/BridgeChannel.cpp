#include "bridge/BridgeChannel.h"

#include <algorithm>

namespace {

// What a chip buffers of its line towards the host.
constexpr std::size_t kReceiveBuffer = 4096;
// Clear to send, data set ready and carrier present; transmitter empty.
constexpr std::uint8_t kModemStatus = 0xB1;
constexpr std::uint8_t kLineStatus = 0x60;
constexpr std::uint16_t kEnabled = 0x0100;

}  // namespace

BridgeChannel::BridgeChannel(ISerialPeer* peer, std::size_t packetSize, bool repliesAtOnce)
    : mPeer(peer),
      mPacketSize(packetSize),
      mRepliesAtOnce(repliesAtOnce),
      mStatus{kModemStatus, kLineStatus},
      mLastPacket(Clock::now()) {
}

void BridgeChannel::Write(std::span<const std::uint8_t> bytes) {
  if (mPeer != nullptr) {
    mPeer->FromHost(bytes);
    Receive(kReceiveBuffer);
  }
}

BridgeChannel::Progress BridgeChannel::Read(std::span<std::uint8_t> space, bool started, Clock::time_point now) {
  Progress progress;
  const std::size_t fullPayload = mPacketSize - kStatusBytes;
  while (!progress.ended) {
    const auto rest = space.subspan(progress.filled);
    Receive(fullPayload);
    const std::size_t waiting = mReceived.size() - mSent;
    const bool raw = !mRawPackets.empty();
    // A reply that ended with a full packet is followed by a packet without data, so that the transfer ends too.
    const bool atOnce = (mRepliesAtOnce && (waiting > 0 || started || progress.filled > 0)) || EventCharacterWaits();
    if (!raw && waiting < fullPayload && !atOnce && now < PeriodEnd()) {
      progress.next = PeriodEnd();
      return progress;
    }
    const std::size_t payload = std::min(waiting, fullPayload);
    const std::size_t length = raw ? mRawPackets.front().size() : kStatusBytes + payload;
    if (length > rest.size()) {
      progress.overflow = true;
      progress.ended = true;
      return progress;
    }
    progress.filled += PutPacket(rest, payload);
    mLastPacket = now;
    progress.ended = length < mPacketSize || progress.filled == space.size();
  }
  return progress;
}

void BridgeChannel::PurgeReceive() {
  Receive(kReceiveBuffer);
  mReceived.clear();
  mSent = 0;
}

void BridgeChannel::PowerOn() {
  mReceived.clear();
  mSent = 0;
  mRawPackets.clear();
  mSettings = {};
}

void BridgeChannel::SetStatus(std::uint8_t modem, std::uint8_t line) {
  mStatus[0] = modem;
  mStatus[1] = line;
}

void BridgeChannel::QueueRawPacket(std::vector<std::uint8_t> packet) {
  packet.resize(std::min(packet.size(), mPacketSize));
  mRawPackets.push_back(std::move(packet));
}

void BridgeChannel::Receive(std::size_t wanted) {
  const std::size_t waiting = mReceived.size() - mSent;
  if (mPeer == nullptr || waiting >= wanted) {
    return;
  }
  mReceived.erase(mReceived.begin(), mReceived.begin() + static_cast<std::ptrdiff_t>(mSent));
  mSent = 0;
  mReceived.resize(std::max(wanted, kReceiveBuffer));
  const std::size_t got = mPeer->ToHost(std::span(mReceived).subspan(waiting));
  mReceived.resize(std::min(waiting + got, mReceived.size()));
}

BridgeChannel::Clock::time_point BridgeChannel::PeriodEnd() const {
  return mLastPacket + std::chrono::milliseconds(std::max<unsigned>(mSettings.latency, 1));
}

bool BridgeChannel::EventCharacterWaits() const {
  return (mSettings.eventCharacter & kEnabled) != 0 &&
         std::find(mReceived.begin() + static_cast<std::ptrdiff_t>(mSent), mReceived.end(),
                   static_cast<std::uint8_t>(mSettings.eventCharacter & 0xFF)) != mReceived.end();
}

std::size_t BridgeChannel::PutPacket(std::span<std::uint8_t> space, std::size_t payload) {
  if (!mRawPackets.empty()) {
    const auto& packet = mRawPackets.front();
    const std::size_t length = packet.size();
    std::copy(packet.begin(), packet.end(), space.begin());
    mRawPackets.pop_front();
    return length;
  }
  const auto data = std::copy(std::begin(mStatus), std::end(mStatus), space.begin());
  const auto from = mReceived.begin() + static_cast<std::ptrdiff_t>(mSent);
  std::copy(from, from + static_cast<std::ptrdiff_t>(payload), data);
  mSent += payload;
  return kStatusBytes + payload;
}
