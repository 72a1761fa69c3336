#include "scenario/Scenario.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <numbers>

#include "model/StrictJson.h"
#include "scenario/InstrumentReader.h"
#include "scenario/JsonSection.h"
#include "scenario/LegacyReader.h"

namespace corvane::sim {
namespace {

using nlohmann::json;

constexpr std::size_t kMaxUsb = 16;
constexpr Bounds kPixels{1, 1.0e9};
constexpr Bounds kMicrometres{0.01, 1.0e6};

constexpr SectionKey<UsbAttachment> kBridgeKeys[] = {
    {"serial", &UsbAttachment::bridgeSerial, Text(15)},
    {"description", &UsbAttachment::bridgeDescription, Text(63)},
};

constexpr SectionKey<DetectorGeometry> kDetectorKeys[] = {
    {"pixels", &DetectorGeometry::pixels, kPixels},
    {"rows", &DetectorGeometry::rows, kPixels},
    {"pixelWidth", &DetectorGeometry::pixelWidth, kMicrometres},
    {"pixelHeight", &DetectorGeometry::pixelHeight, kMicrometres},
};

json ParseJson(std::string_view text, const std::string& name) {
  try {
    return ParseStrictly(text, JsonComments::kAllowed);
  } catch (const std::exception& problem) {
    throw ScenarioError(name + ": " + problem.what());
  }
}

/// "0x136E" or a plain number.
unsigned int ReadUsbId(JsonSection& section, const char* key, unsigned int value) {
  const json* const entry = section.Value(key);
  if (entry == nullptr) {
    return value;
  }
  if (entry->is_number_unsigned() && entry->get<std::uint64_t>() <= 0xFFFF) {
    return entry->get<unsigned int>();
  }
  if (entry->is_string()) {
    const auto& text = entry->get_ref<const std::string&>();
    const char* const end = text.data() + text.size();
    if (text.starts_with("0x") && text.size() > 2) {
      const auto [rest, error] = std::from_chars(text.data() + 2, end, value, 16);
      if (error == std::errc{} && rest == end && value <= 0xFFFF) {
        return value;
      }
    }
  }
  section.Fail(key, R"(must be a USB identifier, for example "0x136E")");
}

UsbAttachment ReadUsb(JsonSection section, const std::filesystem::path& directory) {
  UsbAttachment usb;
  if (auto instrument = section.Section("instrument")) {
    usb.instrument = ReadInstrument(std::move(*instrument), directory);
  } else {
    usb.instrument = DefaultInstrument();
  }
  usb.vendorId = ReadUsbId(section, "vendorId", usb.vendorId);
  usb.productId = ReadUsbId(section, "productId", usb.productId);
  usb.bridgeSerial = usb.instrument.serial;
  ReadKeys(section, kBridgeKeys, usb);
  usb.transportFaults = ReadTransportFaults(section, "transportFaults");
  section.Finish();
  return usb;
}

std::optional<DetectorGeometry> ReadDetector(JsonSection& scenario) {
  const json* const value = scenario.Value("detector");
  DetectorGeometry detector;
  if (value == nullptr) {
    return detector;
  }
  if (value->is_null()) {
    return std::nullopt;
  }
  ReadOnlyKeys(JsonSection(*value, scenario.File(), "detector"), kDetectorKeys, detector);
  return detector;
}

}  // namespace

std::array<float, 5> DefaultCoefficients(float angularDeviation) {
  const double radians = static_cast<double>(angularDeviation) * std::numbers::pi / 180.0;
  return {0.0F, 0.0F, 0.0F, static_cast<float>(static_cast<double>(kReferenceLines) / (2.0e6 * std::cos(radians))),
          0.0F};
}

InstrumentDescription DefaultInstrument(std::string_view model, StructureVersion structure) {
  InstrumentDescription instrument;
  instrument.model = model;
  instrument.designation = "CV-" + std::string(model);
  instrument.structure = structure;
  instrument.parts.slits[kSlitSI1].fitted = true;
  instrument.parts.slits[kSlitSO1].fitted = true;
  const int third = instrument.drive.totalSteps / 3;
  if (instrument.KeepsTexts()) {
    instrument.parts.entranceFlipper = false;
    instrument.parts.accessoryLines = false;
  }
  Turret turret;
  if (structure.AtLeast(1, 1)) {
    turret.gratings = {{1200.0F, "500", 0, 0}, {600.0F, "750", third, 0}, {150.0F, "800", 2 * third, 0}};
  } else {
    // A record of this age holds no lines and blaze texts; hosts assume these.
    turret.gratings = {{100.0F, "300", 0, 0}, {100.0F, "300", third, 0}, {100.0F, "300", 2 * third, 0}};
  }
  instrument.record.turrets = {turret};
  instrument.record.coefficients = DefaultCoefficients(instrument.record.angularDeviation);
  return instrument;
}

Scenario DefaultScenario() {
  Scenario scenario;
  scenario.i2c = DefaultInstrument();
  scenario.detector = DetectorGeometry{};
  return scenario;
}

Scenario ParseScenario(std::string_view text, const std::string& name, const std::filesystem::path& directory) {
  const json root = ParseJson(text, name);
  JsonSection section(root, name, "");
  Scenario scenario;
  if (auto i2c = section.Section("i2c")) {
    scenario.i2c = ReadInstrument(std::move(*i2c), directory);
  }
  if (auto legacy = section.Section("legacy")) {
    scenario.legacy = ReadLegacy(std::move(*legacy));
  }
  for (JsonSection& usb : section.Sections("usb", 0, kMaxUsb)) {
    scenario.usb.push_back(ReadUsb(std::move(usb), directory));
  }
  scenario.detector = ReadDetector(section);
  scenario.transportFaults = ReadTransportFaults(section, "transportFaults");
  std::string log;
  section.Read("log", log, Text(4096));
  scenario.logFile = AbsoluteFile(log, directory);
  section.Read("logTransfers", scenario.logTransfers);
  section.Finish();
  return scenario;
}

Scenario LoadScenario(const std::filesystem::path& directory) {
  if (directory.empty()) {
    return DefaultScenario();
  }
  if (!std::filesystem::is_directory(directory)) {
    throw ScenarioError(directory.string() + ": no such directory");
  }
  const std::filesystem::path path = directory / kScenarioFileName;
  if (!std::filesystem::exists(path)) {
    return DefaultScenario();
  }
  std::ifstream file(path);
  if (!file) {
    throw ScenarioError(path.string() + ": cannot be read");
  }
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return ParseScenario(text, path.string(), directory);
}

ReplyFault ParseReplyFault(std::string_view text) {
  const json root = ParseJson(text, "reply fault");
  return ReadReplyFault(JsonSection(root, "reply fault", ""));
}

}  // namespace corvane::sim
