#include "controller/Instrument.h"

#include <cmath>
#include <limits>

#include "controller/StateFile.h"
#include "model/OpticalModel.h"

namespace corvane::sim {
namespace {

constexpr int kWidestSlit = 2500;
constexpr int kWidestLargeSlit = 24000;
constexpr int kNarrowestSlit = 10;

std::size_t DetectorOffsetIndex(const Record& record, StructureVersion version, int entrance, int exit) {
  const int row = version.major >= 3 ? entrance : 0;
  return std::min(static_cast<std::size_t>(exit + 2 * row), record.detectorOffsets.size() - 1);
}

std::optional<double> ToDouble(const std::optional<long double>& value) {
  return value ? std::optional(static_cast<double>(*value)) : std::nullopt;
}

}  // namespace

Instrument::Instrument(const InstrumentDescription& description) : mDescription(description) {
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
  Place(FirmwareRecord(), description.grating, description.wavelength);
  mMemory = InstrumentMemory(description);
  if (!description.stateFile.empty()) {
    LoadState(description, mMemory, mPositions);
  }
}

Record Instrument::FirmwareRecord() const {
  Record record = mMemory.Decode(mDescription);
  // Of a turret that its record does not list an SX knows as much as of the first.
  if (KeepsTexts() && mPositions.mountedTurret != kUnlistedTurret) {
    record.activeTurret = mPositions.mountedTurret - 1;
  }
  return record;
}

Record Instrument::RealRecord() const {
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

const std::vector<Grating>& Instrument::Gratings(const Record& record) {
  static const std::vector<Grating> kNone;
  const auto turret = static_cast<std::size_t>(record.activeTurret);
  return turret < record.turrets.size() ? record.turrets[turret].gratings : kNone;
}

OpticalModel Instrument::ModelOf(const Record& record, const Grating& grating) const {
  return {record, grating.lines, TotalSteps(), mDescription.structure.major >= 2};
}

long double Instrument::Zero(const Record& record, int grating) const {
  const Grating& entry = Gratings(record)[static_cast<std::size_t>(grating) - 1];
  const std::size_t ports =
      DetectorOffsetIndex(record, mDescription.structure, mPositions.entrancePort, mPositions.exitPort);
  return static_cast<long double>(entry.start) + entry.offset + record.detectorOffsets[ports];
}

long double Instrument::FromZero(long double zero) const {
  const long double turn = TotalSteps();
  const long double position = static_cast<long double>(mPositions.turret) / mDescription.drive.microsteps;
  return std::remainder(position - zero, turn);
}

int Instrument::GratingInBeam(const Record& record) const {
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

std::optional<OpticalModel> Instrument::RealModel() const {
  const Record record = RealRecord();
  const int grating = GratingInBeam(record);
  if (grating == 0) {
    return std::nullopt;
  }
  return ModelOf(record, Gratings(record)[static_cast<std::size_t>(grating) - 1]);
}

std::optional<long double> Instrument::RealCentre() const {
  const Record record = RealRecord();
  const int grating = GratingInBeam(record);
  return grating == 0 ? std::nullopt : RealModel()->WavelengthAt(FromZero(Zero(record, grating)));
}

std::optional<double> Instrument::TrueWavelength(double pixel, const DetectorGeometry& detector) const {
  const std::optional<long double> centre = RealCentre();
  return centre ? ToDouble(RealModel()->WavelengthAtPixel(*centre, pixel, detector)) : std::nullopt;
}

std::optional<double> Instrument::TrueCentre() const {
  return ToDouble(RealCentre());
}

std::optional<double> Instrument::Wavelength() const {
  const Record record = FirmwareRecord();
  const std::vector<Grating>& gratings = Gratings(record);
  const auto index = static_cast<std::size_t>(mPositions.grating) - 1;
  if (index >= gratings.size()) {
    return std::nullopt;
  }
  return ToDouble(ModelOf(record, gratings[index]).WavelengthAt(FromZero(Zero(record, mPositions.grating))));
}

bool Instrument::Place(const Record& record, int grating, double wavelength) {
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

bool Instrument::MoveTo(double wavelength) {
  const bool done = Place(FirmwareRecord(), mPositions.grating, wavelength);
  Changed();
  return done;
}

bool Instrument::SelectGrating(int grating) {
  const Record record = FirmwareRecord();
  const bool done = Place(record, grating, Wavelength().value_or(0.0)) || Place(record, grating, 0.0);
  Changed();
  return done;
}

bool Instrument::GratingHome() {
  return MoveTo(0.0);
}

int Instrument::Step() const {
  const std::int64_t microsteps = mDescription.drive.microsteps;
  return static_cast<int>(((mPositions.turret + microsteps / 2) / microsteps) % TotalSteps());
}

bool Instrument::StepTo(int step) {
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

bool Instrument::WriteMemory(int address, int value) {
  if (value < 0 || value > std::numeric_limits<std::uint8_t>::max()) {
    return false;
  }
  mMemory.bytes.SetByte(address, static_cast<std::uint8_t>(value));
  Changed();
  return true;
}

void Instrument::WriteParameter(int number, std::string_view text) {
  mMemory.parameters.SetText(number, text);
  Changed();
}

int Instrument::MountedTurret() const {
  return KeepsTexts() ? mPositions.mountedTurret : FirmwareRecord().activeTurret + 1;
}

bool Instrument::SetMountedTurret(int turret) {
  const StructureVersion version = Memory().Version();
  if (!KeepsTexts() && !version.AtLeast(1, 3)) {
    return turret == 1;
  }
  if ((turret < 1 || turret > kMaxTurrets) && !(KeepsTexts() && turret == kUnlistedTurret)) {
    return false;
  }
  if (!KeepsTexts()) {
    return WriteMemory(EepromImage::AddressOf(Field::kActiveTurret, version), turret - 1);
  }
  mPositions.mountedTurret = turret;
  Changed();
  return true;
}

bool Instrument::SetEntrancePort(int port) {
  if (port != 0 && port != 1) {
    return false;
  }
  mPositions.entrancePort = port;
  Changed();
  return true;
}

bool Instrument::SetExitPort(int port) {
  if (port != 0 && port != 1) {
    return false;
  }
  mPositions.exitPort = port;
  Changed();
  return true;
}

bool Instrument::SetFilter(int filter) {
  if (filter < 1 || filter > kFilters) {
    return false;
  }
  mPositions.filter = filter;
  Changed();
  return true;
}

void Instrument::SetFilterMode(const std::string& mode) {
  mPositions.filterMode = mode;
  Changed();
}

bool Instrument::MoveFocus(long long steps) {
  const long long target = mPositions.focus + steps;
  if (target < 0 || target > mDescription.parts.focusTotalSteps) {
    return false;
  }
  mPositions.focus = static_cast<int>(target);
  Changed();
  return true;
}

void Instrument::FocusHome() {
  mPositions.focus = 0;
  Changed();
}

bool Instrument::SetSlitWidth(SlitIndex slit, int width) {
  const int widest = mPositions.slitModes[slit] == "SLIT-I24" ? kWidestLargeSlit : kWidestSlit;
  if (width < kNarrowestSlit || width > widest) {
    return false;
  }
  mPositions.slitWidths[slit] = width;
  Changed();
  return true;
}

void Instrument::SlitHome(SlitIndex slit) {
  mPositions.slitWidths[slit] = kNarrowestSlit;
  Changed();
}

void Instrument::SetSlitMode(SlitIndex slit, const std::string& mode) {
  mPositions.slitModes[slit] = mode;
  Changed();
}

bool Instrument::SetPortOutputs(int lines) {
  if (lines < 0 || lines > 15) {
    return false;
  }
  mPositions.portOutputs = lines;
  Changed();
  return true;
}

bool Instrument::SetShutterMode(int mode) {
  if (mode != 0 && mode != 1) {
    return false;
  }
  mPositions.shutterMode = mode;
  Changed();
  return true;
}

void Instrument::Changed() const {
  if (!mDescription.stateFile.empty()) {
    SaveState(mDescription, mMemory, mPositions);
  }
}

}  // namespace corvane::sim
