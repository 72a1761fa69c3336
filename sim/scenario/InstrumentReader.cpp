#include "scenario/InstrumentReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <numbers>
#include <string_view>

#include "controller/CommandSet.h"
#include "controller/InstrumentMemory.h"
#include "model/OpticalModel.h"
#include "scenario/Scenario.h"

namespace corvane::sim {
namespace {

using nlohmann::json;

constexpr double kAnyFloat = 3.0e38;
constexpr int kAnyInt = std::numeric_limits<int>::max();
/// Positions in motor steps. Two of them have a sum.
constexpr int kMostSteps = 1000000000;
/// Separators of the controller's replies.
constexpr const char* kSeparators = ",";
constexpr std::size_t kLongestInfo = 64;
constexpr std::size_t kLongestFileName = 4096;
constexpr std::size_t kMostFaults = 1000;
constexpr Bounds kByte{0, 255};
constexpr Bounds kTime{0, kLongestTime};

using Description = InstrumentDescription;

constexpr SectionKey<Description> kInstrumentKeys[] = {
    {"maker", &Description::maker, Text(kLongestInfo, kSeparators)},
    {"designation", &Description::designation, Text(kLongestInfo, kSeparators)},
    {"serial", &Description::serial, Text(kSerialLength, kSeparators)},
    {"board", &Description::board, Text(kLongestInfo, kSeparators)},
    {"wavelength", &Description::wavelength, {0, kAnyFloat}},
    {"grating", &Description::grating, Within(kGratingNumbers)},
    {"latency", &Description::latency, kTime},
};

constexpr SectionKey<Drive> kDriveKeys[] = {
    {"totalSteps", &Drive::totalSteps, {1000, kMostSteps}},
    {"microsteps", &Drive::microsteps, {1, 65536}},
};

constexpr SectionKey<Parts> kPartKeys[] = {
    {"filterWheel", &Parts::filterWheel},
    {"entranceFlipper", &Parts::entranceFlipper},
    {"exitFlipper", &Parts::exitFlipper},
    {"accessoryLines", &Parts::accessoryLines},
    {"portInputs", &Parts::portInputs, Within(kLinePatterns)},
};

constexpr SectionKey<Parts> kFocusKeys[] = {{"totalSteps", &Parts::focusTotalSteps, {1, kMostSteps}}};

constexpr SectionKey<MotionTimes> kMotionKeys[] = {
    {"wavelength", &MotionTimes::wavelength, kTime},
    {"grating", &MotionTimes::grating, kTime},
    {"home", &MotionTimes::home, kTime},
    {"filter", &MotionTimes::filter, kTime},
    {"slit", &MotionTimes::slit, kTime},
    {"focus", &MotionTimes::focus, kTime},
    {"flipper", &MotionTimes::flipper, kTime},
};

constexpr SectionKey<MemoryPatch> kPatchKeys[] = {{"address", &MemoryPatch::address, {1, EepromImage::kSize}}};

constexpr SectionKey<ParameterPatch> kTextKeys[] = {
    {"number", &ParameterPatch::number, {0, ParameterMemory::kSize - 1}},
    {"text", &ParameterPatch::text, Text(ParameterMemory::kLongestText)},
};

constexpr SectionKey<ReplyFault> kFaultKeys[] = {
    {"command", &ReplyFault::command, Text(kLongestInfo)},
    {"occurrence", &ReplyFault::occurrence, {1, kAnyInt}},
    {"repeat", &ReplyFault::fromThenOn},
};

constexpr SectionKey<ReplyFault> kSlowKeys[] = {{"slow", &ReplyFault::milliseconds, kTime}};
constexpr SectionKey<ReplyFault> kGapKeys[] = {{"gap", &ReplyFault::milliseconds, kTime}};

constexpr struct {
  const char* name;
  ReplyFault::Kind kind;
} kTextFaults[] = {
    {"error", ReplyFault::Kind::kError},
    {"reply", ReplyFault::Kind::kReply},
    {"stale", ReplyFault::Kind::kStale},
    {"value", ReplyFault::Kind::kValue},
};

constexpr struct {
  const char* name;
  ReplyFault::Kind kind;
} kPlainFaults[] = {
    {"silence", ReplyFault::Kind::kSilence},
    {"echo", ReplyFault::Kind::kEcho},
    {"previous", ReplyFault::Kind::kPrevious},
};

constexpr SectionKey<TransportFault> kTransportKeys[] = {
    {"operation", &TransportFault::operation, {1, 1.0e15}},
    {"repeat", &TransportFault::fromThenOn},
    {"status", &TransportFault::status, {0, kAnyInt}},
};

constexpr SectionKey<Record> kOpticsKeys[] = {
    {"focalLength", &Record::focalLength, {0.001, 100}},
    {"angularDeviation", &Record::angularDeviation, {-89, 89}},
    {"tilt", &Record::tilt, {-89, 89}},
};

/// Digits and nothing else; -1 for any other text.
int Digits(std::string_view text) {
  int number = -1;
  const char* const end = text.data() + text.size();
  const bool isDigits = text.find_first_not_of("0123456789") == std::string_view::npos;
  return isDigits && std::from_chars(text.data(), end, number).ec == std::errc{} ? number : -1;
}

/// A text "major.minor" with a major number in range.
StructureVersion ReadVersion(JsonSection& section, const char* key, std::string& text, Limits majors) {
  constexpr Limits kMinors{0, 99};
  section.Read(key, text, Text(5));
  const std::size_t point = std::min(text.find('.'), text.size());
  const StructureVersion version{Digits(text.substr(0, point)), Digits(text.substr(std::min(point + 1, text.size())))};
  if (!majors.Hold(version.major) || !kMinors.Hold(version.minor)) {
    section.Fail(key, "must be major.minor, from \"" + std::to_string(majors.least) + ".0\" to \"" +
                          std::to_string(majors.most) + "." + std::to_string(kMinors.most) + "\"");
  }
  return version;
}

/// What the record of an instrument has room for.
struct Room {
  std::size_t turrets = 0;
  std::size_t leastGratings = 0;
  std::size_t mostGratings = 0;
  Bounds blaze;
  Bounds label;
  std::size_t detectorOffsets = 0;
};

Room RoomOf(const InstrumentDescription& instrument) {
  if (instrument.KeepsTexts()) {
    return {kMaxTurrets, 1, kMaxGratings, Text(31, kSeparators), Text(ParameterMemory::kLongestText), 4};
  }
  const StructureVersion version = instrument.structure;
  constexpr std::size_t kGratings = EepromImage::kGratings;
  return {static_cast<std::size_t>(EepromImage::Turrets(version)),
          EepromImage::HasGratingCounts(version) ? 1 : kGratings,
          kGratings,
          Text(static_cast<std::size_t>(EepromImage::BlazeWidth(version)), kSeparators),
          Text(static_cast<std::size_t>(EepromImage::FilterLabelWidth(version))),
          static_cast<std::size_t>(EepromImage::DetectorOffsets(version))};
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
      const std::size_t index = turret.gratings.size();
      turret.gratings.push_back(ReadGrating(std::move(grating), standard(index), room.blaze, kMostSteps));
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

void ReadActiveTurret(JsonSection& section, InstrumentDescription& instrument) {
  const json* const value = section.Value("activeTurret");
  if (instrument.KeepsTexts() && value != nullptr && *value == kUnlistedTurret) {
    instrument.turretNumber = kUnlistedTurret;
    return;
  }
  Record& record = instrument.record;
  section.Read("activeTurret", instrument.turretNumber, {1, static_cast<double>(record.turrets.size())});
  record.activeTurret = instrument.turretNumber - 1;
}

void ReadRecord(JsonSection section, InstrumentDescription& instrument) {
  const Room room = RoomOf(instrument);
  Record& record = instrument.record;
  const auto field = [&](Field which) {
    return Text(static_cast<std::size_t>(EepromImage::SizeOf(which, instrument.structure)));
  };
  const SectionKey<Record> keys[] = {
      {"id", &Record::id, field(Field::kId)},
      {"serial", &Record::serial, field(Field::kSerial)},
      {"manufactured", &Record::manufactured, field(Field::kManufactured)},
      {"modified", &Record::modified, field(Field::kModified)},
      {"waveToStepsEnabled", &Record::waveToStepsEnabled},
      {"currentWavelength", &Record::currentWavelength, {0, kAnyFloat}},
  };
  ReadKeys(section, keys, record);
  ReadOptics(section, record);
  ReadSine(section, record, 1.0e6, {-1.0e9, 1.0e9});
  const auto offsets = std::span(record.detectorOffsets).first(room.detectorOffsets);
  section.ReadList("detectorOffsets", offsets, {-kMostSteps, kMostSteps});
  section.ReadList("filters", std::span<std::string>(record.filters), room.label);
  ReadActiveTurret(section, instrument);
  section.Finish();
}

Drive ReadDrive(JsonSection section) {
  Drive drive;
  ReadKeys(section, kDriveKeys, drive);
  section.ReadList("zeroErrors", std::span<int>(drive.zeroErrors), {-kMostSteps, kMostSteps});
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
      entry->Read("mode", slit.mode, Text(35, kSeparators));
      entry->Read("width", slit.width, Within(SlitWidths(slit.mode)));
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
  if (const json* const focus = section.Value("focusMirror")) {
    parts.focusMirror = !focus->is_null();
    if (parts.focusMirror) {
      ReadOnlyKeys(JsonSection(*focus, section.File(), section.PlaceOf("focusMirror")), kFocusKeys, parts);
    }
  }
  ReadKeys(section, kPartKeys, parts);
  if (instrument.KeepsTexts() && (parts.entranceFlipper || parts.accessoryLines)) {
    section.Fail(parts.entranceFlipper ? "entranceFlipper" : "accessoryLines", "is nothing that an SX can have");
  }
  parts.others.resize(64);
  parts.others.resize(section.ReadList("others", std::span(parts.others), {1, kLongestInfo, kSeparators}));
  section.Finish();
}

void ReadMotion(JsonSection& instrument, MotionTimes& times) {
  const json* const value = instrument.Value("motion");
  if (value == nullptr) {
    return;
  }
  if (value->is_number()) {
    double all = 0;
    instrument.Read("motion", all, kTime);
    times = {all, all, all, all, all, all, all};
    return;
  }
  ReadOnlyKeys(JsonSection(*value, instrument.File(), instrument.PlaceOf("motion")), kMotionKeys, times);
}

void ReadMemory(JsonSection section, InstrumentDescription& instrument) {
  section.Read("fill", instrument.memoryFill, kByte);
  if (section.Value(instrument.KeepsTexts() ? "patches" : "texts") != nullptr) {
    section.Fail(instrument.KeepsTexts() ? "patches" : "texts", "are not in the memory of this model");
  }
  for (JsonSection& entry : section.Sections("patches", 0, EepromImage::kSize)) {
    MemoryPatch patch;
    ReadKeys(entry, kPatchKeys, patch);
    patch.bytes = ReadBytes(entry, EepromImage::kSize - patch.address + 1);
    entry.Finish();
    instrument.memoryPatches.push_back(std::move(patch));
  }
  for (JsonSection& entry : section.Sections("texts", 0, ParameterMemory::kSize)) {
    ParameterPatch patch;
    ReadOnlyKeys(std::move(entry), kTextKeys, patch);
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

/// The fault that one of the keys makes; several or none are a mistake.
void ReadEffect(JsonSection& section, ReplyFault& fault) {
  int effects = 0;
  const auto is = [&](ReplyFault::Kind kind) {
    fault.kind = kind;
    ++effects;
  };
  for (const auto& [name, kind] : kTextFaults) {
    if (section.Value(name) != nullptr) {
      section.ReadRaw(name, fault.text);
      is(kind);
    }
  }
  for (const auto& [name, kind] : kPlainFaults) {
    bool wanted = false;
    section.Read(name, wanted);
    if (wanted) {
      is(kind);
    }
  }
  if (section.Value("cut") != nullptr) {
    int at = 0;
    section.Read("cut", at, {0, kAnyInt});
    fault.splitAt = static_cast<std::size_t>(at);
    is(ReplyFault::Kind::kCut);
  }
  if (auto split = section.Section("split")) {
    int at = 1;
    split->Read("at", at, {0, kAnyInt});
    fault.splitAt = static_cast<std::size_t>(at);
    ReadOnlyKeys(std::move(*split), kGapKeys, fault);
    is(ReplyFault::Kind::kSplit);
  }
  if (section.Value("slow") != nullptr) {
    ReadKeys(section, kSlowKeys, fault);
    is(ReplyFault::Kind::kSlow);
  }
  section.Finish();
  if (effects != 1) {
    section.Fail(
        "error",
        "or one of reply, value, echo, cut, previous, stale, silence, split, slow must be given, and only one");
  }
}

}  // namespace

std::string AbsoluteFile(const std::string& name, const std::filesystem::path& directory) {
  return name.empty() ? name : std::filesystem::absolute(directory / name).string();
}

InstrumentDescription ReadInstrument(JsonSection section, const std::filesystem::path& directory) {
  std::string model = "LX";
  section.Read("model", model, Text(8));
  if (model != "LX" && model != "MX" && model != "SX") {
    section.Fail("model", R"(must be "LX", "MX" or "SX")");
  }
  InstrumentDescription instrument = DefaultInstrument(model, ReadStructureVersion(section));
  ReadKeys(section, kInstrumentKeys, instrument);
  ReadVersion(section, "firmware", instrument.firmware, {0, 99});
  instrument.record.serial = instrument.serial;
  instrument.record.currentWavelength = instrument.wavelength;
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
  std::string state;
  section.Read("state", state, Text(kLongestFileName));
  instrument.stateFile = AbsoluteFile(state, directory);
  if (auto memory = section.Section("memory")) {
    ReadMemory(std::move(*memory), instrument);
  }
  for (JsonSection& fault : section.Sections("faults", 0, kMostFaults)) {
    instrument.faults.push_back(ReadReplyFault(std::move(fault)));
  }
  section.Finish();
  CheckStand(section, instrument);
  return instrument;
}

StructureVersion ReadStructureVersion(JsonSection& section) {
  std::string text = "3.0";
  return ReadVersion(section, "structureVersion", text, {1, 9});
}

void ReadOptics(JsonSection& section, Record& record) {
  ReadKeys(section, kOpticsKeys, record);
  // The exact polynomial of a drive that turns with the grating, unless the file has another.
  record.coefficients = DefaultCoefficients(record.angularDeviation);
  section.ReadList("coefficients", std::span<float>(record.coefficients), {-kAnyFloat, kAnyFloat});
}

void ReadSine(JsonSection& section, Record& record, double mostAmplitude, const Bounds& frequency) {
  const SectionKey<Record> keys[] = {
      {"amplitude", &Record::sineAmplitude, {-mostAmplitude, mostAmplitude}},
      {"phase", &Record::sinePhase, {-1.0e3, 1.0e3}},
      {"frequency", &Record::sineFrequency, frequency},
  };
  auto sine = section.Section("sine");
  if (!sine) {
    return;
  }
  ReadOnlyKeys(std::move(*sine), keys, record);
  if (2.0 * std::numbers::pi * std::abs(static_cast<double>(record.sineAmplitude)) >=
          std::abs(static_cast<double>(record.sineFrequency)) &&
      record.sineAmplitude != 0.0F) {
    section.Fail("sine", "turns the drive back: 2 pi amplitude must be less than the frequency");
  }
}

Grating ReadGrating(JsonSection section, Grating grating, const Bounds& blaze, int mostSteps) {
  const Bounds steps = Within({-mostSteps, mostSteps});
  const SectionKey<Grating> keys[] = {
      {"lines", &Grating::lines, {1, 10000}},
      {"blaze", &Grating::blaze, blaze},
      {"start", &Grating::start, steps},
      {"offset", &Grating::offset, steps},
  };
  ReadOnlyKeys(std::move(section), keys, grating);
  return grating;
}

std::vector<unsigned char> ReadBytes(JsonSection& section, int room) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(room));
  bytes.resize(section.ReadList("bytes", std::span(bytes), kByte));
  return bytes;
}

ReplyFault ReadReplyFault(JsonSection section) {
  ReplyFault fault;
  ReadKeys(section, kFaultKeys, fault);
  ReadEffect(section, fault);
  if (fault.command != "*" && !IsCommandWord(fault.command)) {
    section.Fail("command", R"(must be a word that controllers know ("MOVETO", the query "POSITION?"), or "*")");
  }
  if (fault.kind == ReplyFault::Kind::kError &&
      (fault.text.size() != 3 || !fault.text.starts_with('E') || Digits(fault.text.substr(1)) < 0)) {
    section.Fail("error", R"(must be an error word, from "E00" to "E99")");
  }
  return fault;
}

std::vector<TransportFault> ReadTransportFaults(JsonSection& section, const char* key) {
  std::vector<TransportFault> faults;
  for (JsonSection& entry : section.Sections(key, 0, kMostFaults)) {
    TransportFault fault;
    fault.operation = 1;
    ReadOnlyKeys(std::move(entry), kTransportKeys, fault);
    faults.push_back(fault);
  }
  return faults;
}

}  // namespace corvane::sim
