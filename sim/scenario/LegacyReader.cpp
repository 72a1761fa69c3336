#include "scenario/LegacyReader.h"

#include <limits>

#include "legacy/LegacyInstrument.h"
#include "scenario/InstrumentReader.h"
#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

constexpr int kMostSteps = WaveDrive::kTurn;
constexpr Bounds kSteps = Within({-kMostSteps, kMostSteps});

using Legacy = LegacyDescription;

constexpr SectionKey<Legacy> kLegacyKeys[] = {
    {"fpga", &Legacy::fpga, {0, 255}},
    {"wavelength", &Legacy::wavelength, {0, 1.0e6}},
    {"filter", &Legacy::filter, Within(kFilterNumbers)},
    {"port", &Legacy::port, Within(kPortNumbers)},
    {"motion", &Legacy::motion, {0, 1000}},
    {"writeTime", &Legacy::writeTime, {0, kLongestTime}},
};

constexpr SectionKey<Record> kRecordKeys[] = {
    {"id", &Record::id, Text(20)},
    {"manufactured", &Record::manufactured, Text(10)},
    {"modified", &Record::modified, Text(10)},
};

constexpr SectionKey<Legacy> kDriveKeys[] = {{"backlash", &Legacy::backlash, {0, 1000}}};

constexpr SectionKey<LegacyParts> kPartKeys[] = {
    {"slit", &LegacyParts::slit},
    {"outputSlit", &LegacyParts::outputSlit},
    {"filterWheel", &LegacyParts::filterWheel},
    {"flipper", &LegacyParts::flipper},
    {"shutter", &LegacyParts::shutter},
    {"accessory", &LegacyParts::accessory},
};

constexpr SectionKey<PagePatch> kPatchKeys[] = {
    {"page", &PagePatch::page, {0, kLegacyPages - 1}},
    {"offset", &PagePatch::offset, {0, kLegacyPageSize - 1}},
};

constexpr SectionKey<MotorFault> kFaultKeys[] = {
    {"motor", &MotorFault::motor, {0, kLegacyMotors - 1}},
    {"occurrence", &MotorFault::occurrence, {1, std::numeric_limits<int>::max()}},
    {"repeat", &MotorFault::fromThenOn},
    {"stuck", &MotorFault::milliseconds, {0, kLongestTime}},
};

Turret ReadTurret(JsonSection section, Turret turret, const Bounds& blaze) {
  const std::vector<Grating> usual = turret.gratings;
  turret.gratings.clear();
  for (JsonSection& entry : section.Sections("gratings", 1, kLegacyGratings)) {
    turret.gratings.push_back(ReadGrating(std::move(entry), usual[turret.gratings.size()], blaze, kMostSteps));
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
    record.turrets.push_back(ReadTurret(std::move(entry), usual, Text(instrument.structure.major >= 3 ? 5 : 4)));
  }
  int active = 1;
  section.Read("activeTurret", active, {1, static_cast<double>(record.turrets.size())});
  record.activeTurret = active - 1;
}

void ReadRecord(JsonSection section, LegacyDescription& instrument) {
  Record& record = instrument.record;
  ReadKeys(section, kRecordKeys, record);
  ReadOptics(section, record);
  ReadSine(section, record, 300, {2000, 1.0e9});
  const auto offsets = std::span(record.detectorOffsets).first(instrument.structure.AtLeast(1, 4) ? 2 : 1);
  section.ReadList("detectorOffsets", offsets, kSteps);
  section.ReadList("filters", std::span<std::string>(record.filters), Text(9));
  section.Finish();
}

void ReadDrive(JsonSection section, LegacyDescription& instrument) {
  int position = -1;
  section.Read("position", position, {0, kMostSteps - 1});
  if (position >= 0) {
    instrument.drivePosition = position;
  }
  ReadKeys(section, kDriveKeys, instrument);
  section.ReadList("zeroErrors", std::span<int>(instrument.zeroErrors), kSteps);
  section.Finish();
}

void ReadMemory(JsonSection section, LegacyDescription& instrument) {
  section.Read("fill", instrument.memoryFill, {0, 255});
  for (JsonSection& entry : section.Sections("patches", 0, 256)) {
    PagePatch patch;
    ReadKeys(entry, kPatchKeys, patch);
    // What reaches beyond its page goes on in the next.
    patch.bytes = ReadBytes(entry, (kLegacyPages - patch.page) * kLegacyPageSize - patch.offset);
    entry.Finish();
    instrument.memoryPatches.push_back(std::move(patch));
  }
  section.Finish();
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
  LegacyDescription instrument = DefaultLegacy(ReadStructureVersion(section));
  ReadKeys(section, kLegacyKeys, instrument);
  section.Read("serial", instrument.record.serial, Text(9));
  instrument.record.currentWavelength = instrument.wavelength;
  ReadTurrets(section, instrument);
  if (auto record = section.Section("record")) {
    ReadRecord(std::move(*record), instrument);
  }
  if (auto drive = section.Section("drive")) {
    ReadDrive(std::move(*drive), instrument);
  }
  if (auto parts = section.Section("parts")) {
    ReadOnlyKeys(std::move(*parts), kPartKeys, instrument.parts);
  }
  section.ReadList("slitWidths", std::span<float>(instrument.slitWidths), {10, 12000});
  if (auto memory = section.Section("memory")) {
    ReadMemory(std::move(*memory), instrument);
  }
  for (JsonSection& entry : section.Sections("faults", 0, 1000)) {
    ReadOnlyKeys(std::move(entry), kFaultKeys, instrument.faults.emplace_back());
  }
  section.Finish();
  CheckStand(section, instrument);
  return instrument;
}

}  // namespace corvane::sim
