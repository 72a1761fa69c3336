#include "eeprom/TTivanMerakHaldenEeprom.h"

#include <array>
#include <cstddef>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>
#include <variant>
#include <vector>

using corvane::HaldenParameter;
using corvane::HaldenPart;
using corvane::IdentityOf;

namespace {

constexpr int kNoTurret = -1;
constexpr const char* kLineEnds = "\r\n";

bool IsOneLine(std::string_view text) {
  return text.find_first_of(kLineEnds) == std::string_view::npos;
}

template <typename Number>
bool ParseNumber(const std::string& text, Number& number) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  Number parsed{};
  if (!(stream >> parsed)) {
    return false;
  }
  number = parsed;
  return true;
}

std::string FormatNumber(int number) {
  return std::to_string(number);
}

/// With a stream's six digits, and as many more as it takes to read the same number back.
std::string FormatNumber(float number) {
  std::string text;
  float again = 0.0F;
  for (int digits = 6; digits <= std::numeric_limits<float>::max_digits10; ++digits) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(digits);
    stream << number;
    text = stream.str();
    if (ParseNumber(text, again) && again == number) {
      break;
    }
  }
  return text;
}

}  // namespace

TTivanMerakHaldenEeprom::TTivanMerakHaldenEeprom(corvane::IMerakEepromAccess& controller)
    : TTivanMerakEeprom(controller) {
  SetAllUnread();
}

void TTivanMerakHaldenEeprom::SetAllUnread() {
  corvane::WalkHaldenParameters(Values(), [this](const HaldenParameter& parameter) {
    SetUnread(IdentityOf(parameter.value));
    return true;
  });
  SetUnread(&Values().activeTurret);
}

MerakResult TTivanMerakHaldenEeprom::GetString(int number, std::string& text, bool& whole) {
  std::string value;
  if (const MerakResult result = Controller().GetConfigSystemData(number, value); result != merak::kSuccess) {
    return result;
  }
  // Not even the line ends that stand around an empty text.
  if (value.empty()) {
    return merak::kIoError;
  }
  // A text that ends as a reply does ("BOOK") ended its own: the line end behind it is missing.
  const std::size_t begin = value.find_first_not_of(kLineEnds);
  const std::size_t end = value.find_last_not_of(kLineEnds) + 1;
  text = begin == std::string::npos ? "" : value.substr(begin, end - begin);
  whole = end < value.size() && value.size() > 1 && IsOneLine(text);
  return merak::kSuccess;
}

MerakResult TTivanMerakHaldenEeprom::SetString(int number, const std::string& text) {
  return IsOneLine(text) ? Controller().SetConfigSystemData(number, text) : merak::kInvalidParameter;
}

bool TTivanMerakHaldenEeprom::ReadParameter(const HaldenParameter& parameter) {
  SetUnread(IdentityOf(parameter.value));
  std::string text;
  bool whole = false;
  const MerakResult result = GetString(parameter.number, text, whole);
  if (result != merak::kSuccess) {
    return Note(result);
  }
  if (auto* const held = std::get_if<std::string*>(&parameter.value)) {
    whole = whole && text.size() <= parameter.longestText;
    **held = text.substr(0, parameter.longestText);
  } else if (auto* const real = std::get_if<float*>(&parameter.value)) {
    whole = ParseNumber(text, **real);
  } else {
    whole = ParseNumber(text, *std::get<int*>(parameter.value));
  }
  if (whole) {
    SetKnown(IdentityOf(parameter.value));
  }
  return true;
}

bool TTivanMerakHaldenEeprom::WriteParameter(const HaldenParameter& parameter) {
  if (IsUnread(IdentityOf(parameter.value))) {
    return true;
  }
  std::string text;
  if (const auto* const held = std::get_if<std::string*>(&parameter.value)) {
    text = **held;
  } else if (const auto* const real = std::get_if<float*>(&parameter.value)) {
    text = FormatNumber(**real);
  } else {
    text = FormatNumber(*std::get<int*>(parameter.value));
  }
  return Note(SetString(parameter.number, text));
}

bool TTivanMerakHaldenEeprom::ReadNumberOfTurrets() {
  int& count = Values().noOfTurrets;
  for (count = 0; count < GetMaxNoTurrets(); ++count) {
    std::string text;
    bool whole = false;
    const MerakResult result = GetString(corvane::kHaldenFirstTurretText + count, text, whole);
    if (result != merak::kSuccess) {
      return Note(result);
    }
    if (text.empty()) {
      break;
    }
  }
  return true;
}

void TTivanMerakHaldenEeprom::ReadActiveTurret() {
  int turret = std::numeric_limits<int>::min();
  Controller().GetTurret(turret);
  // A reply without a number leaves the turret that was held.
  if (turret != std::numeric_limits<int>::min()) {
    Values().activeTurret = turret == kOtherTurret ? kOtherTurret : turret - 1;
    SetKnown(&Values().activeTurret);
  }
}

MerakResult TTivanMerakHaldenEeprom::Read() {
  BeginTransfer();
  SetAllUnread();
  const auto read = [this](const HaldenParameter& parameter) { return ReadParameter(parameter); };
  if (corvane::WalkHaldenParameters(Values(), read) && ReadNumberOfTurrets()) {
    ReadActiveTurret();
  }
  SetDirty(false);
  return merak::kSuccess;
}

MerakResult TTivanMerakHaldenEeprom::Write() {
  UpdateModifiedTime();
  BeginTransfer();
  corvane::WalkHaldenParameters(Values(),
                                [this](const HaldenParameter& parameter) { return WriteParameter(parameter); });
  if (FirstFailure() == merak::kSuccess) {
    SetDirty(false);
  }
  return merak::kSuccess;
}

MerakResult TTivanMerakHaldenEeprom::WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation,
                                                                float focalTilt) {
  const std::array values{focalLength, angularDeviation, focalTilt};
  auto value = values.begin();
  BeginTransfer();
  corvane::WalkHaldenParameters(HaldenPart::kOptics, Values(), [&](const HaldenParameter& parameter) {
    *std::get<float*>(parameter.value) = *value++;
    SetKnown(IdentityOf(parameter.value));
    WriteParameter(parameter);
    return FirstFailure() == merak::kSuccess;
  });
  return FirstFailure();
}

MerakResult TTivanMerakHaldenEeprom::SetWaveToStepsEnable(unsigned char /*enable*/) {
  return merak::kSuccess;
}

float TTivanMerakHaldenEeprom::GetCurrentWavelength() {
  float wavelength = 0.0F;
  Controller().Position(wavelength);
  return wavelength;
}

MerakResult TTivanMerakHaldenEeprom::SetCurrentWavelength(float /*wavelength*/) {
  return merak::kSuccess;
}

MerakResult TTivanMerakHaldenEeprom::WriteOffsets() {
  BeginTransfer();
  if (corvane::WalkHaldenParameters(HaldenPart::kOffsets, Values(),
                                    [this](const HaldenParameter& parameter) { return WriteParameter(parameter); })) {
    Note(Controller().ResetPosition());
  }
  return FirstFailure();
}

MerakResult TTivanMerakHaldenEeprom::LoadActiveTurretGratings() {
  std::string list;
  const MerakResult result = Controller().GetRawGratings(list);
  return result == merak::kSuccess && list.empty() ? merak::kIoError : result;
}

int TTivanMerakHaldenEeprom::GetActiveTurretNoOfGratings() {
  std::string list;
  Controller().GetRawGratings(list);
  std::istringstream stream(list);
  int count = 0;
  for (std::string line; std::getline(stream, line);) {
    count += line.empty() ? 0 : 1;
  }
  return count;
}

std::string TTivanMerakHaldenEeprom::GetActiveTurretGratingBlaze(int grating) {
  std::vector<float> lines;
  std::vector<std::string> blazes;
  Controller().GetGratings(lines, blazes);
  return Holds(blazes, grating) ? blazes[static_cast<std::size_t>(grating)].substr(0, corvane::kMaxBlazeLength)
                                : std::string();
}

float TTivanMerakHaldenEeprom::GetActiveTurretGratingLines(int grating) {
  std::vector<float> lines;
  std::vector<std::string> blazes;
  Controller().GetGratings(lines, blazes);
  return Holds(lines, grating) ? lines[static_cast<std::size_t>(grating)] : 0.0F;
}

int TTivanMerakHaldenEeprom::TurretInUse() {
  return Values().activeTurret == kNoTurret ? Values().heldTurret : Values().activeTurret;
}

int TTivanMerakHaldenEeprom::GetActiveTurretGratingStart(int grating) {
  return GetGratingStart(TurretInUse(), grating);
}

int TTivanMerakHaldenEeprom::GetActiveTurretGratingOffset(int grating) {
  return GetGratingOffset(TurretInUse(), grating);
}

MerakResult TTivanMerakHaldenEeprom::SetActiveTurretGratingOffset(int grating, int offset) {
  return IsUnread(&Values().activeTurret) ? kOutOfRange : SetGratingOffset(TurretInUse(), grating, offset);
}

void TTivanMerakHaldenEeprom::GetAdjustedDetectorIndex(int* /*entrance*/) {
}

bool TTivanMerakHaldenEeprom::CanStore(std::string_view text) const {
  return IsOneLine(text);
}

MerakResult TTivanMerakHaldenEeprom::StoreActiveTurret() {
  return Controller().SetTurret(Values().activeTurret + 1);
}
