// A simulated older instrument on a bus of its own, for tests of what stands between that bus and the exported
// functions: writes down every order to a motor and every transfer of the status device. Only its failures, and answers
// that no instrument gives, are made up here.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "camera/TI2CInterface.h"
#include "legacy/LegacyBus.h"
#include "legacy/LegacyInstrument.h"
#include "legacy/LegacyResult.h"
#include "platform/TimeSource.h"
#include "scenario/LegacyReader.h"
#include "support/FakeTime.h"

class SimulatedLegacyBus final : public TI2CInterface {
 public:
  static constexpr int kAlways = std::numeric_limits<int>::max();

  explicit SimulatedLegacyBus(const corvane::sim::LegacyDescription& description = corvane::sim::DefaultLegacy())
      : mInstrument(description, [] { return std::chrono::microseconds(corvane::Time().MonotonicMicroseconds()); }) {}

  FakeTime time;
  /// What a transfer that is answered gives; 0 behind an adapter.
  unsigned int success = corvane::legacy::kBusSuccess;
  /// Transfers that are still answered; which of the next transfers and of the next moves fails, from 1.
  int answers = kAlways;
  int failingTransfer = 0;
  int failingMove = 0;
  /// Changes what a register of the status device answers.
  std::function<void(std::uint8_t reg, std::uint8_t& value)> tamper;

  /// "motor+steps" or "motor-steps", with "h" or "e" for a stop at a hole or its edge, since the last call.
  std::vector<std::string> TakeMoves() { return std::exchange(mMoves, {}); }
  /// The status device's transfers since the last call: "selector?" for a read, ">selector" for a selection, else
  /// "register=value".
  std::vector<std::string> TakeStatus() { return std::exchange(mStatus, {}); }
  /// Transfers since the last call, whether or not they were answered.
  int TakeTransfers() { return std::exchange(mTransfers, 0); }

  /// The instrument as it stands, by the names of its state.
  nlohmann::json State() const { return nlohmann::json::parse(mInstrument.State()); }
  int Position(std::size_t motor) const { return State()["positions"][motor]; }
  unsigned long long Writes() const { return mInstrument.Memory().Writes(); }

  std::string Bytes(int page, int offset, std::size_t count) const {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) {
      bytes += static_cast<char>(mInstrument.Memory().Byte(page, offset + static_cast<int>(i)));
    }
    return bytes;
  }
  /// Numbers lie as on this machine: least significant byte first, IEEE 754.
  template <typename Number>
  Number Stored(int page, int offset) const {
    Number number{};
    std::memcpy(&number, Bytes(page, offset, sizeof(number)).data(), sizeof(number));
    return number;
  }
  /// Programs bytes behind the library's back, and leaves write mode.
  void Program(int page, int offset, std::string_view bytes) {
    SetWriteMode(true);
    for (const char byte : bytes) {
      const auto device = static_cast<std::uint8_t>(corvane::LegacyBus::kEepromBase + page);
      mInstrument.Write(device, static_cast<std::uint8_t>(offset++), static_cast<std::uint8_t>(byte));
      time.AdvanceMilliseconds(kLongestStore);
    }
    SetWriteMode(false);
  }
  void SetWriteMode(bool on) { mInstrument.Write(corvane::LegacyBus::kWriteModeDevice, 0xFF, on ? 2 : 0); }

  unsigned int Write(unsigned char device, unsigned char reg, unsigned char data) override {
    if (device == kStatusDevice && !WillFail()) {
      mStatus.push_back(std::to_string(reg) + "=" + std::to_string(data));
    }
    return Answer([&] { return mInstrument.Write(device, reg, data); });
  }

  unsigned int Read(unsigned char device, unsigned char reg, unsigned char* data) override {
    const bool ofStatus = device == kStatusDevice && reg < kMotorStatus;
    if (ofStatus && !WillFail()) {
      mStatus.push_back(std::to_string(reg) + "?");
    }
    const unsigned int status = Answer([&] { return mInstrument.Read(device, reg, *data); });
    if (ofStatus && status == success && tamper) {
      tamper(reg, *data);
    }
    return status;
  }

  unsigned int BurstWrite(unsigned char device, long count, const unsigned char* data) override {
    const std::span<const std::uint8_t> bytes(data, static_cast<std::size_t>(count));
    const bool isMove = corvane::sim::RampedMove::Decode(bytes).has_value();
    if (!WillFail()) {
      WriteDown(bytes);
    }
    const bool lost = isMove && failingMove > 0 && --failingMove == 0;
    return Answer([&] { return !lost && mInstrument.BurstWrite(device, bytes); });
  }

  unsigned int BurstRead(unsigned char /*device*/, long /*count*/, unsigned char* /*data*/) override { return kDead; }

 private:
  static constexpr unsigned int kDead = 20081;
  static constexpr std::uint8_t kStatusDevice = corvane::LegacyBus::kStatusDevice;
  static constexpr std::uint8_t kMotorStatus = 0xC3;
  static constexpr std::uint64_t kLongestStore = 20;

  bool WillFail() const { return answers <= 0 || failingTransfer == 1; }

  void WriteDown(std::span<const std::uint8_t> burst) {
    if (const auto move = corvane::sim::RampedMove::Decode(burst)) {
      const char* const stops[] = {"", "h", "e"};
      mMoves.push_back(std::to_string(move->motor) + (move->forward ? "+" : "-") + std::to_string(move->steps) +
                       stops[static_cast<int>(move->mode)]);
    } else if (burst.size() == 2) {
      mStatus.push_back(std::to_string(burst[0]) + "=" + std::to_string(burst[1]));
    } else if (burst[0] < kMotorStatus) {
      mStatus.push_back(">" + std::to_string(burst[0]));
    }
  }

  template <typename Transfer>
  unsigned int Answer(Transfer transfer) {
    ++mTransfers;
    const bool fails = WillFail();
    answers -= answers > 0 && answers != kAlways ? 1 : 0;
    failingTransfer -= failingTransfer > 0 ? 1 : 0;
    return !fails && transfer() ? success : kDead;
  }

  corvane::sim::LegacyInstrument mInstrument;
  int mTransfers = 0;
  std::vector<std::string> mMoves;
  std::vector<std::string> mStatus;
};
