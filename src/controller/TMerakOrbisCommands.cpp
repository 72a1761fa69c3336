// The operations of TMerakOrbis whose requests and replies are a few numbers or a text as it stands.
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "controller/MerakWords.h"
#include "controller/ReplyText.h"
#include "controller/TMerakOrbis.h"
#include "platform/TivanLocale.h"

namespace words = corvane::words;

namespace {

constexpr double kFirstSlitModeFirmware = 2.7;

// Appends, since g++ 12 at -O3 takes "text" + std::to_string() for a copy onto itself.
std::string Join(int first, const char* separator, const std::string& second) {
  std::string text = std::to_string(first);
  text += separator;
  text += second;
  return text;
}

std::string Pair(int first, const std::string& second) {
  return Join(first, ",", second);
}

std::string FourDecimals(float value) {
  const TivanLocale locale;
  // The largest float has 39 digits before the point.
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.4f", static_cast<double>(value));
  return text.data();
}

}  // namespace

MerakResult TMerakOrbis::Position(float& wavelength) {
  std::string reply;
  const MerakResult result = Query(words::kPosition, {}, reply);
  if (result == merak::kSuccess) {
    corvane::ScanFloat(reply, wavelength);
  }
  return result;
}

MerakResult TMerakOrbis::MoveTo(float wavelength) {
  return Command(words::kMoveTo, FourDecimals(wavelength));
}

MerakResult TMerakOrbis::GratingHome() {
  return Command(words::kGratingHome);
}

MerakResult TMerakOrbis::ResetPosition() {
  float wavelength = std::numeric_limits<float>::quiet_NaN();
  if (const MerakResult result = Position(wavelength); result != merak::kSuccess) {
    return result;
  }
  return std::isfinite(wavelength) ? MoveTo(wavelength) : merak::kIoError;
}

MerakResult TMerakOrbis::GetGrating(int& grating) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  if (mGrating != kNoGrating) {
    grating = mGrating;
    return merak::kSuccess;
  }
  int given = kNoGrating;
  if (const MerakResult result = QueryInt(words::kGrating, {}, given); result != merak::kSuccess) {
    return result;
  }
  if (given < kFirstGrating) {
    return merak::kIoError;
  }
  mGrating = given;
  grating = given;
  return merak::kSuccess;
}

MerakResult TMerakOrbis::Grating(int grating) {
  const MerakResult result = Command(words::kGrating, std::to_string(grating));
  if (result == merak::kSuccess) {
    mGrating = grating;
  }
  return result;
}

MerakResult TMerakOrbis::GetStep(int& step) {
  return QueryInt(words::kStep, {}, step);
}

MerakResult TMerakOrbis::StepAbs(int step) {
  return Command(words::kStepAbs, std::to_string(step));
}

MerakResult TMerakOrbis::GetTotalSteps(unsigned long& steps) {
  std::string reply;
  const MerakResult result = Query(words::kTotalSteps, {}, reply);
  unsigned long total = 0;
  if (result == merak::kSuccess && corvane::ScanUnsignedLong(reply, total)) {
    // A negative number reads as a huge one; no turret has so many steps.
    steps = total > INT_MAX ? 0 : total;
  }
  return result;
}

MerakResult TMerakOrbis::GetTurret(int& turret) {
  return QueryInt(words::kTurret, {}, turret);
}

MerakResult TMerakOrbis::SetTurret(int turret) {
  return Command(words::kTurret, std::to_string(turret));
}

MerakResult TMerakOrbis::GetExitPort(int& port) {
  return QueryInt(words::kExitPort, {}, port);
}

MerakResult TMerakOrbis::SetExitPort(int port) {
  return Command(words::kExitPort, std::to_string(port));
}

MerakResult TMerakOrbis::GetEntrancePort(int& port) {
  return QueryInt(words::kEntrancePort, {}, port);
}

MerakResult TMerakOrbis::SetEntrancePort(int port) {
  return Command(words::kEntrancePort, std::to_string(port));
}

MerakResult TMerakOrbis::GetFilter(int& filter) {
  return QueryInt(words::kFilter, {}, filter);
}

MerakResult TMerakOrbis::SetFilter(int filter) {
  return Command(words::kFilter, std::to_string(filter));
}

MerakResult TMerakOrbis::FilterHome() {
  return Command(words::kFilterHome);
}

MerakResult TMerakOrbis::GetFilterMode(std::string& mode) {
  return Query(words::kFilterMode, {}, mode);
}

MerakResult TMerakOrbis::SetFilterMode(const std::string& mode) {
  return Command(words::kFilterMode, mode);
}

MerakResult TMerakOrbis::GetMirrorFocus(int& position) {
  return QueryInt(words::kFocus, {}, position);
}

MerakResult TMerakOrbis::GetFocusMirrorMaxSteps(int& steps) {
  return QueryInt(words::kFocusTotalSteps, {}, steps);
}

MerakResult TMerakOrbis::SetMirrorFocus(int steps) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  if (steps == 0) {
    return merak::kSuccess;
  }
  // In 64 bits: the smallest int has no positive counterpart.
  return Command(words::kMoveFocus, Pair(steps < 0 ? 1 : 0, std::to_string(std::llabs(steps))));
}

MerakResult TMerakOrbis::FocusMirrorHome() {
  return Command(words::kFocusHome);
}

bool TMerakOrbis::SlitModeSupported() const {
  // The float 2.7 is a little above the double and passes.
  return !(kFirstSlitModeFirmware > static_cast<double>(mFirmwareVersion));
}

MerakResult TMerakOrbis::GetSlitMode(int slit, std::string& mode) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  if (!SlitModeSupported()) {
    return merak::kNotSupported;
  }
  std::string reply;
  const MerakResult result = Query(words::kSlitMode, std::to_string(slit), reply);
  if (result == merak::kSuccess) {
    corvane::ScanWord(reply, kMaxSlitModeLength, mode);
  }
  return result;
}

MerakResult TMerakOrbis::SetSlitMode(int slit, const std::string& mode) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  return SlitModeSupported() ? Command(words::kSlitMode, Pair(slit, mode)) : merak::kNotSupported;
}

MerakResult TMerakOrbis::GetSlitWidth(int slit, int& width) {
  return QueryInt(words::kSlitWidth, std::to_string(slit), width);
}

MerakResult TMerakOrbis::SetSlitWidth(int slit, int width) {
  // This one command wants a space behind the comma.
  return Command(words::kSlitWidth, Join(slit, ", ", std::to_string(width)));
}

MerakResult TMerakOrbis::SlitHome(int slit) {
  return Command(words::kSlitHome, std::to_string(slit));
}

MerakResult TMerakOrbis::SetPortState(int state) {
  return Command(words::kPortOutput, std::to_string(state));
}

MerakResult TMerakOrbis::GetPortState(int& state) {
  return QueryInt(words::kPortInput, {}, state);
}

MerakResult TMerakOrbis::GetShutterMode(int& mode) {
  return QueryInt(words::kShutterMode, {}, mode);
}

MerakResult TMerakOrbis::SetShutterMode(int mode) {
  return Command(words::kShutterMode, std::to_string(mode));
}

MerakResult TMerakOrbis::GetConfigSystemData(int index, std::string& value) {
  return Query(words::kConfigSystemData, std::to_string(index), value);
}

MerakResult TMerakOrbis::SetConfigSystemData(int index, const std::string& value) {
  return Command(words::kConfigSystemData, Pair(index, value));
}

MerakResult TMerakOrbis::GetSaveInfo(int address, int& value) {
  return QueryInt(words::kSaveInfo, std::to_string(address), value);
}

MerakResult TMerakOrbis::SaveInfo(int address, int value) {
  return Command(words::kSaveInfo, Pair(address, std::to_string(value)));
}
