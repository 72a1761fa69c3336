#include "bridge/SerialPeers.h"

#include <algorithm>

void LoopbackPeer::FromHost(std::span<const std::uint8_t> bytes) {
  const std::lock_guard lock(mMutex);
  mBytes.insert(mBytes.end(), bytes.begin(), bytes.end());
}

std::size_t LoopbackPeer::ToHost(std::span<std::uint8_t> buffer) {
  const std::lock_guard lock(mMutex);
  const std::size_t length = std::min(buffer.size(), mBytes.size());
  const auto end = mBytes.begin() + static_cast<std::ptrdiff_t>(length);
  std::copy(mBytes.begin(), end, buffer.begin());
  mBytes.erase(mBytes.begin(), end);
  return length;
}

void ScriptedPeer::OnRequest(std::string request, std::string reply) {
  const std::lock_guard lock(mMutex);
  mReplies.insert_or_assign(std::move(request), std::move(reply));
}

void ScriptedPeer::Send(std::string_view bytes) {
  const std::lock_guard lock(mMutex);
  mOutput += bytes;
}

std::string ScriptedPeer::Received() const {
  const std::lock_guard lock(mMutex);
  return mReceived;
}

void ScriptedPeer::FromHost(std::span<const std::uint8_t> bytes) {
  const std::lock_guard lock(mMutex);
  for (const std::uint8_t byte : bytes) {
    mReceived.push_back(static_cast<char>(byte));
    const auto open = std::string_view(mReceived).substr(mAnswered);
    for (const auto& [request, reply] : mReplies) {
      if (open.ends_with(request)) {
        mOutput += reply;
        mAnswered = mReceived.size();
        break;
      }
    }
  }
}

std::size_t ScriptedPeer::ToHost(std::span<std::uint8_t> buffer) {
  const std::lock_guard lock(mMutex);
  const std::size_t length = std::min(buffer.size(), mOutput.size());
  std::copy_n(mOutput.begin(), length, buffer.begin());
  mOutput.erase(0, length);
  return length;
}

std::uint64_t CountingPeer::Sent() const {
  const std::lock_guard lock(mMutex);
  return mSent;
}

void CountingPeer::FromHost(std::span<const std::uint8_t> /*bytes*/) {
}

std::size_t CountingPeer::ToHost(std::span<std::uint8_t> buffer) {
  const std::lock_guard lock(mMutex);
  const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), mLimit - mSent));
  for (auto& byte : buffer.first(length)) {
    byte = static_cast<std::uint8_t>(mSent++ % kPeriod);
  }
  return length;
}
