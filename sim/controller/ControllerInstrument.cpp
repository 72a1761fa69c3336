#include "controller/ControllerInstrument.h"

#include <cmath>
#include <limits>

#include "controller/StateFile.h"
#include "model/Limits.h"
#include "model/OpticalModel.h"

namespace corvane::sim {
namespace {

std::size_t DetectorOffsetIndex(const Record& record, StructureVersion version, int entrance, int exit) {
  const int entranceKept = version.major >= 3 ? entrance : 0;
  return std::min(static_cast<std::size_t>(exit + 2 * entranceKept), record.detectorOffsets.size() - 1);
}

std::optional<double> ToDouble(const std::optional<long double>& value) {
  return value ? std::optional(static_cast<double>(*value)) : std::nullopt;
}

}  // namespace

ControllerInstrument::ControllerInstrument(const InstrumentDescription& description) : mDescription(description) {
  for (std::size_t i = 0; i < kSlits; ++i) {
    mPositions.slitWidths[i] = description.parts.slits[i].width;
    mPositions.slitModes[i] = description.parts.slits[i].mode;
  }
  mPositions.mountedTurret = description.turretNumber;
  // It was adjusted before anything happened to its memory.
  InstrumentDescription adjusted = description;
  adjusted.memoryPatches.clear();
  adjusted.parameterPatches.clear();
  mMemory = InstrumentMemory(adjusted);
  TurnTo(FirmwareRecord(), description.grating, description.wavelength);
  mMemory = InstrumentMemory(description);
  if (!description.stateFile.empty()) {
    LoadState(description, mMemory, mPositions);
  }
}

Record ControllerInstrument::FirmwareRecord() const {
  Record record = mMemory.Decode(mDescription);
  // Of a turret that its record does not list an SX knows as much as of the first.
  if (KeepsTexts() && mPositions.mountedTurret != kUnlistedTurret) {
    record.activeTurret = mPositions.mountedTurret - 1;
  }
  return record;
}

Record ControllerInstrument::RealRecord() const {
  Record record = mDescription.record;
  // Telling the memory of another turret is what a user does after mounting it.
  record.activeTurret = FirmwareRecord().activeTurret;
  for (Turret& turret : record.turrets) {
    for (std::size_t g = 0; g < turret.gratings.size(); ++g) {
      turret.gratings[g].start += mDescription.drive.zeroErrors[g];
    }
  }
  return record;
}

const std::vector<Grating>& ControllerInstrument::Gratings(const Record& record) {
  static const std::vector<Grating> kNone;
  const auto turret = static_cast<std::size_t>(record.activeTurret);
  return turret < record.turrets.size() ? record.turrets[turret].gratings : kNone;
}

OpticalModel ControllerInstrument::ModelOf(const Record& record, const Grating& grating) const {
  return {record, grating.lines, TotalSteps(), mDescription.structure.major >= 2};
}

long double ControllerInstrument::Zero(const Record& record, int grating) const {
  const Grating& entry = Gratings(record)[static_cast<std::size_t>(grating) - 1];
  const std::size_t ports =
      DetectorOffsetIndex(record, mDescription.structure, mPositions.entrancePort, mPositions.exitPort);
  return static_cast<long double>(entry.start) + entry.offset + record.detectorOffsets[ports];
}

long double ControllerInstrument::FromZero(long double zero) const {
  const long double turn = TotalSteps();
  const long double position = static_cast<long double>(mPositions.turret) / mDescription.drive.microsteps;
  return std::remainder(position - zero, turn);
}

int ControllerInstrument::GratingInBeam(const Record& record) const {
  // A grating works from zero order to an angle of 60 degrees; the middle of that range stands for its sector.
  const long double middle = TotalSteps() / 12.0L;
  const auto distance = [&](int grating) {
    return std::abs(std::remainder(FromZero(Zero(record, grating)) - middle, static_cast<long double>(TotalSteps())));
  };
  const int count = static_cast<int>(Gratings(record).size());
  int best = mPositions.grating <= count ? mPositions.grating : 0;
  for (int grating = 1; grating <= count; ++grating) {
    if (best == 0 || distance(grating) < distance(best)) {
      best = grating;
    }
  }
  return best;
}

std::optional<OpticalModel> ControllerInstrument::RealModel() const {
  const Record record = RealRecord();
  const int grating = GratingInBeam(record);
  if (grating == 0) {
    return std::nullopt;
  }
  return ModelOf(record, Gratings(record)[static_cast<std::size_t>(grating) - 1]);
}

std::optional<long double> ControllerInstrument::RealCentre() const {
  const Record record = RealRecord();
  const int grating = GratingInBeam(record);
  return grating == 0 ? std::nullopt : RealModel()->WavelengthAt(FromZero(Zero(record, grating)));
}

std::optional<double> ControllerInstrument::TrueWavelength(double pixel, const DetectorGeometry& detector) const {
  const std::optional<long double> centre = RealCentre();
  return centre ? ToDouble(RealModel()->WavelengthAtPixel(*centre, pixel, detector)) : std::nullopt;
}

std::optional<double> ControllerInstrument::TrueCentre() const {
  return ToDouble(RealCentre());
}

std::optional<double> ControllerInstrument::Wavelength() const {
  const Record record = FirmwareRecord();
  const std::vector<Grating>& gratings = Gratings(record);
  const auto index = static_cast<std::size_t>(mPositions.grating) - 1;
  if (index >= gratings.size()) {
    return std::nullopt;
  }
  return ToDouble(ModelOf(record, gratings[index]).WavelengthAt(FromZero(Zero(record, mPositions.grating))));
}

bool ControllerInstrument::TurnTo(const Record& record, int grating, double wavelength) {
  const std::vector<Grating>& gratings = Gratings(record);
  if (grating < 1 || grating > static_cast<int>(gratings.size())) {
    return false;
  }
  const auto steps = ModelOf(record, gratings[static_cast<std::size_t>(grating) - 1]).StepsFromZero(wavelength);
  if (!steps) {
    return false;
  }
  const long double turn = TotalSteps();
  const long double target = Zero(record, grating) + *steps;
  const std::int64_t microsteps = mDescription.drive.microsteps;
  const std::int64_t turnMicrosteps = TotalSteps() * microsteps;
  const auto position = static_cast<std::int64_t>(
      std::llround((target - turn * std::floor(target / turn)) * mDescription.drive.microsteps));
  mPositions.turret = position % turnMicrosteps;
  mPositions.grating = grating;
  return true;
}

bool ControllerInstrument::MoveTo(double wavelength) {
  const bool done = TurnTo(FirmwareRecord(), mPositions.grating, wavelength);
  Changed();
  return done;
}

bool ControllerInstrument::SelectGrating(int grating) {
  const Record record = FirmwareRecord();
  const bool done = TurnTo(record, grating, Wavelength().value_or(0.0)) || TurnTo(record, grating, 0.0);
  Changed();
  return done;
}

bool ControllerInstrument::GratingHome() {
  return MoveTo(0.0);
}

int ControllerInstrument::Step() const {
  const std::int64_t microsteps = mDescription.drive.microsteps;
  return static_cast<int>(((mPositions.turret + microsteps / 2) / microsteps) % TotalSteps());
}

bool ControllerInstrument::StepTo(int step) {
  if (step < 0 || step >= TotalSteps()) {
    return false;
  }
  mPositions.turret = std::int64_t{step} * mDescription.drive.microsteps;
  const int grating = GratingInBeam(FirmwareRecord());
  if (grating != 0) {
    mPositions.grating = grating;
  }
  Changed();
  return true;
}

bool ControllerInstrument::WriteMemory(int address, int value) {
  if (value < 0 || value > std::numeric_limits<std::uint8_t>::max()) {
    return false;
  }
  mMemory.bytes.SetByte(address, static_cast<std::uint8_t>(value));
  Changed();
  return true;
}

void ControllerInstrument::WriteParameter(int number, std::string_view text) {
  mMemory.parameters.SetText(number, text);
  Changed();
}

int ControllerInstrument::MountedTurret() const {
  return KeepsTexts() ? mPositions.mountedTurret : FirmwareRecord().activeTurret + 1;
}

bool ControllerInstrument::SetMountedTurret(int turret) {
  const StructureVersion version = Memory().Version();
  if (!KeepsTexts() && !version.AtLeast(1, 3)) {
    return turret == 1;
  }
  if (!kTurretNumbers.Hold(turret) && !(KeepsTexts() && turret == kUnlistedTurret)) {
    return false;
  }
  if (!KeepsTexts()) {
    return WriteMemory(EepromImage::AddressOf(Field::kActiveTurret, version), turret - 1);
  }
  mPositions.mountedTurret = turret;
  Changed();
  return true;
}

bool ControllerInstrument::Set(int& position, int value, Limits limits) {
  if (!limits.Hold(value)) {
    return false;
  }
  position = value;
  Changed();
  return true;
}

bool ControllerInstrument::SetEntrancePort(int port) {
  return Set(mPositions.entrancePort, port, kPortNumbers);
}

bool ControllerInstrument::SetExitPort(int port) {
  return Set(mPositions.exitPort, port, kPortNumbers);
}

bool ControllerInstrument::SetFilter(int filter) {
  return Set(mPositions.filter, filter, kFilterNumbers);
}

void ControllerInstrument::SetFilterMode(const std::string& mode) {
  mPositions.filterMode = mode;
  Changed();
}

bool ControllerInstrument::MoveFocus(long long steps) {
  const long long target = mPositions.focus + steps;
  if (target < 0 || target > mDescription.parts.focusTotalSteps) {
    return false;
  }
  mPositions.focus = static_cast<int>(target);
  Changed();
  return true;
}

void ControllerInstrument::FocusHome() {
  mPositions.focus = 0;
  Changed();
}

bool ControllerInstrument::SetSlitWidth(SlitIndex slit, int width) {
  return Set(mPositions.slitWidths[slit], width, SlitWidths(mPositions.slitModes[slit]));
}

void ControllerInstrument::SlitHome(SlitIndex slit) {
  mPositions.slitWidths[slit] = SlitWidths(mPositions.slitModes[slit]).least;
  Changed();
}

void ControllerInstrument::SetSlitMode(SlitIndex slit, const std::string& mode) {
  mPositions.slitModes[slit] = mode;
  Changed();
}

bool ControllerInstrument::SetPortOutputs(int lines) {
  return Set(mPositions.portOutputs, lines, kLinePatterns);
}

bool ControllerInstrument::SetShutterMode(int mode) {
  return Set(mPositions.shutterMode, mode, kShutterModes);
}

void ControllerInstrument::Changed() const {
  if (!mDescription.stateFile.empty()) {
    SaveState(mDescription, mMemory, mPositions);
  }
}

}  // namespace corvane::sim
