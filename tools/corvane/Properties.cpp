#include "Properties.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <nlohmann/json.hpp>
#include <vector>

#include "Advice.h"
#include "Failure.h"
#include "Session.h"

namespace {

constexpr int kFilters = 6;
// The flipper mirrors as the library counts them.
constexpr int kEntranceMirror = 1;
constexpr int kExitMirror = 2;

template <typename Number>
Number Parse(const std::string& value, const char* kind) {
  Number number{};
  const char* const first = value.data() + (value.starts_with('+') ? 1 : 0);
  const auto [end, error] = std::from_chars(first, value.data() + value.size(), number);
  if (error != std::errc{} || end != value.data() + value.size()) {
    throw Failure(ExitCode::kUsage, "\"" + value + "\" is not " + kind);
  }
  return number;
}

int Integer(const std::string& value) {
  return Parse<int>(value, "a whole number");
}
float Real(const std::string& value) {
  return Parse<float>(value, "a number");
}

int OnOff(const std::string& value) {
  if (value == "on" || value == "1") {
    return 1;
  }
  if (value == "off" || value == "0") {
    return 0;
  }
  throw Failure(ExitCode::kUsage, "\"" + value + "\" is neither on nor off");
}

// The shapes that the library's functions have; each gives the get, set or present of a property.

template <auto Function>
Json GetInt(int device, int /*index*/) {
  int value = 0;
  Check(Function(device, &value));
  return value;
}

template <auto Function>
Json GetFloat(int device, int /*index*/) {
  float value = 0;
  Check(Function(device, &value));
  return Plain(value);
}

template <auto Function>
Json GetBool(int device, int /*index*/) {
  int value = 0;
  Check(Function(device, &value));
  return value != 0;
}

template <auto Function>
Json GetIntOf(int device, int index) {
  int value = 0;
  Check(Function(device, index, &value));
  return value;
}

template <auto Function>
Json GetFloatOf(int device, int index) {
  float value = 0;
  Check(Function(device, index, &value));
  return Plain(value);
}

template <auto Function>
void SetInt(int device, int /*index*/, const std::string& value) {
  Check(Function(device, Integer(value)));
}

template <auto Function>
void SetFloat(int device, int /*index*/, const std::string& value) {
  Check(Function(device, Real(value)));
}

template <auto Function>
void SetIntOf(int device, int index, const std::string& value) {
  Check(Function(device, index, Integer(value)));
}

template <auto Function>
void SetFloatOf(int device, int index, const std::string& value) {
  Check(Function(device, index, Real(value)));
}

template <auto Function>
void Home(int device, int /*index*/) {
  Check(Function(device));
}

template <auto Function>
void HomeOf(int device, int index) {
  Check(Function(device, index));
}

template <auto Function>
bool Present(int device, int /*index*/) {
  int present = 0;
  return Function(device, &present) == CORVANE_SUCCESS && present != 0;
}

template <auto Function>
bool PresentOf(int device, int index) {
  int present = 0;
  return Function(device, index, &present) == CORVANE_SUCCESS && present != 0;
}

// Properties that are more than one call, or not by index of their own.

Json GetSerial(int device, int /*index*/) {
  return SerialNumber(device);
}

Json GetLimits(int device, int index) {
  float low = 0;
  float high = 0;
  Check(CorvaneGetWavelengthLimits(device, index, &low, &high));
  return {Plain(low), Plain(high)};
}

Json GetOptics(int device, int /*index*/) {
  float focalLength = 0;
  float angularDeviation = 0;
  float tilt = 0;
  Check(CorvaneEepromGetOpticalParams(device, &focalLength, &angularDeviation, &tilt));
  return {{"focalLength", Plain(focalLength)}, {"angularDeviation", Plain(angularDeviation)}, {"tilt", Plain(tilt)}};
}

template <int Flipper>
Json GetFlipperPort(int device, int /*index*/) {
  int port = 0;
  Check(CorvaneGetFlipperMirror(device, Flipper, &port));
  return port;
}

template <int Flipper>
void SetFlipperPort(int device, int /*index*/, const std::string& value) {
  Check(CorvaneSetFlipperMirror(device, Flipper, Integer(value)));
}

template <int Flipper>
bool FlipperPresent(int device, int /*index*/) {
  return PresentOf<CorvaneFlipperMirrorIsPresent>(device, Flipper);
}

template <int Flipper>
void FlipperHome(int device, int /*index*/) {
  Check(CorvaneFlipperMirrorReset(device, Flipper));
}

Json GetFilterLabel(int device, int index) {
  std::array<char, CORVANE_FILTER_INFO_LENGTH> label{};
  Check(CorvaneGetFilterInfo(device, index, label.data()));
  return std::string(label.data());
}

void SetFilterLabel(int device, int index, const std::string& value) {
  Check(CorvaneSetFilterInfo(device, index, value.c_str()));
}

bool SameText(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  });
}

/// A number, or a label that only one filter has.
void SetFilter(int device, int /*index*/, const std::string& value) {
  std::vector<int> labelled;
  std::string labels;
  for (int filter = 1; filter <= kFilters; ++filter) {
    const std::string label = GetFilterLabel(device, filter).get<std::string>();
    labels += (labels.empty() ? "" : ", ") + std::to_string(filter) + " \"" + label + "\"";
    if (value == std::to_string(filter)) {
      labelled = {filter};
      break;
    }
    if (SameText(value, label)) {
      labelled.push_back(filter);
    }
  }
  if (labelled.size() != 1) {
    throw Failure(ExitCode::kUsage,
                  (labelled.empty() ? "there is no filter \"" : "more than one filter is \"") + value + "\"",
                  "give a number or a label: " + labels);
  }
  Check(CorvaneSetFilter(device, labelled[0]));
}

bool FocusPresent(int device, int index) {
  return Present<CorvaneFocusMirrorIsPresent>(device, index);
}

/// The library moves by a distance, and must not be asked to without a focus mirror.
void SetFocus(int device, int index, const std::string& value) {
  const int target = Integer(value);
  if (!FocusPresent(device, index)) {
    throw Failure(ExitCode::kInstrument, "the instrument has no focus mirror");
  }
  int position = 0;
  int travel = 0;
  Check(CorvaneGetFocusMirror(device, &position));
  Check(CorvaneGetFocusMirrorMaxSteps(device, &travel));
  if (target < 0 || target > travel) {
    throw Failure(ExitCode::kUsage, "the focus mirror travels from 0 to " + std::to_string(travel));
  }
  Check(CorvaneSetFocusMirror(device, target - position));
}

Json GetAccessory(int device, int index) {
  int state = 0;
  Check(CorvaneGetAccessoryState(device, index, &state));
  return state != 0;
}

void SetAccessory(int device, int index, const std::string& value) {
  Check(CorvaneSetAccessory(device, index, OnOff(value)));
}

constexpr Property kProperties[] = {
    {"serial", nullptr, 0, "serial number", GetSerial, nullptr, nullptr},
    {"wavelength", nullptr, 0, "centre wavelength in nm, within the limits that info shows",
     GetFloat<CorvaneGetWavelength>, SetFloat<CorvaneSetWavelength>, Present<CorvaneWavelengthIsPresent>,
     Home<CorvaneWavelengthReset>},
    {"zero-order", nullptr, 0, "whether it stands at zero order", GetBool<CorvaneAtZeroOrder>, nullptr,
     Present<CorvaneWavelengthIsPresent>},
    {"limits", "grating", 0, "lowest and highest wavelength in nm", GetLimits, nullptr,
     Present<CorvaneWavelengthIsPresent>},
    {"grating", nullptr, 0, "grating in use, from 1", GetInt<CorvaneGetGrating>, SetInt<CorvaneSetGrating>,
     Present<CorvaneGratingIsPresent>, Home<CorvaneWavelengthReset>},
    {"gratings", nullptr, 0, "number of gratings on the turret", GetInt<CorvaneGetNumberGratings>, nullptr,
     Present<CorvaneGratingIsPresent>},
    {"turret", nullptr, 0, "mounted turret, 1 to 3", GetInt<CorvaneGetTurret>, SetInt<CorvaneSetTurret>,
     Present<CorvaneGratingIsPresent>},
    {"grating-offset", "grating", 0, "offset in steps, -20000 to 20000", GetIntOf<CorvaneGetGratingOffset>,
     SetIntOf<CorvaneSetGratingOffset>, Present<CorvaneGratingIsPresent>},
    {"detector-offset", nullptr, 0, "offset for the direct ports in steps, -240000 to 240000",
     GetInt<CorvaneGetDetectorOffset>, SetInt<CorvaneSetDetectorOffset>, Present<CorvaneGratingIsPresent>},
    {"detector-offset-side", nullptr, 0, "offset for the side exit in steps, -240000 to 240000",
     GetInt<CorvaneGetDetectorOffsetPort2>, SetInt<CorvaneSetDetectorOffsetPort2>, Present<CorvaneGratingIsPresent>},
    {"optics", nullptr, 0, "focal length in m, angular deviation and tilt in degrees", GetOptics, nullptr, nullptr},
    {"slit", "slit", 4,
     "width in um, 10 to 2500 (24000 on wide slits); 1 entrance, 2 entrance side, 3 exit, 4 exit side",
     GetFloatOf<CorvaneGetAutoSlitWidth>, SetFloatOf<CorvaneSetAutoSlitWidth>, PresentOf<CorvaneAutoSlitIsPresent>,
     HomeOf<CorvaneAutoSlitReset>},
    {"entrance-port", nullptr, 0, "0 direct, 1 side", GetFlipperPort<kEntranceMirror>, SetFlipperPort<kEntranceMirror>,
     FlipperPresent<kEntranceMirror>, FlipperHome<kEntranceMirror>},
    {"exit-port", nullptr, 0, "0 direct, 1 side", GetFlipperPort<kExitMirror>, SetFlipperPort<kExitMirror>,
     FlipperPresent<kExitMirror>, FlipperHome<kExitMirror>},
    {"filter", nullptr, 0, "filter in use, 1 to 6; set also takes a label", GetInt<CorvaneGetFilter>, SetFilter,
     Present<CorvaneFilterIsPresent>, Home<CorvaneFilterReset>},
    {"filter-label", "filter", kFilters, "text, of which an instrument keeps 10 characters (an SX 239)", GetFilterLabel,
     SetFilterLabel, Present<CorvaneFilterIsPresent>},
    {"shutter", nullptr, 0, "mode, 0 or 1", GetInt<CorvaneGetShutter>, SetInt<CorvaneSetShutter>,
     Present<CorvaneShutterIsPresent>},
    {"focus", nullptr, 0, "position of the focus mirror in steps", GetInt<CorvaneGetFocusMirror>, SetFocus,
     FocusPresent, Home<CorvaneFocusMirrorReset>},
    {"focus-travel", nullptr, 0, "highest position of the focus mirror in steps", GetInt<CorvaneGetFocusMirrorMaxSteps>,
     nullptr, FocusPresent},
    {"accessory", "line", 2, "accessory line, on or off", GetAccessory, SetAccessory,
     Present<CorvaneAccessoryIsPresent>},
    {"pixels", nullptr, 0, "detector pixels along the dispersion", GetInt<CorvaneGetNumberPixels>, nullptr, nullptr},
    {"pixel-width", nullptr, 0, "width of a detector pixel in um", GetFloat<CorvaneGetPixelWidth>, nullptr, nullptr},
};

}  // namespace

std::span<const Property> Properties() {
  return kProperties;
}

const Property* FindProperty(const std::string& name) {
  for (const Property& property : kProperties) {
    if (name == property.name) {
      return &property;
    }
  }
  return nullptr;
}

int Indices(const Property& property, int device) {
  if (property.index == nullptr || property.indices != 0) {
    return property.indices;
  }
  int gratings = 0;
  Check(CorvaneGetNumberGratings(device, &gratings), "reading the number of gratings");
  return gratings;
}

bool IsPresent(const Property& property, int device, int index) {
  return property.present == nullptr || property.present(device, index);
}

std::string Label(const Property& property, int index) {
  return property.index == nullptr ? property.name : std::string(property.name) + " " + std::to_string(index);
}

void RequirePresent(const Property& property, int device, int index) {
  if (IsPresent(property, device, index)) {
    return;
  }
  std::string fitted;
  for (int i = 1; property.index != nullptr && i <= Indices(property, device); ++i) {
    if (IsPresent(property, device, i)) {
      fitted += (fitted.empty() ? "it has " : ", ") + Label(property, i);
    }
  }
  throw Failure(ExitCode::kInstrument, "the instrument has no " + Label(property, index),
                fitted.empty() ? "corvane info lists its parts" : fitted);
}

namespace {

/// Runs an entry's operation; a failure says of which property, and a refused value what is allowed.
template <typename Operation>
auto Named(const char* doing, const Property& property, int index, Operation operation) {
  try {
    return operation();
  } catch (const Failure& failure) {
    throw Failure(failure.Code(), doing + Label(property, index) + ": " + failure.what(),
                  IsOutOfRange(failure.Status())
                      ? "the value is out of range; " + std::string(property.name) + ": " + property.help
                      : failure.Advice(),
                  failure.Status());
  }
}

}  // namespace

Json ReadProperty(const Property& property, int device, int index) {
  return Named("reading ", property, index, [&] { return property.get(device, index); });
}

void WriteProperty(const Property& property, int device, int index, const std::string& value) {
  Named("setting ", property, index, [&] { property.set(device, index, value); });
}

void HomeProperty(const Property& property, int device, int index) {
  Named("homing ", property, index, [&] { property.home(device, index); });
}
