#include "eeprom/TTivanMerakEeprom.h"

#include <bit>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <utility>

#include "platform/TimeSource.h"

namespace {

std::size_t Index(int index) {
  return static_cast<std::size_t>(index);
}

/// The text up to its terminator.
std::string_view UpToTerminator(std::string_view text) {
  return text.substr(0, text.find('\0'));
}

std::string Text(const std::string& held) {
  return std::string(UpToTerminator(held));
}

}  // namespace

TTivanMerakEeprom::TTivanMerakEeprom(corvane::IMerakEepromAccess& controller) : mController(controller) {
}

bool TTivanMerakEeprom::BinaryFloatCompare(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

void TTivanMerakEeprom::UpdateModifiedTime() {
  const std::time_t now = corvane::Time().WallClock().tv_sec;
  std::tm date{};
  localtime_r(&now, &date);
  char text[32];
  std::snprintf(text, sizeof text, "%02d/%02d/%d", date.tm_mday, date.tm_mon + 1, date.tm_year + 1900);
  mRecord.modifiedDate = text;
  SetKnown(&mRecord.modifiedDate);
}

bool TTivanMerakEeprom::Note(MerakResult result) {
  if (result == merak::kSuccess) {
    return true;
  }
  if (mFirstFailure == merak::kSuccess) {
    mFirstFailure = result;
  }
  // Another reply may still come after a refused byte; after silence every further byte costs a time-out.
  return !mController.IsSilent();
}

MerakResult TTivanMerakEeprom::Store(int& held, int value) {
  if (SetKnown(&held) || held != value) {
    held = value;
    mDirty = true;
  }
  return merak::kSuccess;
}

MerakResult TTivanMerakEeprom::Store(float& held, float value) {
  if (SetKnown(&held) || !BinaryFloatCompare(held, value)) {
    held = value;
    mDirty = true;
  }
  return merak::kSuccess;
}

bool TTivanMerakEeprom::CanStore(std::string_view /*text*/) const {
  return true;
}

MerakResult TTivanMerakEeprom::Store(std::string& held, std::string_view text, std::size_t maxLength) {
  const std::string_view kept = UpToTerminator(text).substr(0, maxLength);
  if (!CanStore(kept)) {
    return merak::kInvalidParameter;
  }
  if (SetKnown(&held) || UpToTerminator(held) != kept) {
    held = kept;
    mDirty = true;
  }
  return merak::kSuccess;
}

MerakResult TTivanMerakEeprom::ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation,
                                                           float* focalTilt) {
  const auto give = [](float* out, float value) {
    if (out != nullptr) {
      *out = value;
    }
  };
  give(focalLength, mRecord.focalLength);
  give(angularDeviation, mRecord.angularDeviation);
  give(focalTilt, mRecord.planeTilt);
  return merak::kSuccess;
}

MerakResult TTivanMerakEeprom::WriteIfDirty() {
  return mDirty ? Write() : merak::kSuccess;
}

unsigned char TTivanMerakEeprom::GetWaveToStepsEnable() {
  return static_cast<unsigned char>(mRecord.waveToStepsEnable);
}

MerakResult TTivanMerakEeprom::SetWaveToStepsEnable(unsigned char enable) {
  return Store(mRecord.waveToStepsEnable, enable);
}

MerakResult TTivanMerakEeprom::LoadActiveTurretGratings() {
  return merak::kSuccess;
}

int TTivanMerakEeprom::GetActiveTurretNoOfGratings() {
  return GetNoOfGratings(mRecord.activeTurret);
}

std::string TTivanMerakEeprom::GetActiveTurretGratingBlaze(int grating) {
  return GetGratingBlaze(mRecord.activeTurret, grating);
}

float TTivanMerakEeprom::GetActiveTurretGratingLines(int grating) {
  return GetGratingLines(mRecord.activeTurret, grating);
}

int TTivanMerakEeprom::GetActiveTurretGratingStart(int grating) {
  return GetGratingStart(mRecord.activeTurret, grating);
}

int TTivanMerakEeprom::GetActiveTurretGratingOffset(int grating) {
  return GetGratingOffset(mRecord.activeTurret, grating);
}

MerakResult TTivanMerakEeprom::SetActiveTurretGratingOffset(int grating, int offset) {
  return IsUnread(&mRecord.activeTurret) ? kOutOfRange : SetGratingOffset(mRecord.activeTurret, grating, offset);
}

std::string TTivanMerakEeprom::GetIDString() const {
  return Text(mRecord.idString);
}

MerakResult TTivanMerakEeprom::SetIDString(std::string_view text) {
  return Store(mRecord.idString, text);
}

std::string TTivanMerakEeprom::GetStructureVersion() const {
  return Text(mRecord.structureVersion);
}

MerakResult TTivanMerakEeprom::SetStructureVersion(std::string_view text) {
  return Store(mRecord.structureVersion, text);
}

std::string TTivanMerakEeprom::GetSerialNumber() const {
  return Text(mRecord.serialNumber);
}

MerakResult TTivanMerakEeprom::SetSerialNumber(std::string_view text) {
  return Store(mRecord.serialNumber, text);
}

std::string TTivanMerakEeprom::GetManufactureDate() const {
  return Text(mRecord.manufactureDate);
}

MerakResult TTivanMerakEeprom::SetManufactureDate(std::string_view text) {
  return Store(mRecord.manufactureDate, text);
}

std::string TTivanMerakEeprom::GetModifiedDate() const {
  return Text(mRecord.modifiedDate);
}

float TTivanMerakEeprom::GetFocalLength() const {
  return mRecord.focalLength;
}

MerakResult TTivanMerakEeprom::SetFocalLength(float value) {
  return Store(mRecord.focalLength, value);
}

float TTivanMerakEeprom::GetAngularDev() const {
  return mRecord.angularDeviation;
}

MerakResult TTivanMerakEeprom::SetAngularDev(float value) {
  return Store(mRecord.angularDeviation, value);
}

float TTivanMerakEeprom::GetPlaneTilt() const {
  return mRecord.planeTilt;
}

MerakResult TTivanMerakEeprom::SetPlaneTilt(float value) {
  return Store(mRecord.planeTilt, value);
}

float TTivanMerakEeprom::GetWaveToStepsCoeff(int index) const {
  return Holds(mRecord.coefficients, index) ? mRecord.coefficients[Index(index)] : 0.0F;
}

MerakResult TTivanMerakEeprom::SetWaveToStepsCoeff(int index, float value) {
  return Holds(mRecord.coefficients, index) ? Store(mRecord.coefficients[Index(index)], value) : kOutOfRange;
}

float TTivanMerakEeprom::GetSinAmplitude() const {
  return mRecord.sinAmplitude;
}

MerakResult TTivanMerakEeprom::SetSinAmplitude(float value) {
  return Store(mRecord.sinAmplitude, value);
}

float TTivanMerakEeprom::GetSinPhase() const {
  return mRecord.sinPhase;
}

MerakResult TTivanMerakEeprom::SetSinPhase(float value) {
  return Store(mRecord.sinPhase, value);
}

float TTivanMerakEeprom::GetSinFrequency() const {
  return mRecord.sinFrequency;
}

MerakResult TTivanMerakEeprom::SetSinFrequency(float value) {
  return Store(mRecord.sinFrequency, value);
}

bool TTivanMerakEeprom::HasGrating(int turret, int grating) const {
  return Holds(mRecord.noOfGratings, turret) && turret < GetMaxNoTurrets() && grating >= 0 &&
         grating < GetMaxNoGratings() && grating < corvane::MerakEepromRecord::kGratings;
}

int TTivanMerakEeprom::GetGratingOffset(int turret, int grating) const {
  return HasGrating(turret, grating) ? mRecord.gratingOffset[Index(turret)][Index(grating)] : 0;
}

MerakResult TTivanMerakEeprom::SetGratingOffset(int turret, int grating, int offset) {
  if (!HasGrating(turret, grating)) {
    return kOutOfRange;
  }
  int& held = mRecord.gratingOffset[Index(turret)][Index(grating)];
  const bool changes = IsUnread(&held) || held != offset;
  Store(held, offset);
  return changes ? WriteOffsets() : merak::kSuccess;
}

int TTivanMerakEeprom::GetGratingStart(int turret, int grating) const {
  return HasGrating(turret, grating) ? mRecord.gratingStart[Index(turret)][Index(grating)] : 0;
}

MerakResult TTivanMerakEeprom::SetGratingStart(int turret, int grating, int start) {
  return HasGrating(turret, grating) ? Store(mRecord.gratingStart[Index(turret)][Index(grating)], start) : kOutOfRange;
}

float TTivanMerakEeprom::GetGratingLines(int turret, int grating) const {
  return HasGrating(turret, grating) ? mRecord.gratingLines[Index(turret)][Index(grating)] : 0.0F;
}

MerakResult TTivanMerakEeprom::SetGratingLines(int turret, int grating, float lines) {
  return HasGrating(turret, grating) ? Store(mRecord.gratingLines[Index(turret)][Index(grating)], lines) : kOutOfRange;
}

std::string TTivanMerakEeprom::GetGratingBlaze(int turret, int grating) const {
  return HasGrating(turret, grating) ? Text(mRecord.gratingBlaze[Index(turret)][Index(grating)]) : std::string();
}

MerakResult TTivanMerakEeprom::SetGratingBlaze(int turret, int grating, std::string_view blaze) {
  return HasGrating(turret, grating)
             ? Store(mRecord.gratingBlaze[Index(turret)][Index(grating)], blaze, corvane::kMaxBlazeLength)
             : kOutOfRange;
}

int TTivanMerakEeprom::GetNoOfGratings(int turret) const {
  return Holds(mRecord.noOfGratings, turret) ? mRecord.noOfGratings[Index(turret)] : 0;
}

MerakResult TTivanMerakEeprom::SetNoOfGratings(int turret, int count) {
  return Holds(mRecord.noOfGratings, turret) ? Store(mRecord.noOfGratings[Index(turret)], count) : kOutOfRange;
}

int TTivanMerakEeprom::GetDetectorOffset(int entrance, int exit) {
  constexpr int kGreatestPortAsked = 2;
  if (entrance < 0 || entrance > kGreatestPortAsked || exit < 0 || exit > kGreatestPortAsked) {
    return 0;
  }
  GetAdjustedDetectorIndex(&entrance);
  const int index = exit + corvane::MerakEepromRecord::kPorts * entrance;
  return Holds(mRecord.detectorOffsets, index) ? mRecord.detectorOffsets[Index(index)] : 0;
}

MerakResult TTivanMerakEeprom::SetDetectorOffset(int entrance, int exit, int offset) {
  constexpr int kPorts = corvane::MerakEepromRecord::kPorts;
  if (entrance < 0 || entrance >= kPorts || exit < 0 || exit >= kPorts) {
    return kOutOfRange;
  }
  // Without the adjustment a structure with one entrance would hold values that it never writes back.
  const int asked = entrance;
  GetAdjustedDetectorIndex(&entrance);
  if (entrance != asked && IsUnread(&mRecord.structureVersion)) {
    return kOutOfRange;
  }
  return Store(mRecord.detectorOffsets[Index(exit + kPorts * entrance)], offset);
}

std::string TTivanMerakEeprom::GetFilterString(int filter) const {
  return Holds(mRecord.filterLabels, filter) ? Text(mRecord.filterLabels[Index(filter)]) : std::string();
}

MerakResult TTivanMerakEeprom::SetFilterString(int filter, std::string_view text) {
  return Holds(mRecord.filterLabels, filter) ? Store(mRecord.filterLabels[Index(filter)], text) : kOutOfRange;
}

int TTivanMerakEeprom::GetNoOfTurrets() const {
  return mRecord.noOfTurrets;
}

MerakResult TTivanMerakEeprom::SetNoOfTurrets(int count) {
  return Store(mRecord.noOfTurrets, count);
}

int TTivanMerakEeprom::GetActiveTurret() const {
  return mRecord.activeTurret;
}

MerakResult TTivanMerakEeprom::SetActiveTurret(int turret) {
  if (turret < GetMinNoTurrets() - 1 || turret > GetMaxNoTurrets() - 1) {
    return kOutOfRange;
  }
  const int old = std::exchange(mRecord.activeTurret, turret);
  const MerakResult result = StoreActiveTurret();
  if (result == merak::kSuccess) {
    SetKnown(&mRecord.activeTurret);
  } else {
    mRecord.activeTurret = old;
  }
  return result;
}
