#include "legacy/RampedMoveFormat.h"

namespace corvane {
namespace {

constexpr int kMotors = 5;
constexpr std::size_t kMotorByte = 0;
constexpr std::size_t kFlagsByte = 1;
constexpr unsigned int kForwardFlag = 0x01;
constexpr unsigned int kEnableFlag = 0x02;
constexpr unsigned int kModeShift = 4;

struct Number {
  std::size_t firstByte;
  std::int32_t (*value)(const RampedMove& move);
};

constexpr std::array<Number, 4> kNumbers{{
    {2, [](const RampedMove& move) { return move.steps; }},
    {5, [](const RampedMove& move) { return move.ramp.minDum; }},
    {8, [](const RampedMove& move) { return move.ramp.maxDum; }},
    {11, [](const RampedMove& move) { return move.ramp.delDum; }},
}};
constexpr std::size_t kNumberBytes = 3;
constexpr std::int32_t kLargestNumber = 0xFFFFFF;

}  // namespace

std::optional<RampedMoveBytes> EncodeRampedMove(const RampedMove& move) {
  if (move.motor < 0 || move.motor >= kMotors) {
    return std::nullopt;
  }
  RampedMoveBytes bytes{};
  bytes[kMotorByte] = static_cast<std::uint8_t>(move.motor);
  bytes[kFlagsByte] = static_cast<std::uint8_t>((move.forward ? kForwardFlag : 0U) | (move.enable ? kEnableFlag : 0U) |
                                                static_cast<unsigned int>(move.mode) << kModeShift);
  for (const Number& number : kNumbers) {
    const std::int32_t value = number.value(move);
    if (value < 0 || value > kLargestNumber) {
      return std::nullopt;
    }
    for (std::size_t i = 0; i < kNumberBytes; ++i) {
      bytes[number.firstByte + i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> (8U * i));
    }
  }
  return bytes;
}

}  // namespace corvane
