#include "legacy/LegacyMotors.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvane::sim {
namespace {

constexpr std::size_t kOrderSize = 14;
constexpr std::uint8_t kForward = 0x01;
constexpr std::uint8_t kEnabled = 0x02;
/// The motors' bits in the status register.
constexpr std::array<std::uint8_t, kLegacyMotors> kStatusBits{0x01, 0x04, 0x02, 0x08, 0x10};
constexpr std::chrono::microseconds kForEver = std::chrono::microseconds::max();

/// Milliseconds that a ramp takes over so many steps.
double RampTime(double steps, double minimum, double maximum, double increment) {
  minimum = std::min(minimum, maximum);
  const double rise = increment > 0 ? (maximum - minimum) / increment : 0;
  const double stepsOfRise = rise * (minimum + maximum) / 2000.0;
  if (steps > stepsOfRise) {
    const double rate = increment > 0 ? maximum : minimum;
    return rise + (steps - stepsOfRise) * 1000.0 / rate;
  }
  return (std::sqrt(minimum * minimum + 2000.0 * increment * steps) - minimum) / increment;
}

int StepsOfWidth(float width) {
  const auto [closed, open] = kSlitPoints;
  const double slope = double(open.steps - closed.steps) / (open.width - closed.width);
  return static_cast<int>(std::lround(closed.steps + (static_cast<double>(width) - closed.width) * slope));
}

}  // namespace

std::optional<RampedMove> RampedMove::Decode(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != kOrderSize || bytes[0] >= kLegacyMotors) {
    return std::nullopt;
  }
  const auto value = [&](std::size_t first) {
    return bytes[first] | (bytes[first + 1] << 8) | (bytes[first + 2] << 16);
  };
  const int mode = bytes[1] >> 4;
  if (mode > static_cast<int>(HoleMode::kStopAtEdge)) {
    return std::nullopt;
  }
  return RampedMove{bytes[0],
                    (bytes[1] & kForward) != 0,
                    (bytes[1] & kEnabled) != 0,
                    static_cast<HoleMode>(mode),
                    value(2),
                    value(5),
                    value(8),
                    value(11)};
}

LegacyMotors::LegacyMotors(const LegacyDescription& description, int drivePosition, SimulationClock clock)
    : mDrive(drivePosition, description.backlash),
      mFaults(description.faults),
      mMotion(description.motion),
      mClock(std::move(clock)) {
  mMotors[kSlitMotor].position = StepsOfWidth(description.slitWidths[0]);
  mMotors[kOutputSlitMotor].position = StepsOfWidth(description.slitWidths[1]);
  mMotors[kFilterMotor].position = kFilterPositions[static_cast<std::size_t>(description.filter) - 1];
  mMotors[kFlipperMotor].position = description.port == 0 ? 0 : kMotorProfiles[kFlipperMotor].highest;
}

const MotorFault* LegacyMotors::FaultFor(int motor, int move) const {
  const auto hit = std::find_if(mFaults.begin(), mFaults.end(), [&](const MotorFault& fault) {
    return fault.motor == motor && (fault.occurrence == move || (fault.fromThenOn && move > fault.occurrence));
  });
  return hit == mFaults.end() ? nullptr : &*hit;
}

bool LegacyMotors::Start(const RampedMove& move) {
  if (IsMoving(move.motor) || move.minimum < 1 || move.maximum < 1 ||
      (move.mode != HoleMode::kPlain && move.motor != kWaveMotor)) {
    return false;
  }
  if (!move.enabled) {
    return true;
  }
  Motor& motor = mMotors[static_cast<std::size_t>(move.motor)];
  ++motor.moves;
  motor.movesBackward += move.forward ? 0 : 1;
  if (const MotorFault* const fault = FaultFor(move.motor, motor.moves)) {
    motor.busyUntil = fault->milliseconds < 0
                          ? kForEver
                          : mClock() + std::chrono::microseconds(std::llround(fault->milliseconds * 1000.0));
    return true;
  }
  const double milliseconds = mMotion * RampTime(Turn(move), move.minimum, move.maximum, move.increment);
  motor.busyUntil = milliseconds > 0 ? mClock() + std::chrono::microseconds(std::llround(milliseconds * 1000.0))
                                     : std::chrono::microseconds(0);
  return true;
}

int LegacyMotors::Turn(const RampedMove& move) {
  if (move.motor == kWaveMotor) {
    return mDrive.Move(move.forward, move.steps, move.mode);
  }
  int& position = mMotors[static_cast<std::size_t>(move.motor)].position;
  const int target = position + (move.forward ? move.steps : -move.steps);
  const int highest = kMotorProfiles[static_cast<std::size_t>(move.motor)].highest;
  if (move.motor == kFilterMotor) {
    position = ((target % highest) + highest) % highest;
  } else {
    // Against a stop the motor slips.
    position = std::clamp(target, move.motor == kFlipperMotor ? 0 : kSlitPoints[0].steps, highest);
  }
  return move.steps;
}

bool LegacyMotors::IsMoving(int motor) const {
  const std::chrono::microseconds until = mMotors[static_cast<std::size_t>(motor)].busyUntil;
  return until.count() != 0 && mClock() < until;
}

std::uint8_t LegacyMotors::Status() const {
  std::uint8_t status = 0;
  for (int motor = 0; motor < kLegacyMotors; ++motor) {
    if (IsMoving(motor)) {
      status = static_cast<std::uint8_t>(status | kStatusBits[static_cast<std::size_t>(motor)]);
    }
  }
  return status;
}

}  // namespace corvane::sim
