#include "scenario/InstrumentReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>

#include "controller/InstrumentMemory.h"
#include "model/OpticalModel.h"
#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

using nlohmann::json;

constexpr double kAnyFloat = 3.0e38;
constexpr int kAnyInt = std::numeric_limits<int>::max();
constexpr double kLongestMotion = 600000.0;
/// Separators of the controller's replies.
constexpr const char* kSeparators = ",";

StructureVersion ReadStructureVersion(JsonSection& section) {
  constexpr const char* kKey = "structureVersion";
  std::string text = "3.0";
  section.Read(kKey, text, 10);
  StructureVersion version;
  const char* const end = text.data() + text.size();
  const auto [dot, error] = std::from_chars(text.data(), end, version.major);
  if (error != std::errc{} || dot == end || *dot != '.') {
    section.Fail(kKey, "must be major.minor, for example \"3.0\"");
  }
  const auto [rest, minorError] = std::from_chars(dot + 1, end, version.minor);
  if (minorError != std::errc{} || rest != end || version.major < 1 || version.minor < 0) {
    section.Fail(kKey, "must be major.minor, from \"1.0\"");
  }
  return version;
}

/// What the record of an instrument has room for.
struct Room {
  std::size_t turrets;
  std::size_t leastGratings;
  std::size_t mostGratings;
  std::size_t blaze;
  std::size_t label;
  std::size_t detectorOffsets;
};

Room RoomOf(const InstrumentDescription& instrument) {
  if (instrument.KeepsTexts()) {
    return {kMaxTurrets, 1, kMaxGratings, 31, ParameterMemory::kLongestText, 4};
  }
  const StructureVersion version = instrument.structure;
  constexpr std::size_t kGratings = 3;
  const bool isLarge = version.major >= 3;
  return {version.AtLeast(1, 3) ? std::size_t{kMaxTurrets} : 1,
          version.AtLeast(1, 2) ? 1 : kGratings,
          kGratings,
          isLarge ? std::size_t{6} : 4,
          10,
          isLarge ? std::size_t{4} : 2};
}

Grating ReadGrating(JsonSection section, Grating grating, const Room& room) {
  section.Read("lines", grating.lines, 1.0, 10000.0);
  section.Read("blaze", grating.blaze, room.blaze, kSeparators);
  section.Read("start", grating.start, -kAnyInt, kAnyInt);
  section.Read("offset", grating.offset, -kAnyInt, kAnyInt);
  section.Finish();
  return grating;
}

std::vector<Turret> ReadTurrets(JsonSection& section, const InstrumentDescription& defaults, int totalSteps) {
  const Room room = RoomOf(defaults);
  const std::vector<Grating>& usual = defaults.record.turrets[0].gratings;
  const auto standard = [&](std::size_t index) {
    Grating grating = usual[std::min(index, usual.size() - 1)];
    grating.start = static_cast<int>(index) * (totalSteps / static_cast<int>(room.mostGratings));
    return grating;
  };
  std::vector<Turret> turrets;
  for (JsonSection& entry : section.Sections("turrets", 1, room.turrets)) {
    Turret turret;
    for (JsonSection& grating : entry.Sections("gratings", room.leastGratings, room.mostGratings)) {
      turret.gratings.push_back(ReadGrating(std::move(grating), standard(turret.gratings.size()), room));
    }
    if (turret.gratings.empty()) {
      entry.Fail("gratings", "is missing");
    }
    entry.Finish();
    turrets.push_back(std::move(turret));
  }
  if (turrets.empty()) {
    turrets = {Turret{}};
    for (std::size_t g = 0; g < usual.size(); ++g) {
      turrets[0].gratings.push_back(standard(g));
    }
  }
  return turrets;
}

void ReadRecord(JsonSection section, InstrumentDescription& instrument) {
  const Room room = RoomOf(instrument);
  Record& record = instrument.record;
  section.Read("id", record.id, 20);
  section.Read("serial", record.serial, 10);
  section.Read("manufactured", record.manufactured, 11);
  section.Read("modified", record.modified, 11);
  ReadOptics(section, record);
  if (auto sine = section.Section("sine")) {
    sine->Read("amplitude", record.sineAmplitude, -1.0e6, 1.0e6);
    sine->Read("phase", record.sinePhase, -1.0e3, 1.0e3);
    sine->Read("frequency", record.sineFrequency, -1.0e9, 1.0e9);
    sine->Finish();
    if (2.0 * std::numbers::pi * std::abs(static_cast<double>(record.sineAmplitude)) >=
            std::abs(static_cast<double>(record.sineFrequency)) &&
        record.sineAmplitude != 0.0F) {
      section.Fail("sine", "turns the drive back: 2 pi amplitude must be less than the frequency");
    }
  }
  section.Read("waveToStepsEnabled", record.waveToStepsEnabled);
  section.Read("currentWavelength", record.currentWavelength, 0.0, kAnyFloat);
  ReadNumbers(section, "detectorOffsets", record.detectorOffsets, room.detectorOffsets);
  ReadTexts(section, "filters", record.filters, room.label);
  const bool isListed = !instrument.KeepsTexts() || section.Take("activeTurret") == nullptr ||
                        *section.Take("activeTurret") != kUnlistedTurret;
  if (isListed) {
    section.Read("activeTurret", instrument.turretNumber, 1, static_cast<int>(record.turrets.size()));
    record.activeTurret = instrument.turretNumber - 1;
  } else {
    instrument.turretNumber = kUnlistedTurret;
  }
  section.Finish();
}

Drive ReadDrive(JsonSection section) {
  Drive drive;
  section.Read("totalSteps", drive.totalSteps, 1000, 1000000000);
  section.Read("microsteps", drive.microsteps, 1, 65536);
  ReadNumbers(section, "zeroErrors", drive.zeroErrors, drive.zeroErrors.size());
  section.Finish();
  return drive;
}

void ReadSlits(JsonSection section, Parts& parts) {
  constexpr std::array<const char*, kSlits> kTags{"SI1", "SI2", "SO1", "SO2"};
  for (std::size_t i = 0; i < kSlits; ++i) {
    Slit& slit = parts.slits[i];
    slit = Slit{};
    if (auto entry = section.Section(kTags[i])) {
      slit.fitted = true;
      entry->Read("mode", slit.mode, 35, kSeparators);
      entry->Read("width", slit.width, 10, 24000);
      entry->Finish();
    }
  }
  section.Finish();
}

void ReadParts(JsonSection section, InstrumentDescription& instrument) {
  Parts& parts = instrument.parts;
  if (auto slits = section.Section("slits")) {
    ReadSlits(std::move(*slits), parts);
  }
  section.Read("filterWheel", parts.filterWheel);
  if (const json* const focus = section.Take("focusMirror")) {
    parts.focusMirror = !focus->is_null();
    if (parts.focusMirror) {
      JsonSection entry(*focus, section.File(), section.PlaceOf("focusMirror"));
      entry.Read("totalSteps", parts.focusTotalSteps, 1, 1000000000);
      entry.Finish();
    }
  }
  section.Read("entranceFlipper", parts.entranceFlipper);
  section.Read("exitFlipper", parts.exitFlipper);
  section.Read("accessoryLines", parts.accessoryLines);
  if (instrument.KeepsTexts() && (parts.entranceFlipper || parts.accessoryLines)) {
    section.Fail(parts.entranceFlipper ? "entranceFlipper" : "accessoryLines", "is nothing that an SX can have");
  }
  section.Read("portInputs", parts.portInputs, 0, 15);
  if (const json* const others = section.Array("others", 0, 64)) {
    for (const json& name : *others) {
      if (!name.is_string() || name.get_ref<const std::string&>().empty()) {
        section.Fail("others", "must hold names");
      }
      parts.others.push_back(name.get<std::string>());
    }
  }
  section.Finish();
}

void ReadMotion(JsonSection& instrument, MotionTimes& times) {
  const json* const value = instrument.Take("motion");
  if (value == nullptr) {
    return;
  }
  if (value->is_number()) {
    double all = 0;
    instrument.Read("motion", all, 0.0, kLongestMotion);
    times = {all, all, all, all, all, all, all};
    return;
  }
  JsonSection section(*value, instrument.File(), instrument.PlaceOf("motion"));
  section.Read("wavelength", times.wavelength, 0.0, kLongestMotion);
  section.Read("grating", times.grating, 0.0, kLongestMotion);
  section.Read("home", times.home, 0.0, kLongestMotion);
  section.Read("filter", times.filter, 0.0, kLongestMotion);
  section.Read("slit", times.slit, 0.0, kLongestMotion);
  section.Read("focus", times.focus, 0.0, kLongestMotion);
  section.Read("flipper", times.flipper, 0.0, kLongestMotion);
  section.Finish();
}

void ReadMemory(JsonSection section, InstrumentDescription& instrument) {
  int fill = instrument.memoryFill;
  section.Read("fill", fill, 0, 255);
  instrument.memoryFill = static_cast<unsigned char>(fill);
  for (JsonSection& entry : section.Sections("patches", 0, EepromImage::kSize)) {
    MemoryPatch patch;
    entry.Read("address", patch.address, 1, EepromImage::kSize);
    if (const json* const bytes = entry.Array("bytes", 1, EepromImage::kSize)) {
      for (const json& byte : *bytes) {
        if (!byte.is_number_unsigned() || byte.get<std::uint64_t>() > 255) {
          entry.Fail("bytes", "must hold numbers from 0 to 255");
        }
        patch.bytes.push_back(byte.get<unsigned char>());
      }
    }
    entry.Finish();
    instrument.memoryPatches.push_back(std::move(patch));
  }
  for (JsonSection& entry : section.Sections("texts", 0, ParameterMemory::kSize)) {
    ParameterPatch patch;
    entry.Read("number", patch.number, 0, ParameterMemory::kSize - 1);
    entry.Read("text", patch.text, ParameterMemory::kLongestText);
    entry.Finish();
    instrument.parameterPatches.push_back(std::move(patch));
  }
  section.Finish();
}

/// Where the instrument stands must be a place that it can reach.
void CheckStand(const JsonSection& section, const InstrumentDescription& instrument) {
  const Record& record = instrument.record;
  const std::vector<Grating>& gratings = record.turrets[static_cast<std::size_t>(record.activeTurret)].gratings;
  if (instrument.grating > static_cast<int>(gratings.size())) {
    section.Fail("grating", "must be one of the " + std::to_string(gratings.size()) + " on the active turret");
  }
  const OpticalModel model(record, gratings[static_cast<std::size_t>(instrument.grating) - 1].lines,
                           instrument.drive.totalSteps, instrument.structure.major >= 2);
  if (!model.IsMonotonic()) {
    section.Fail("record", "has coefficients that do not rise over the drive's range");
  }
  if (!model.StepsFromZero(instrument.wavelength)) {
    section.Fail("wavelength", "is beyond what the grating reaches");
  }
}

}  // namespace

std::string AbsoluteFile(const std::string& name, const std::filesystem::path& directory) {
  return name.empty() ? name : std::filesystem::absolute(directory / name).string();
}

InstrumentDescription ReadInstrument(JsonSection section, const std::filesystem::path& directory) {
  std::string model = "LX";
  section.Read("model", model, 8);
  if (model != "LX" && model != "MX" && model != "SX") {
    section.Fail("model", R"(must be "LX", "MX" or "SX")");
  }
  InstrumentDescription instrument = DefaultInstrument(model, ReadStructureVersion(section));
  section.Read("maker", instrument.maker, 64, kSeparators);
  section.Read("designation", instrument.designation, 64, kSeparators);
  section.Read("serial", instrument.serial, 49, kSeparators);
  section.Read("board", instrument.board, 64, kSeparators);
  section.Read("firmware", instrument.firmware, 16, kSeparators);
  instrument.record.serial = instrument.serial.substr(0, 10);
  section.Read("wavelength", instrument.wavelength, 0.0, kAnyFloat);
  instrument.record.currentWavelength = instrument.wavelength;
  section.Read("grating", instrument.grating, 1, kMaxGratings);
  if (auto drive = section.Section("drive")) {
    instrument.drive = ReadDrive(std::move(*drive));
  }
  instrument.record.turrets = ReadTurrets(section, instrument, instrument.drive.totalSteps);
  if (auto record = section.Section("record")) {
    ReadRecord(std::move(*record), instrument);
  }
  if (auto parts = section.Section("parts")) {
    ReadParts(std::move(*parts), instrument);
  }
  ReadMotion(section, instrument.motion);
  section.Read("latency", instrument.latency, 0.0, kLongestMotion);
  std::string state;
  section.Read("state", state, 4096);
  instrument.stateFile = AbsoluteFile(state, directory);
  if (auto memory = section.Section("memory")) {
    ReadMemory(std::move(*memory), instrument);
  }
  for (JsonSection& fault : section.Sections("faults", 0, 1000)) {
    instrument.faults.push_back(ReadReplyFault(std::move(fault)));
  }
  section.Finish();
  CheckStand(section, instrument);
  return instrument;
}

void ReadOptics(JsonSection& section, Record& record) {
  section.Read("focalLength", record.focalLength, 0.001, 100.0);
  section.Read("angularDeviation", record.angularDeviation, -89.0, 89.0);
  section.Read("tilt", record.tilt, -89.0, 89.0);
  // The exact polynomial of a drive that turns with the grating, unless the file has another.
  record.coefficients = DefaultCoefficients(record.angularDeviation);
  ReadNumbers(section, "coefficients", record.coefficients, record.coefficients.size());
}

ReplyFault ReadReplyFault(JsonSection section) {
  ReplyFault fault;
  section.Read("command", fault.command, 64);
  section.Read("occurrence", fault.occurrence, 1, kAnyInt);
  section.Read("repeat", fault.fromThenOn);
  int effects = 0;
  const auto text = [&](const char* key, ReplyFault::Kind kind) {
    if (section.Take(key) != nullptr) {
      section.ReadRaw(key, fault.text);
      fault.kind = kind;
      ++effects;
    }
  };
  text("error", ReplyFault::Kind::kError);
  text("reply", ReplyFault::Kind::kReply);
  text("stale", ReplyFault::Kind::kStale);
  bool silence = false;
  section.Read("silence", silence);
  if (silence) {
    fault.kind = ReplyFault::Kind::kSilence;
    ++effects;
  }
  if (auto split = section.Section("split")) {
    int at = 1;
    split->Read("at", at, 0, kAnyInt);
    split->Read("gap", fault.milliseconds, 0.0, kLongestMotion);
    split->Finish();
    fault.splitAt = static_cast<std::size_t>(at);
    fault.kind = ReplyFault::Kind::kSplit;
    ++effects;
  }
  if (section.Take("slow") != nullptr) {
    section.Read("slow", fault.milliseconds, 0.0, kLongestMotion);
    fault.kind = ReplyFault::Kind::kSlow;
    ++effects;
  }
  section.Finish();
  if (effects != 1) {
    section.Fail("error", "or one of reply, stale, silence, split, slow must be given, and only one");
  }
  return fault;
}

std::vector<TransportFault> ReadTransportFaults(JsonSection& section, const char* key) {
  std::vector<TransportFault> faults;
  for (JsonSection& entry : section.Sections(key, 0, 1000)) {
    TransportFault fault;
    fault.operation = 1;
    entry.Read("operation", fault.operation, 1);
    entry.Read("repeat", fault.fromThenOn);
    int status = static_cast<int>(fault.status);
    entry.Read("status", status, 0, kAnyInt);
    fault.status = static_cast<unsigned int>(status);
    entry.Finish();
    faults.push_back(fault);
  }
  return faults;
}

}  // namespace corvane::sim
