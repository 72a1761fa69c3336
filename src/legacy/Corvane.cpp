#include "legacy/Corvane.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace {

using corvane::LegacyBus;
using corvane::legacy::kBusSuccess;

constexpr std::uint8_t kStatusDevice = LegacyBus::kStatusDevice;
constexpr float kSettlingMilliseconds = 10.0F;
/// Moves of the wave drive by more than one and less than three of these are split.
constexpr int kShortMove = 10;
constexpr int kLastMode = static_cast<int>(corvane::MoveMode::kStopAtEdge);

/// Where a part's presence is read: a set bit means that it is absent.
struct PresenceBit {
  std::uint8_t selector;
  std::uint8_t mask;
};
// By TPart.
constexpr PresenceBit kPresenceBits[] = {{1, 4}, {129, 2}, {64, 1}, {96, 2}, {161, 2}};
constexpr PresenceBit kAccessoryBit{1, 8};

/// A line's byte: its stored value less a number, or the number.
struct LineRule {
  bool switched;
  int number;
};
constexpr LineRule kLineRules[] = {{true, 0}, {true, 128}, {false, 64}, {false, 96}, {true, 96}};
/// The order in which lines are sent; the constant ones come last.
constexpr std::array<int, 5> kSendingOrder{0, 1, 4, 2, 3};
constexpr std::size_t kSwitchedLines = 3;

}  // namespace

Corvane::Corvane(TI2CInterface* i2c, bool usb) : mData(i2c, usb), mMotorController(mData.values.commAdd) {
}

int Corvane::FromZeroBased(int index) {
  return index < 0 ? 0 : std::min(index, std::numeric_limits<int>::max() - 1) + 1;
}

bool Corvane::ReadSelector(std::uint8_t selector, std::uint8_t& status) {
  // Without the selection an older status device answers for the register asked for last.
  const bool selected = Bus().GetFPGAVersion() >= LegacyBus::kRegisterFpgaVersion ||
                        Bus().I2CBurstWrite(kStatusDevice, 1, &selector) == kBusSuccess;
  status = 0;
  // The first read latches the inputs, the second gives them.
  Bus().I2CRead(kStatusDevice, selector, &status);
  const unsigned int result = Bus().I2CRead(kStatusDevice, selector, &status);
  Bus().Delay(kSettlingMilliseconds);
  return selected && result == kBusSuccess;
}

bool Corvane::DeviceExists(int part) {
  if (part == kAccessory) {
    return IsAccessoryAttached();
  }
  if (part < 0 || part >= static_cast<int>(std::size(kPresenceBits))) {
    return false;
  }
  const PresenceBit& bit = kPresenceBits[part];
  std::uint8_t status = 0;
  const bool read = ReadSelector(bit.selector, status);
  mLines = {};
  for (std::size_t i = 0; i < kSwitchedLines; ++i) {
    SendData(kSendingOrder[i]);
  }
  return read && (status & bit.mask) == 0;
}

bool Corvane::IsAccessoryAttached() {
  std::uint8_t status = 0;
  return ReadSelector(kAccessoryBit.selector, status) && (status & kAccessoryBit.mask) == 0;
}

unsigned int Corvane::SendData(int line) {
  if (line < 0 || line >= static_cast<int>(kLines)) {
    return kFailure;
  }
  const LineRule& rule = kLineRules[line];
  const int number = rule.switched ? mLines[static_cast<std::size_t>(line)] - rule.number : rule.number;
  const std::array<std::uint8_t, 2> data{0, static_cast<std::uint8_t>(number)};
  const auto device = static_cast<std::uint8_t>(mMotorController + 1);
  const unsigned int result = Bus().GetFPGAVersion() < LegacyBus::kRegisterFpgaVersion
                                  ? Bus().I2CBurstWrite(device, static_cast<int>(data.size()), data.data())
                                  : Bus().I2CWrite(device, data[0], data[1]);
  return result == kBusSuccess ? kSuccess : kFailure;
}

unsigned int Corvane::ResetOutputs() {
  mLines = {};
  const bool sent =
      std::all_of(kSendingOrder.begin(), kSendingOrder.end(), [this](int line) { return SendData(line) == kSuccess; });
  return sent ? kSuccess : kFailure;
}

void Corvane::SetDirection(int motor, bool forward, bool enable) {
  if (motor >= 0 && motor < static_cast<int>(kMotors)) {
    mMotors[static_cast<std::size_t>(motor)] = {forward, enable};
  }
}

unsigned int Corvane::Pulse(int motor, int steps, int mode) {
  if (steps < 1 || motor < 0 || motor >= static_cast<int>(kMotors) || mode < 0 || mode > kLastMode) {
    return kFailure;
  }
  if (motor == corvane::kWaveMotor && steps > kShortMove && steps < 3 * kShortMove) {
    unsigned int result = kSuccess;
    for (int i = 0; i < steps / kShortMove && result == kSuccess; ++i) {
      result = Pulse(motor, kShortMove, 0);
    }
    // Also after a failure, and it then decides the result: deliberate.
    return steps % kShortMove != 0 ? Pulse(motor, steps % kShortMove, 0) : result;
  }
  return StartMove(motor, steps, static_cast<corvane::MoveMode>(mode),
                   mData.values.motors[static_cast<std::size_t>(motor)].ramp);
}

unsigned int Corvane::StartMove(int motor, int steps, corvane::MoveMode mode, const corvane::StepRamp& ramp) {
  const TMotor& flags = mMotors[static_cast<std::size_t>(motor)];
  corvane::RampedMove move;
  move.motor = motor;
  move.forward = flags.forward;
  move.enable = flags.enable;
  move.mode = mode;
  move.steps = steps;
  move.ramp = ramp;
  return Bus().StartRampedMove(mMotorController, move) == corvane::legacy::kSuccess ? kSuccess : kFailure;
}

bool Corvane::Travel(int motor, bool forward, std::int64_t steps, unsigned int& result) {
  SetDirection(motor, forward);
  if (steps > std::numeric_limits<int>::max() || Pulse(motor, static_cast<int>(steps), 0) != kSuccess) {
    result = kFailure;
  }
  return Bus().WaitForStandstill(motor) == corvane::legacy::kSuccess;
}
