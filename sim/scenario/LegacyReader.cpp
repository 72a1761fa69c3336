#include "scenario/LegacyReader.h"

#include <numbers>
#include <sstream>

#include "legacy/LegacyInstrument.h"
#include "scenario/InstrumentReader.h"
#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

using nlohmann::json;

constexpr int kAnyStep = WaveDrive::kTurn;
constexpr int kNewestMinor = 99;
constexpr double kLongest = 600000.0;

StructureVersion ReadVersion(JsonSection& section) {
  std::string text = "3.0";
  section.Read("structureVersion", text, 5);
  StructureVersion version{0, 0};
  char point = ' ';
  std::istringstream stream(text);
  stream >> version.major >> point >> version.minor;
  if (!stream || !stream.eof() || point != '.' || version.major < 1 || version.minor < 0 ||
      version.minor > kNewestMinor) {
    section.Fail("structureVersion", R"(must be major.minor, from "1.0")");
  }
  return version;
}

Turret ReadTurret(JsonSection section, Turret turret, std::size_t digits) {
  const std::vector<Grating> usual = turret.gratings;
  turret.gratings.clear();
  for (JsonSection& entry : section.Sections("gratings", 1, kLegacyGratings)) {
    Grating grating = usual[turret.gratings.size()];
    entry.Read("lines", grating.lines, 1.0, 10000.0);
    entry.Read("blaze", grating.blaze, digits);
    entry.Read("start", grating.start, -kAnyStep, kAnyStep);
    entry.Read("offset", grating.offset, -kAnyStep, kAnyStep);
    entry.Finish();
    turret.gratings.push_back(grating);
  }
  if (turret.gratings.empty()) {
    turret.gratings = usual;
  }
  section.Finish();
  return turret;
}

void ReadTurrets(JsonSection& section, LegacyDescription& instrument) {
  Record& record = instrument.record;
  const Turret usual = record.turrets[0];
  std::vector<JsonSection> entries = section.Sections("turrets", 1, kMaxTurrets);
  if (!entries.empty() && !instrument.structure.AtLeast(1, 1)) {
    section.Fail("turrets", "are not in a record of this age; hosts assume 300 lines per mm");
  }
  if (!entries.empty()) {
    record.turrets.clear();
  }
  for (JsonSection& entry : entries) {
    record.turrets.push_back(ReadTurret(std::move(entry), usual, instrument.structure.major >= 3 ? 5 : 4));
  }
  int active = 1;
  section.Read("activeTurret", active, 1, static_cast<int>(record.turrets.size()));
  record.activeTurret = active - 1;
}

void ReadRecord(JsonSection section, LegacyDescription& instrument) {
  Record& record = instrument.record;
  section.Read("id", record.id, 20);
  section.Read("manufactured", record.manufactured, 10);
  section.Read("modified", record.modified, 10);
  ReadOptics(section, record);
  if (auto sine = section.Section("sine")) {
    sine->Read("amplitude", record.sineAmplitude, -300.0, 300.0);
    sine->Read("phase", record.sinePhase, -1.0e3, 1.0e3);
    sine->Read("frequency", record.sineFrequency, 2000.0, 1.0e9);
    sine->Finish();
  }
  ReadNumbers(section, "detectorOffsets", record.detectorOffsets, instrument.structure.AtLeast(1, 4) ? 2 : 1, -kAnyStep,
              kAnyStep);
  ReadTexts(section, "filters", record.filters, 9);
  section.Finish();
}

void ReadDrive(JsonSection section, LegacyDescription& instrument) {
  int position = -1;
  section.Read("position", position, 0, WaveDrive::kTurn - 1);
  if (position >= 0) {
    instrument.drivePosition = position;
  }
  section.Read("backlash", instrument.backlash, 0, 1000);
  ReadNumbers(section, "zeroErrors", instrument.zeroErrors, instrument.zeroErrors.size(), -kAnyStep, kAnyStep);
  section.Finish();
}

void ReadParts(JsonSection section, LegacyParts& parts) {
  section.Read("slit", parts.slit);
  section.Read("outputSlit", parts.outputSlit);
  section.Read("filterWheel", parts.filterWheel);
  section.Read("flipper", parts.flipper);
  section.Read("shutter", parts.shutter);
  section.Read("accessory", parts.accessory);
  section.Finish();
}

void ReadMemory(JsonSection section, LegacyDescription& instrument) {
  int fill = instrument.memoryFill;
  section.Read("fill", fill, 0, 255);
  instrument.memoryFill = static_cast<unsigned char>(fill);
  for (JsonSection& entry : section.Sections("patches", 0, 256)) {
    PagePatch patch;
    entry.Read("page", patch.page, 0, kLegacyPages - 1);
    entry.Read("offset", patch.offset, 0, kLegacyPageSize - 1);
    patch.bytes.resize(std::size_t{kLegacyPages} * kLegacyPageSize);
    patch.bytes.resize(ReadNumbers(entry, "bytes", patch.bytes, patch.bytes.size()));
    entry.Finish();
    instrument.memoryPatches.push_back(std::move(patch));
  }
  section.Finish();
}

MotorFault ReadFault(JsonSection section) {
  MotorFault fault;
  section.Read("motor", fault.motor, 0, kLegacyMotors - 1);
  section.Read("occurrence", fault.occurrence, 1, std::numeric_limits<int>::max());
  section.Read("repeat", fault.fromThenOn);
  section.Read("stuck", fault.milliseconds, 0.0, kLongest);
  section.Finish();
  return fault;
}

/// Where the instrument stands must be a place that it can reach.
void CheckStand(const JsonSection& section, const LegacyDescription& instrument) {
  const Record& record = instrument.record;
  const Grating& grating = record.turrets[static_cast<std::size_t>(record.activeTurret)].gratings[0];
  const OpticalModel model = LegacyOptics(instrument, grating, grating.start);
  if (!model.IsMonotonic()) {
    section.Fail("record", "has coefficients that do not rise over the drive's range");
  }
  if (!model.StepsFromZero(instrument.wavelength)) {
    section.Fail("wavelength", "is beyond what the first grating reaches");
  }
}

}  // namespace

LegacyDescription DefaultLegacy(StructureVersion structure) {
  LegacyDescription instrument;
  instrument.structure = structure;
  Record& record = instrument.record;
  record.id = "Tivan Technology";
  record.serial = "CV0501";
  record.manufactured = "01/01/2001";
  record.modified = "02/02/2002";
  record.focalLength = 0.25736F;
  record.coefficients = DefaultCoefficients(record.angularDeviation);
  record.sineAmplitude = 0.0F;
  record.sinePhase = 0.812F;
  record.sineFrequency = 2000.0F;
  record.detectorOffsets = {192, 0, 0, 0};
  // A record of the first version holds no gratings; hosts assume these.
  const bool holdsGratings = structure.AtLeast(1, 1);
  const auto grating = [&](float lines, const char* blaze, int start) {
    return holdsGratings ? Grating{lines, blaze, start, 0} : Grating{300.0F, "600", start, 0};
  };
  record.turrets = {
      Turret{{grating(1200.0F, "500", 1), grating(600.0F, "750", 160000), grating(300.0F, "1000", 320000)}}};
  return instrument;
}

LegacyDescription ReadLegacy(JsonSection section) {
  LegacyDescription instrument = DefaultLegacy(ReadVersion(section));
  section.Read("serial", instrument.record.serial, 9);
  section.Read("fpga", instrument.fpga, 0, 255);
  section.Read("wavelength", instrument.wavelength, 0.0, 1.0e6);
  instrument.record.currentWavelength = instrument.wavelength;
  ReadTurrets(section, instrument);
  if (auto record = section.Section("record")) {
    ReadRecord(std::move(*record), instrument);
  }
  if (auto drive = section.Section("drive")) {
    ReadDrive(std::move(*drive), instrument);
  }
  if (auto parts = section.Section("parts")) {
    ReadParts(std::move(*parts), instrument.parts);
  }
  ReadNumbers(section, "slitWidths", instrument.slitWidths, instrument.slitWidths.size(), 10.0F, 12000.0F);
  section.Read("filter", instrument.filter, 1, kFilters);
  section.Read("port", instrument.port, 0, 1);
  section.Read("motion", instrument.motion, 0.0, 1000.0);
  section.Read("writeTime", instrument.writeTime, 0.0, kLongest);
  if (auto memory = section.Section("memory")) {
    ReadMemory(std::move(*memory), instrument);
  }
  for (JsonSection& fault : section.Sections("faults", 0, 1000)) {
    instrument.faults.push_back(ReadFault(std::move(fault)));
  }
  section.Finish();
  CheckStand(section, instrument);
  return instrument;
}

}  // namespace corvane::sim
