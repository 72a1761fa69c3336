// The five stepper motors of an older instrument behind their controller: takes ramped moves, says which motors run,
// and knows where everything stands. Used by LegacyInstrument.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "legacy/WaveDrive.h"
#include "model/LegacyDescription.h"
#include "model/SimulationClock.h"

namespace corvane::sim {

/// One order to the motor controller.
struct RampedMove {
  /// Fourteen bytes: motor; flags (bit 0 forward, bit 1 enabled, bits 4 to 7 the hole mode); then steps and the ramp's
  /// minimum, maximum and increment in three bytes each, the least significant first. None for any other bytes.
  static std::optional<RampedMove> Decode(std::span<const std::uint8_t> bytes);

  int motor = 0;
  bool forward = false;
  bool enabled = false;
  HoleMode mode = HoleMode::kPlain;
  int steps = 0;
  int minimum = 0;
  int maximum = 0;
  int increment = 0;
};

class LegacyMotors {
 public:
  LegacyMotors(const LegacyDescription& description, int drivePosition, SimulationClock clock);

  /// False: refused. A motor that runs, a ramp that never gets going and a hole mode on another motor than the drive's
  /// are. A motor that is not enabled takes the move and stands still.
  bool Start(const RampedMove& move);

  bool IsMoving(int motor) const;
  /// One bit for each running motor, as the instrument's status register shows them.
  std::uint8_t Status() const;

  const WaveDrive& Drive() const { return mDrive; }
  /// Of motors 1 to 4, in steps. A moving motor is taken to be where it will stop.
  int Position(int motor) const { return mMotors[static_cast<std::size_t>(motor)].position; }
  /// Moves taken since the start.
  int Moves(int motor) const { return mMotors[static_cast<std::size_t>(motor)].moves; }
  int MovesBackward(int motor) const { return mMotors[static_cast<std::size_t>(motor)].movesBackward; }

 private:
  struct Motor {
    int position = 0;
    int moves = 0;
    int movesBackward = 0;
    std::chrono::microseconds busyUntil{0};
  };

  const MotorFault* FaultFor(int motor, int move) const;
  int Turn(const RampedMove& move);

  std::array<Motor, kLegacyMotors> mMotors{};
  WaveDrive mDrive;
  std::vector<MotorFault> mFaults;
  double mMotion;
  SimulationClock mClock;
};

}  // namespace corvane::sim
