// The EEPROM side of TMerakOrbis: values of several bytes over "SAVEINFO", and the operations of the record it owns.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <type_traits>

#include "controller/ReplyText.h"
#include "controller/TMerakOrbis.h"
#include "controller/TMerakOrbisCom.h"
#include "eeprom/TTivanMerakEeprom.h"

namespace {

constexpr int kValueBytes = 4;

std::uint32_t ByteAt(unsigned char byte, int place) {
  return static_cast<std::uint32_t>(byte) << (8 * place);
}

/// Asks the record; without one the answer is 0 or an empty text.
template <class Record, class Operation, class... Arguments>
auto Ask(const Record& record, Operation operation, Arguments... arguments) {
  using Answer = std::decay_t<std::invoke_result_t<Operation, TTivanMerakEeprom&, Arguments...>>;
  return record != nullptr ? Answer(std::invoke(operation, *record, arguments...)) : Answer{};
}

/// Has the record do something; without one the result is 3.
template <class Record, class Operation, class... Arguments>
MerakResult Tell(const Record& record, Operation operation, const Arguments&... arguments) {
  return record != nullptr ? static_cast<MerakResult>(std::invoke(operation, *record, arguments...))
                           : merak::kDeviceNotOpen;
}

}  // namespace

MerakResult TMerakOrbis::ReadEepromByte(int address, unsigned char& value) {
  int number = 0;
  const MerakResult result = GetSaveInfo(address, number);
  if (result == merak::kSuccess) {
    value = static_cast<unsigned char>(number);
  }
  return result;
}

MerakResult TMerakOrbis::WriteEepromByte(int address, unsigned char value) {
  return SaveInfo(address, value);
}

MerakResult TMerakOrbis::ReadEepromInt32(int address, int& value) {
  unsigned char byte = 0;
  for (int i = 0; i < kValueBytes; ++i) {
    const MerakResult result = ReadEepromByte(address + i, byte);
    const std::uint32_t others = static_cast<std::uint32_t>(value) & ~ByteAt(0xFF, i);
    value = static_cast<int>(others | ByteAt(byte, i));
    if (result != merak::kSuccess) {
      return result;
    }
  }
  return merak::kSuccess;
}

MerakResult TMerakOrbis::ReadEepromFloat(int address, float& value) {
  int image = 0;
  const MerakResult result = ReadEepromInt32(address, image);
  if (result == merak::kSuccess) {
    value = std::bit_cast<float>(image);
  }
  return result;
}

MerakResult TMerakOrbis::WriteEepromInt32(int address, int value) {
  const auto image = static_cast<std::uint32_t>(value);
  for (int i = 0; i < kValueBytes; ++i) {
    const auto byte = static_cast<unsigned char>(image >> (8 * i));
    if (const MerakResult result = WriteEepromByte(address + i, byte); result != merak::kSuccess) {
      return result;
    }
  }
  return merak::kSuccess;
}

MerakResult TMerakOrbis::WriteEepromFloat(int address, float value) {
  return WriteEepromInt32(address, std::bit_cast<int>(value));
}

void TMerakOrbis::GetEepromStructureVersion(const std::string& text, int* major, int* minor) {
  std::size_t begin = 0;
  for (int* output : {major, minor}) {
    const std::size_t dot = text.find('.', begin);
    const std::string part = text.substr(begin, dot - begin);
    if (!part.empty() && output != nullptr) {
      *output = corvane::IntOf(part);
    }
    if (dot == std::string::npos) {
      return;
    }
    begin = dot + 1;
  }
}

MerakResult TMerakOrbis::ReadEeprom() {
  return Tell(mEeprom, &TTivanMerakEeprom::Read);
}

MerakResult TMerakOrbis::WriteEeprom() {
  return Tell(mEeprom, &TTivanMerakEeprom::Write);
}

MerakResult TMerakOrbis::WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) {
  return Tell(mEeprom, &TTivanMerakEeprom::WriteOpticalParamsToEEPROM, focalLength, angularDeviation, focalTilt);
}

MerakResult TMerakOrbis::ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation, float* focalTilt) {
  return Tell(mEeprom, &TTivanMerakEeprom::ReadOpticalParamsFromEEPROM, focalLength, angularDeviation, focalTilt);
}

std::string TMerakOrbis::GetIDString() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetIDString);
}

MerakResult TMerakOrbis::SetIDString(const std::string& text) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetIDString, text);
}

std::string TMerakOrbis::GetStructureVersion() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetStructureVersion);
}

MerakResult TMerakOrbis::SetStructureVersion(const std::string& text) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetStructureVersion, text);
}

std::string TMerakOrbis::GetSerialNumber() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetSerialNumber);
}

MerakResult TMerakOrbis::SetSerialNumber(const std::string& text) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetSerialNumber, text);
}

std::string TMerakOrbis::GetManufactureDate() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetManufactureDate);
}

MerakResult TMerakOrbis::SetManufactureDate(const std::string& text) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetManufactureDate, text);
}

std::string TMerakOrbis::GetModifiedDate() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetModifiedDate);
}

float TMerakOrbis::GetFocalLength() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetFocalLength);
}

MerakResult TMerakOrbis::SetFocalLength(float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetFocalLength, value);
}

float TMerakOrbis::GetAngularDev() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetAngularDev);
}

MerakResult TMerakOrbis::SetAngularDev(float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetAngularDev, value);
}

float TMerakOrbis::GetPlaneTilt() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetPlaneTilt);
}

MerakResult TMerakOrbis::SetPlaneTilt(float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetPlaneTilt, value);
}

float TMerakOrbis::GetWaveToStepsCoeff(int index) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetWaveToStepsCoeff, index);
}

MerakResult TMerakOrbis::SetWaveToStepsCoeff(int index, float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetWaveToStepsCoeff, index, value);
}

float TMerakOrbis::GetSinAmplitude() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetSinAmplitude);
}

MerakResult TMerakOrbis::SetSinAmplitude(float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetSinAmplitude, value);
}

float TMerakOrbis::GetSinPhase() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetSinPhase);
}

MerakResult TMerakOrbis::SetSinPhase(float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetSinPhase, value);
}

float TMerakOrbis::GetSinFrequency() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetSinFrequency);
}

MerakResult TMerakOrbis::SetSinFrequency(float value) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetSinFrequency, value);
}

unsigned char TMerakOrbis::GetWaveToStepsEnable() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetWaveToStepsEnable);
}

MerakResult TMerakOrbis::SetWaveToStepsEnable(unsigned char enable) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetWaveToStepsEnable, enable);
}

float TMerakOrbis::GetCurrentWavelength() {
  return Ask(mEeprom, &TTivanMerakEeprom::GetCurrentWavelength);
}

MerakResult TMerakOrbis::SetCurrentWavelength(float wavelength) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetCurrentWavelength, wavelength);
}

int TMerakOrbis::GetGratingOffset(int turret, int grating) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetGratingOffset, turret, grating);
}

MerakResult TMerakOrbis::SetGratingOffset(int turret, int grating, int offset) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetGratingOffset, turret, grating, offset);
}

int TMerakOrbis::GetGratingStart(int turret, int grating) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetGratingStart, turret, grating);
}

MerakResult TMerakOrbis::SetGratingStart(int turret, int grating, int start) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetGratingStart, turret, grating, start);
}

int TMerakOrbis::GetDetectorOffset(int entrance, int exit) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetDetectorOffset, entrance, exit);
}

MerakResult TMerakOrbis::SetDetectorOffset(int entrance, int exit, int offset) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetDetectorOffset, entrance, exit, offset);
}

float TMerakOrbis::GetGratingLines(int turret, int grating) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetGratingLines, turret, grating);
}

MerakResult TMerakOrbis::SetGratingLines(int turret, int grating, float lines) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetGratingLines, turret, grating, lines);
}

std::string TMerakOrbis::GetGratingBlaze(int turret, int grating) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetGratingBlaze, turret, grating);
}

MerakResult TMerakOrbis::SetGratingBlaze(int turret, int grating, const std::string& blaze) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetGratingBlaze, turret, grating, blaze);
}

std::string TMerakOrbis::GetFilterString(int filter) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetFilterString, filter);
}

MerakResult TMerakOrbis::SetFilterString(int filter, const std::string& text) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetFilterString, filter, text);
}

int TMerakOrbis::GetNoOfGratings(int turret) const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetNoOfGratings, turret);
}

MerakResult TMerakOrbis::SetNoOfGratings(int turret, int count) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetNoOfGratings, turret, count);
}

int TMerakOrbis::GetNoOfTurrets() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetNoOfTurrets);
}

MerakResult TMerakOrbis::SetNoOfTurrets(int count) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetNoOfTurrets, count);
}

int TMerakOrbis::GetActiveTurret() const {
  return Ask(mEeprom, &TTivanMerakEeprom::GetActiveTurret);
}

MerakResult TMerakOrbis::SetActiveTurret(int turret) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetActiveTurret, turret);
}

MerakResult TMerakOrbis::LoadActiveTurretGratings() {
  return Tell(mEeprom, &TTivanMerakEeprom::LoadActiveTurretGratings);
}

int TMerakOrbis::GetActiveTurretNoOfGratings() {
  return Ask(mEeprom, &TTivanMerakEeprom::GetActiveTurretNoOfGratings);
}

std::string TMerakOrbis::GetActiveTurretGratingBlaze(int grating) {
  return Ask(mEeprom, &TTivanMerakEeprom::GetActiveTurretGratingBlaze, grating);
}

float TMerakOrbis::GetActiveTurretGratingLines(int grating) {
  return Ask(mEeprom, &TTivanMerakEeprom::GetActiveTurretGratingLines, grating);
}

int TMerakOrbis::GetActiveTurretGratingStart(int grating) {
  return Ask(mEeprom, &TTivanMerakEeprom::GetActiveTurretGratingStart, grating);
}

int TMerakOrbis::GetActiveTurretGratingOffset(int grating) {
  return Ask(mEeprom, &TTivanMerakEeprom::GetActiveTurretGratingOffset, grating);
}

MerakResult TMerakOrbis::SetActiveTurretGratingOffset(int grating, int offset) {
  return Tell(mEeprom, &TTivanMerakEeprom::SetActiveTurretGratingOffset, grating, offset);
}
