#include <array>
#include <initializer_list>
#include <iostream>
#include <nlohmann/json.hpp>
#include <utility>

#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "Properties.h"
#include "Session.h"
#include "model/FixedDecimals.h"

namespace {

using corvane::sim::Fixed;

constexpr std::array<const char*, 4> kSlits{"entrance", "entrance side", "exit", "exit side"};

/// What a property of the instrument is; null when it cannot be read.
Json Value(const char* property, int device, int index = 0) {
  try {
    return ReadProperty(*FindProperty(property), device, index);
  } catch (const Failure&) {
    return nullptr;
  }
}

/// {"fitted": false}, or with it what the names read: pairs of JSON key and property.
Json Part(int device, int index, std::initializer_list<std::pair<const char*, const char*>> names) {
  const bool fitted = IsPresent(*FindProperty(names.begin()->second), device, index);
  Json part = {{"fitted", fitted}};
  for (const auto& [key, property] : names) {
    if (fitted) {
      part[key] = Value(property, device, index);
    }
  }
  return part;
}

/// All values of a property with an index.
Json List(const char* property, int device) {
  Json list = Json::array();
  for (int index = 1; index <= Indices(*FindProperty(property), device); ++index) {
    list.push_back(Value(property, device, index));
  }
  return list;
}

Json Parts(int device) {
  Json slits = Json::array();
  for (int slit = 1; slit <= static_cast<int>(kSlits.size()); ++slit) {
    Json entry = {{"slit", slit}, {"place", kSlits[static_cast<std::size_t>(slit) - 1]}};
    entry.update(Part(device, slit, {{"width", "slit"}}));
    slits.push_back(entry);
  }
  Json filter = Part(device, 0, {{"filter", "filter"}});
  if (filter["fitted"].get<bool>()) {
    filter["labels"] = List("filter-label", device);
  }
  Json accessory = {{"fitted", IsPresent(*FindProperty("accessory"), device, 1)}};
  if (accessory["fitted"].get<bool>()) {
    accessory["lines"] = List("accessory", device);
  }
  return {{"slits", slits},
          {"entrancePort", Part(device, 0, {{"port", "entrance-port"}})},
          {"exitPort", Part(device, 0, {{"port", "exit-port"}})},
          {"filter", filter},
          {"focus", Part(device, 0, {{"position", "focus"}, {"travel", "focus-travel"}})},
          {"shutter", Part(device, 0, {{"mode", "shutter"}})},
          {"accessory", accessory}};
}

Json Gratings(int device) {
  int count = 0;
  Check(CorvaneGetNumberGratings(device, &count), "reading the number of gratings");
  Json gratings = Json::array();
  for (int grating = 1; grating <= count; ++grating) {
    float lines = 0;
    float low = 0;
    float high = 0;
    int home = 0;
    int offset = 0;
    std::array<char, CORVANE_BLAZE_LENGTH> blaze{};
    const std::string which = "grating " + std::to_string(grating);
    Check(CorvaneGetGratingInfo(device, grating, &lines, blaze.data(), &home, &offset), "reading " + which);
    Check(CorvaneGetWavelengthLimits(device, grating, &low, &high), "reading the limits of " + which);
    gratings.push_back({{"grating", grating},
                        {"lines", Plain(lines)},
                        {"blaze", std::string(blaze.data())},
                        {"from", Plain(low)},
                        {"to", Plain(high)},
                        {"home", home},
                        {"offset", offset}});
  }
  return gratings;
}

Json Collect(int device) {
  float wavelength = 0;
  int grating = 0;
  int turret = 0;
  Check(CorvaneGetWavelength(device, &wavelength), "reading the wavelength");
  Check(CorvaneGetGrating(device, &grating), "reading the grating");
  Check(CorvaneGetTurret(device, &turret), "reading the turret");
  float focalLength = 0;
  float angularDeviation = 0;
  float tilt = 0;
  Check(CorvaneEepromGetOpticalParams(device, &focalLength, &angularDeviation, &tilt), "reading the optics");
  // Without a camera nobody knows the detector until a program sets it.
  Json detector;
  int pixels = 0;
  float pixelWidth = 0;
  if (CorvaneGetNumberPixels(device, &pixels) == CORVANE_SUCCESS && pixels > 0 &&
      CorvaneGetPixelWidth(device, &pixelWidth) == CORVANE_SUCCESS) {
    detector = {{"pixels", pixels}, {"pixelWidth", Plain(pixelWidth)}};
  }
  Json info = {{"device", device},
               {"serial", SerialNumber(device)},
               {"wavelength", Plain(wavelength)},
               {"zeroOrder", Value("zero-order", device)},
               {"grating", grating},
               {"turret", turret},
               {"gratings", Gratings(device)},
               {"detectorOffset", Value("detector-offset", device)},
               {"detectorOffsetSide", Value("detector-offset-side", device)},
               {"focalLength", Plain(focalLength)},
               {"angularDeviation", Plain(angularDeviation)},
               {"tilt", Plain(tilt)},
               {"detector", detector}};
  info.update(Parts(device));
  return info;
}

/// "not fitted", or what `text` makes of the part.
template <typename Text>
void PrintPart(const std::string& name, const Json& part, Text text) {
  PrintField(name, part["fitted"].get<bool>() ? text(part) : "not fitted");
}

std::string Readable(const Json& value, const std::string& unit = "") {
  return value.is_null() ? "cannot be read" : PlainText(value) + unit;
}

std::string PortText(const Json& part) {
  return part["port"].is_null() ? Readable(part["port"]) : part["port"] == 0 ? "0, direct" : "1, side";
}

std::string FilterText(const Json& part) {
  const std::size_t filter = part["filter"].is_null() ? 0 : part["filter"].get<std::size_t>();
  const Json& labels = part["labels"];
  return Readable(part["filter"]) +
         (filter >= 1 && filter <= labels.size() ? ", " + Readable(labels[filter - 1]) : std::string());
}

/// "1 first, 2 second, ..."
std::string Numbered(const Json& list) {
  std::string text;
  int number = 0;
  for (const Json& value : list) {
    text += (text.empty() ? "" : ", ") + std::to_string(++number) + " " + Readable(value);
  }
  return text;
}

void PrintParts(const Json& info) {
  for (const Json& slit : info["slits"]) {
    PrintPart("slit " + slit["slit"].dump() + ", " + slit["place"].get<std::string>(), slit,
              [](const Json& part) { return Readable(part["width"], " um"); });
  }
  PrintPart("entrance port", info["entrancePort"], PortText);
  PrintPart("exit port", info["exitPort"], PortText);
  PrintPart("filter", info["filter"], FilterText);
  PrintPart("filter labels", info["filter"], [](const Json& part) { return Numbered(part["labels"]); });
  PrintPart("focus mirror", info["focus"],
            [](const Json& part) { return Readable(part["position"]) + " of " + Readable(part["travel"], " steps"); });
  PrintPart("shutter", info["shutter"], [](const Json& part) { return "mode " + Readable(part["mode"]); });
  PrintPart("accessory lines", info["accessory"], [](const Json& part) { return Numbered(part["lines"]); });
}

void PrintText(const Json& info) {
  PrintField("instrument", info["serial"].get<std::string>() + " (device " + info["device"].dump() + ")");
  PrintField("wavelength", info["wavelength"].dump() + " nm, grating " + info["grating"].dump() + ", turret " +
                               info["turret"].dump());
  PrintField("focal length", info["focalLength"].dump() + " m");
  PrintField("angular deviation", info["angularDeviation"].dump() + " degrees");
  PrintField("focal-plane tilt", info["tilt"].dump() + " degrees");
  const Json& detector = info["detector"];
  PrintField("detector", detector.is_null()
                             ? "not known; give calibrate --pixels and --pixel-width"
                             : detector["pixels"].dump() + " pixels of " + detector["pixelWidth"].dump() + " um");
  PrintField("detector offset", Readable(info["detectorOffset"], " steps") + ", side exit " +
                                    Readable(info["detectorOffsetSide"], " steps"));
  PrintParts(info);
  std::cout << '\n';
  std::vector<std::vector<std::string>> rows{{"grating", "lines/mm", "blaze", "from nm", "to nm", "home", "offset"}};
  for (const Json& grating : info["gratings"]) {
    rows.push_back({grating["grating"].dump(), grating["lines"].dump(), grating["blaze"].get<std::string>(),
                    Fixed(grating["from"].get<double>(), 1), Fixed(grating["to"].get<double>(), 1),
                    grating["home"].dump(), grating["offset"].dump()});
  }
  PrintTable(rows);
}

}  // namespace

void RunInfo(const Options& options) {
  const Session session(options);
  const Json info = Collect(session.Device());
  if (session.Json()) {
    Print(info);
  } else {
    PrintText(info);
  }
}
