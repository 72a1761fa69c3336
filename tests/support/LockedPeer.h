// Lets a test look at a simulated instrument while a virtual chip talks to it from its own thread.
#pragma once

#include <mutex>

#include "model/ISerialPeer.h"

class LockedPeer final : public ISerialPeer {
 public:
  explicit LockedPeer(ISerialPeer& peer) : mPeer(peer) {}

  void FromHost(std::span<const std::uint8_t> bytes) override {
    const std::lock_guard lock(mMutex);
    mPeer.FromHost(bytes);
  }
  std::size_t ToHost(std::span<std::uint8_t> buffer) override {
    const std::lock_guard lock(mMutex);
    return mPeer.ToHost(buffer);
  }
  std::mutex& Mutex() const { return mMutex; }

 private:
  ISerialPeer& mPeer;
  mutable std::mutex mMutex;
};
