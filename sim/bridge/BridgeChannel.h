// The serial side of one interface of a bridge chip: receive buffer, latency timer, and the packets that an IN transfer
// is made of. Used by BridgeChip, which locks.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "model/ISerialPeer.h"

class BridgeChannel {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr unsigned kDefaultLatency = 16;
  static constexpr std::size_t kStatusBytes = 2;

  /// What the host has set, as it stands in its requests.
  struct Settings {
    std::uint16_t divisor = 0;
    std::uint8_t divisorIndex = 0;
    std::uint16_t line = 0;
    std::uint16_t flowMode = 0;
    std::uint16_t flowCharacters = 0;
    std::uint16_t eventCharacter = 0;
    std::uint16_t errorCharacter = 0;
    bool dtr = false;
    bool rts = false;
    std::uint8_t latency = kDefaultLatency;
    std::uint16_t bitMode = 0;
  };

  /// What a look at the chip did for an IN transfer.
  struct Progress {
    std::size_t filled = 0;
    /// The transfer ends: a short packet came, the space is used up, or a packet did not fit.
    bool ended = false;
    bool overflow = false;
    /// When to look again if it did not end.
    Clock::time_point next = Clock::time_point::max();
  };

  /// The peer is borrowed and may be null: nobody answers.
  BridgeChannel(ISerialPeer* peer, std::size_t packetSize, bool repliesAtOnce);

  /// Bytes from the host go to the peer.
  void Write(std::span<const std::uint8_t> bytes);
  /// Moves packets into the space: full ones as long as there are data, and a short one when the latency period has
  /// ended, when the event character waits, or when short replies are sent at once. started tells that the transfer
  /// already holds packets.
  Progress Read(std::span<std::uint8_t> space, bool started, Clock::time_point now);
  /// Drops what the chip received from its peer and has not sent yet.
  void PurgeReceive();
  /// The state after power-on. What the peer has to say later is not lost.
  void PowerOn();

  void SetRepliesAtOnce(bool atOnce) { mRepliesAtOnce = atOnce; }
  void SetStatus(std::uint8_t modem, std::uint8_t line);
  std::span<const std::uint8_t, kStatusBytes> Status() const { return mStatus; }
  Settings& Set() { return mSettings; }
  const Settings& Set() const { return mSettings; }
  /// Levels of the pins, which stay as they are over a power-on.
  void SetPins(std::uint8_t pins) { mPins = pins; }
  std::uint8_t Pins() const { return mPins; }
  void QueueRawPacket(std::vector<std::uint8_t> packet);

 private:
  /// Receives from the peer until at least this many bytes wait or it has no more.
  void Receive(std::size_t wanted);
  Clock::time_point PeriodEnd() const;
  bool EventCharacterWaits() const;
  std::size_t PutPacket(std::span<std::uint8_t> space, std::size_t payload);

  ISerialPeer* mPeer;
  std::size_t mPacketSize;
  bool mRepliesAtOnce;
  Settings mSettings;
  std::uint8_t mPins = 0;
  std::uint8_t mStatus[kStatusBytes];
  std::vector<std::uint8_t> mReceived;
  std::size_t mSent = 0;
  std::deque<std::vector<std::uint8_t>> mRawPackets;
  Clock::time_point mLastPacket;
};
