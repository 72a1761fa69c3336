#include <array>
#include <iostream>

#include "Commands.h"
#include "Output.h"
#include "Session.h"

namespace {

struct Part {
  const char* name;
  unsigned int (*isPresent)(int device, int* present);
};

template <unsigned int (*Function)(int, int, int*), int Index>
unsigned int OfIndex(int device, int* present) {
  return Function(device, Index, present);
}

constexpr Part kParts[] = {
    {"entrance slit", OfIndex<CorvaneAutoSlitIsPresent, 1>},
    {"entrance side slit", OfIndex<CorvaneAutoSlitIsPresent, 2>},
    {"exit slit", OfIndex<CorvaneAutoSlitIsPresent, 3>},
    {"exit side slit", OfIndex<CorvaneAutoSlitIsPresent, 4>},
    {"entrance flipper", OfIndex<CorvaneFlipperMirrorIsPresent, 1>},
    {"exit flipper", OfIndex<CorvaneFlipperMirrorIsPresent, 2>},
    {"filter wheel", CorvaneFilterIsPresent},
    {"focus mirror", CorvaneFocusMirrorIsPresent},
    {"shutter", CorvaneShutterIsPresent},
    {"accessory lines", CorvaneAccessoryIsPresent},
};

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
  Json parts = Json::object();
  for (const Part& part : kParts) {
    int present = 0;
    parts[part.name] = part.isPresent(device, &present) == CORVANE_SUCCESS && present != 0;
  }
  // Without a camera nobody knows the detector until a program sets it.
  Json detector;
  int pixels = 0;
  float pixelWidth = 0;
  if (CorvaneGetNumberPixels(device, &pixels) == CORVANE_SUCCESS && pixels > 0 &&
      CorvaneGetPixelWidth(device, &pixelWidth) == CORVANE_SUCCESS) {
    detector = {{"pixels", pixels}, {"pixelWidth", Plain(pixelWidth)}};
  }
  return {{"device", device},
          {"serial", SerialNumber(device)},
          {"wavelength", Plain(wavelength)},
          {"grating", grating},
          {"turret", turret},
          {"gratings", Gratings(device)},
          {"focalLength", Plain(focalLength)},
          {"angularDeviation", Plain(angularDeviation)},
          {"tilt", Plain(tilt)},
          {"detector", detector},
          {"parts", parts}};
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
  std::string fitted;
  for (const auto& part : info["parts"].items()) {
    if (part.value().get<bool>()) {
      fitted += (fitted.empty() ? "" : ", ") + part.key();
    }
  }
  PrintField("parts", fitted.empty() ? "none" : fitted);
  std::cout << '\n';
  std::vector<std::vector<std::string>> rows{{"grating", "lines/mm", "blaze", "from nm", "to nm", "home", "offset"}};
  for (const Json& grating : info["gratings"]) {
    rows.push_back({grating["grating"].dump(), grating["lines"].dump(), grating["blaze"].get<std::string>(),
                    Fixed(grating["from"].get<double>(), 1), Fixed(grating["to"].get<double>(), 1),
                    grating["home"].dump(), grating["offset"].dump()});
  }
  PrintTable(rows);
}

void RunInfo(const Options& options) {
  const Session session(options);
  const Json info = Collect(session.Device());
  if (session.Json()) {
    Print(info);
  } else {
    PrintText(info);
  }
}

}  // namespace

void AddInfoCommand(CLI::App& app, const Options& options) {
  app.add_subcommand("info", "Show an instrument: where it stands, its gratings, optics and parts")
      ->callback([&options] { RunInfo(options); });
}
