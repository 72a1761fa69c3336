// Ready partners for the serial line of a virtual bridge chip in tests and benchmarks: one that sends back what it
// gets, one that follows a script, one that talks without end. Their own functions may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

#include "model/ISerialPeer.h"

/// Sends back every byte.
class LoopbackPeer : public ISerialPeer {
 public:
  void FromHost(std::span<const std::uint8_t> bytes) override;
  std::size_t ToHost(std::span<std::uint8_t> buffer) override;

 private:
  std::mutex mMutex;
  std::deque<std::uint8_t> mBytes;
};

/// Keeps what it gets and answers known requests. What it sends unasked reaches the host when the chip looks at it
/// next: BridgeChip::LookAtPeers, or the end of a latency period.
class ScriptedPeer : public ISerialPeer {
 public:
  /// Whenever the bytes got since the last answer end with the request, the reply is sent.
  void OnRequest(std::string request, std::string reply);
  void Send(std::string_view bytes);
  /// Everything got so far.
  std::string Received() const;

  void FromHost(std::span<const std::uint8_t> bytes) override;
  std::size_t ToHost(std::span<std::uint8_t> buffer) override;

 private:
  mutable std::mutex mMutex;
  std::map<std::string, std::string> mReplies;
  std::string mReceived;
  std::size_t mAnswered = 0;
  std::string mOutput;
};

/// Sends the bytes 0, 1, ... 250, 0, ... (a prime period, so that a lost packet shows) up to a limit.
class CountingPeer : public ISerialPeer {
 public:
  static constexpr std::uint64_t kPeriod = 251;

  explicit CountingPeer(std::uint64_t limit = UINT64_MAX) : mLimit(limit) {}
  std::uint64_t Sent() const;

  void FromHost(std::span<const std::uint8_t> bytes) override;
  std::size_t ToHost(std::span<std::uint8_t> buffer) override;

 private:
  mutable std::mutex mMutex;
  std::uint64_t mLimit;
  std::uint64_t mSent = 0;
};
