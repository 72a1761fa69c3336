#include "legacy/LegacyInstrument.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <numbers>

namespace corvane::sim {
namespace {

using nlohmann::json;

// Devices on the bus.
constexpr std::uint8_t kMotorDevice = 0x10;
constexpr std::uint8_t kStatusDevice = 0x11;
constexpr std::uint8_t kFirstPage = 0x68;
constexpr std::uint8_t kModeDevice = 0x6F;

// Their registers.
constexpr std::uint8_t kFpgaRegister = 0x00;
constexpr std::uint8_t kOutputRegister = 0x00;
constexpr std::uint8_t kModeRegister = 0xFF;
constexpr std::uint8_t kWriteMode = 2;
constexpr std::uint8_t kMotorStatus = 0xC3;
/// Where a camera on USB finds the motors' status before version 23.
constexpr std::uint8_t kUsbMotorStatus = 0xC4;

/// From this version on the status device takes register transfers, below it bursts.
constexpr int kFirstWithRegisters = 23;

/// Outputs and status registers by the three highest bits: lines 0 to 4, and a selection of the status register that
/// changes no line.
constexpr std::array<int, 8> kLineOfPort{0, -1, 2, 3, 1, 4, -1, -1};
constexpr int kPortShift = 5;
constexpr std::uint8_t kLineMask = 0x1F;
constexpr std::uint8_t kStatusSelection = 6;

/// Status registers: a set bit says that the part is not fitted.
constexpr std::uint8_t kShutterAndAccessory = 1;
constexpr std::uint8_t kSlitStatus = 129;
constexpr std::uint8_t kFilterStatus = 64;
constexpr std::uint8_t kFlipperStatus = 96;
constexpr std::uint8_t kOutputSlitStatus = 161;

/// Half the distance of two filters.
constexpr int kHalfFilter = 400;

double WidthOfSteps(int steps) {
  const auto [closed, open] = kSlitPoints;
  return closed.width + double(steps - closed.steps) * (open.width - closed.width) / (open.steps - closed.steps);
}

int FilterNear(int position) {
  constexpr int kTurn = kMotorProfiles[kFilterMotor].highest;
  return ((position + kHalfFilter + kTurn) % kTurn) / (2 * kHalfFilter);
}

int StandingPosition(const LegacyDescription& description) {
  if (description.drivePosition) {
    return *description.drivePosition;
  }
  const Record& record = description.record;
  const Grating& grating = record.turrets[static_cast<std::size_t>(record.activeTurret)].gratings[0];
  const int zero = grating.start + grating.offset + description.zeroErrors[0] +
                   record.detectorOffsets[static_cast<std::size_t>(description.port)];
  const auto steps = LegacyOptics(description, grating, zero).StepsFromZero(description.wavelength);
  return static_cast<int>(std::lround(static_cast<double>(zero + steps.value_or(0)))) - description.backlash;
}

}  // namespace

OpticalModel LegacyOptics(const LegacyDescription& description, const Grating& grating, long double zero) {
  const bool isSecondGeneration = description.structure.major >= 2;
  Record record = description.record;
  if (isSecondGeneration && record.sineFrequency != 0.0F) {
    // The drive's periodic error goes with the shaft, not with the way from the grating's zero order.
    record.sinePhase +=
        static_cast<float>(2.0L * std::numbers::pi_v<long double> * std::remainder(zero / record.sineFrequency, 1.0L));
  }
  return {record, grating.lines, WaveDrive::kTurn, isSecondGeneration};
}

LegacyInstrument::LegacyInstrument(const LegacyDescription& description, SimulationClock clock)
    : mDescription(description),
      mEeprom(description, clock),
      mMotors(description, StandingPosition(description), std::move(clock)) {
}

bool LegacyInstrument::TakesBursts() const {
  return mDescription.fpga < kFirstWithRegisters;
}

bool LegacyInstrument::Write(std::uint8_t device, std::uint8_t reg, std::uint8_t value) {
  if (device >= kFirstPage && device < kFirstPage + kLegacyPages) {
    return mEeprom.Write(device - kFirstPage, reg, value);
  }
  if (device == kModeDevice && reg == kModeRegister) {
    mEeprom.SetWriteMode(value == kWriteMode);
    return true;
  }
  return device == kStatusDevice && reg == kOutputRegister && !TakesBursts() && SetOutput(value);
}

bool LegacyInstrument::Read(std::uint8_t device, std::uint8_t reg, std::uint8_t& value) {
  if (device >= kFirstPage && device < kFirstPage + kLegacyPages) {
    return mEeprom.Read(device - kFirstPage, reg, value);
  }
  if (device == kModeDevice && reg == kModeRegister) {
    value = mEeprom.IsWriteMode() ? kWriteMode : std::uint8_t{0};
    return true;
  }
  if (device == kMotorDevice && reg == kFpgaRegister) {
    value = static_cast<std::uint8_t>(mDescription.fpga);
    return true;
  }
  if (device != kStatusDevice) {
    return false;
  }
  // Below version 23 it is the register selected last that answers, whatever the transfer names.
  return TakesBursts() ? mSelected && ReadStatus(*mSelected, value) : ReadStatus(reg, value);
}

bool LegacyInstrument::BurstWrite(std::uint8_t device, std::span<const std::uint8_t> bytes) {
  if (device == kMotorDevice) {
    const std::optional<RampedMove> move = RampedMove::Decode(bytes);
    return move && mMotors.Start(*move);
  }
  if (device != kStatusDevice || !TakesBursts()) {
    return false;
  }
  if (bytes.size() == 1) {
    mSelected = bytes[0];
    return true;
  }
  return bytes.size() == 2 && bytes[0] == kOutputRegister && SetOutput(bytes[1]);
}

bool LegacyInstrument::SetOutput(std::uint8_t value) {
  const int port = value >> kPortShift;
  const int line = kLineOfPort[static_cast<std::size_t>(port)];
  if (line >= 0) {
    mLines[static_cast<std::size_t>(line)] = value & kLineMask;
  }
  return line >= 0 || port == kStatusSelection;
}

bool LegacyInstrument::ReadStatus(std::uint8_t reg, std::uint8_t& value) const {
  if (reg == (TakesBursts() && mDescription.usbCamera ? kUsbMotorStatus : kMotorStatus)) {
    value = mMotors.Status();
    return true;
  }
  constexpr std::array kRegisters{kShutterAndAccessory, kSlitStatus, kFilterStatus, kFlipperStatus, kOutputSlitStatus};
  if (std::find(kRegisters.begin(), kRegisters.end(), reg) == kRegisters.end()) {
    return false;
  }
  value = PartStatus(reg);
  return true;
}

std::uint8_t LegacyInstrument::PartStatus(std::uint8_t reg) const {
  const auto absent = [](bool fitted, unsigned bit) { return fitted ? 0U : bit; };
  const LegacyParts& parts = mDescription.parts;
  switch (reg) {
    case kShutterAndAccessory:
      return static_cast<std::uint8_t>(absent(parts.shutter, 4) | absent(parts.accessory, 8));
    case kSlitStatus:
      return static_cast<std::uint8_t>(absent(parts.slit, 2));
    case kOutputSlitStatus:
      return static_cast<std::uint8_t>(absent(parts.outputSlit, 2));
    case kFlipperStatus:
      return static_cast<std::uint8_t>(absent(parts.flipper, 2));
    default:
      return static_cast<std::uint8_t>(absent(parts.filterWheel, 1) | SensorPattern());
  }
}

std::uint8_t LegacyInstrument::SensorPattern() const {
  if (!mDescription.parts.filterWheel || mMotors.IsMoving(kFilterMotor)) {
    return 0;
  }
  // Read somewhat before the filter stands in the beam.
  const int filter = FilterNear(mMotors.Position(kFilterMotor) + kFilterResetOffset);
  return static_cast<std::uint8_t>(kFilterPatterns[static_cast<std::size_t>(filter)]);
}

int LegacyInstrument::FilterInBeam() const {
  return FilterNear(mMotors.Position(kFilterMotor)) + 1;
}

int LegacyInstrument::Port() const {
  return mMotors.Position(kFlipperMotor) * 2 >= kMotorProfiles[kFlipperMotor].highest ? 1 : 0;
}

const Turret& LegacyInstrument::MountedTurret() const {
  // Telling the memory of another turret is what a user does after mounting it.
  const std::size_t told = mEeprom.Byte(1, 20) - std::size_t{1};
  const std::vector<Turret>& turrets = mDescription.record.turrets;
  return turrets[told < turrets.size() ? told : static_cast<std::size_t>(mDescription.record.activeTurret)];
}

long double LegacyInstrument::Zero(const Grating& grating, std::size_t index) const {
  return static_cast<long double>(grating.start) + grating.offset + mDescription.zeroErrors[index] +
         mDescription.record.detectorOffsets[static_cast<std::size_t>(Port())];
}

LegacyInstrument::Beam LegacyInstrument::InBeam() const {
  // The maker sets a grating's start on a drive that was homed backward and moved forward.
  const long double stands = mMotors.Drive().Position() + mDescription.backlash;
  const std::vector<Grating>& gratings = MountedTurret().gratings;
  // A grating works from zero order to an angle of 60 degrees; the middle of that range stands for its sector.
  constexpr long double kTurn = WaveDrive::kTurn;
  const auto fromMiddle = [&](std::size_t g) {
    return std::abs(std::remainder(stands - Zero(gratings[g], g) - kTurn / 12.0L, kTurn));
  };
  std::size_t best = 0;
  for (std::size_t g = 1; g < gratings.size(); ++g) {
    best = fromMiddle(g) < fromMiddle(best) ? g : best;
  }
  const long double zero = Zero(gratings[best], best);
  return {static_cast<int>(best) + 1, std::remainder(stands - zero, kTurn),
          LegacyOptics(mDescription, gratings[best], zero)};
}

std::optional<double> LegacyInstrument::TrueCentre() const {
  const Beam beam = InBeam();
  const auto centre = mMotors.IsMoving(kWaveMotor) ? std::nullopt : beam.model.WavelengthAt(beam.fromZero);
  return centre ? std::optional(static_cast<double>(*centre)) : std::nullopt;
}

std::optional<double> LegacyInstrument::TrueWavelength(double pixel, const DetectorGeometry& detector) const {
  const std::optional<double> centre = TrueCentre();
  const auto truth = centre ? InBeam().model.WavelengthAtPixel(*centre, pixel, detector) : std::nullopt;
  return truth ? std::optional(static_cast<double>(*truth)) : std::nullopt;
}

std::string LegacyInstrument::State() const {
  const Beam beam = InBeam();
  const auto below = beam.model.WavelengthAt(beam.fromZero - 0.5L);
  const auto above = beam.model.WavelengthAt(beam.fromZero + 0.5L);
  const std::optional<double> centre = TrueCentre();
  json state = {
      {"drive", mMotors.Drive().Position()},
      {"lastForward", mMotors.Drive().LastForward()},
      {"grating", beam.grating},
      {"fromZero", static_cast<double>(beam.fromZero)},
      {"wavelength", centre ? json(*centre) : json(nullptr)},
      {"nmPerStep", below && above ? json(static_cast<double>(*above - *below)) : json(nullptr)},
      {"filter", FilterInBeam()},
      {"port", Port()},
      {"slitWidths", {WidthOfSteps(mMotors.Position(kSlitMotor)), WidthOfSteps(mMotors.Position(kOutputSlitMotor))}},
      {"lines", mLines},
      {"writeMode", mEeprom.IsWriteMode()},
      {"writes", mEeprom.Writes()},
      {"lostWrites", mEeprom.LostWrites()}};
  for (int motor = 0; motor < kLegacyMotors; ++motor) {
    state["positions"].push_back(motor == kWaveMotor ? mMotors.Drive().Position() : mMotors.Position(motor));
    state["moving"].push_back(mMotors.IsMoving(motor));
    state["moves"].push_back(mMotors.Moves(motor));
    state["movesBackward"].push_back(mMotors.MovesBackward(motor));
  }
  return state.dump();
}

}  // namespace corvane::sim
