// The register format of a ramped stepper move, as this library defines it: the one place to change when a motor
// controller that speaks another one is at hand. LegacyBus sends what is encoded here; nothing here talks to a bus.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace corvane {

/// Ramp of a move, in the motor controller's own units.
struct StepRamp {
  std::int32_t minDum = 0;
  std::int32_t maxDum = 0;
  std::int32_t delDum = 0;
};

/// What a move does besides counting its steps.
enum class MoveMode : std::uint8_t { kPlain = 0, kStopAtHole = 1, kStopAtEdge = 2 };

struct RampedMove {
  int motor = 0;
  bool forward = true;
  bool enable = true;
  MoveMode mode = MoveMode::kPlain;
  std::int32_t steps = 0;
  StepRamp ramp;
};

inline constexpr std::size_t kRampedMoveBytes = 14;
using RampedMoveBytes = std::array<std::uint8_t, kRampedMoveBytes>;

/// The bytes of one burst write to the motor controller: byte 0 the motor, byte 1 the flags (bit 0 forward, bit 1
/// enable, bits 4 to 7 the mode), then from bytes 2, 5, 8 and 11 on steps, MINDUM, MAXDUM and DELDUM as unsigned 24-bit
/// numbers, least significant byte first. Nothing for a motor outside 0 to 4 or a number that 24 bits do not hold.
std::optional<RampedMoveBytes> EncodeRampedMove(const RampedMove& move);

}  // namespace corvane
