// The operations of TMerakOrbis on the instrument's EEPROM record, forwarded under the record's own names, and the
// record itself, which the controller object owns while it is open. They are for programs that use the class; the
// library's own components call some twenty of them. Nothing here sends a command; the record does where it must.
//
// Turrets, gratings and filters count from 0. While there is no record (closed, or a model without one) text getters
// answer "", numeric getters 0, and setters and transfers kDeviceNotOpen. A setter given an index outside its table
// passes on the record's TTivanMerakEeprom::kOutOfRange. What each value is: eeprom/TTivanMerakEeprom.h.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <type_traits>

#include "core/MerakResult.h"
#include "eeprom/TTivanMerakEeprom.h"

namespace corvane {

class MerakRecordOperations {
  using Record = TTivanMerakEeprom;

 public:
  bool HasEepromRecord() const { return mRecord != nullptr; }

  MerakResult ReadEeprom() { return Tell(&Record::Read); }
  MerakResult WriteEeprom() { return Tell(&Record::Write); }
  MerakResult WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) {
    return Tell(&Record::WriteOpticalParamsToEEPROM, focalLength, angularDeviation, focalTilt);
  }
  MerakResult ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation, float* focalTilt) {
    return Tell(&Record::ReadOpticalParamsFromEEPROM, focalLength, angularDeviation, focalTilt);
  }

  std::string GetIDString() const { return Ask(&Record::GetIDString); }
  MerakResult SetIDString(const std::string& text) { return Tell(&Record::SetIDString, text); }
  std::string GetStructureVersion() const { return Ask(&Record::GetStructureVersion); }
  MerakResult SetStructureVersion(const std::string& text) { return Tell(&Record::SetStructureVersion, text); }
  std::string GetSerialNumber() const { return Ask(&Record::GetSerialNumber); }
  MerakResult SetSerialNumber(const std::string& text) { return Tell(&Record::SetSerialNumber, text); }
  std::string GetManufactureDate() const { return Ask(&Record::GetManufactureDate); }
  MerakResult SetManufactureDate(const std::string& text) { return Tell(&Record::SetManufactureDate, text); }
  std::string GetModifiedDate() const { return Ask(&Record::GetModifiedDate); }

  float GetFocalLength() const { return Ask(&Record::GetFocalLength); }
  MerakResult SetFocalLength(float value) { return Tell(&Record::SetFocalLength, value); }
  float GetAngularDev() const { return Ask(&Record::GetAngularDev); }
  MerakResult SetAngularDev(float value) { return Tell(&Record::SetAngularDev, value); }
  float GetPlaneTilt() const { return Ask(&Record::GetPlaneTilt); }
  MerakResult SetPlaneTilt(float value) { return Tell(&Record::SetPlaneTilt, value); }
  float GetWaveToStepsCoeff(int index) const { return Ask(&Record::GetWaveToStepsCoeff, index); }
  MerakResult SetWaveToStepsCoeff(int index, float value) { return Tell(&Record::SetWaveToStepsCoeff, index, value); }
  float GetSinAmplitude() const { return Ask(&Record::GetSinAmplitude); }
  MerakResult SetSinAmplitude(float value) { return Tell(&Record::SetSinAmplitude, value); }
  float GetSinPhase() const { return Ask(&Record::GetSinPhase); }
  MerakResult SetSinPhase(float value) { return Tell(&Record::SetSinPhase, value); }
  float GetSinFrequency() const { return Ask(&Record::GetSinFrequency); }
  MerakResult SetSinFrequency(float value) { return Tell(&Record::SetSinFrequency, value); }
  unsigned char GetWaveToStepsEnable() const { return Ask(&Record::GetWaveToStepsEnable); }
  MerakResult SetWaveToStepsEnable(unsigned char enable) { return Tell(&Record::SetWaveToStepsEnable, enable); }
  /// nm; from the record or, where the record keeps none, from the controller.
  float GetCurrentWavelength() { return Ask(&Record::GetCurrentWavelength); }
  MerakResult SetCurrentWavelength(float wavelength) { return Tell(&Record::SetCurrentWavelength, wavelength); }

  int GetGratingOffset(int turret, int grating) const { return Ask(&Record::GetGratingOffset, turret, grating); }
  MerakResult SetGratingOffset(int turret, int grating, int offset) {
    return Tell(&Record::SetGratingOffset, turret, grating, offset);
  }
  int GetGratingStart(int turret, int grating) const { return Ask(&Record::GetGratingStart, turret, grating); }
  MerakResult SetGratingStart(int turret, int grating, int start) {
    return Tell(&Record::SetGratingStart, turret, grating, start);
  }
  int GetDetectorOffset(int entrance, int exit) const { return Ask(&Record::GetDetectorOffset, entrance, exit); }
  MerakResult SetDetectorOffset(int entrance, int exit, int offset) {
    return Tell(&Record::SetDetectorOffset, entrance, exit, offset);
  }
  float GetGratingLines(int turret, int grating) const { return Ask(&Record::GetGratingLines, turret, grating); }
  MerakResult SetGratingLines(int turret, int grating, float lines) {
    return Tell(&Record::SetGratingLines, turret, grating, lines);
  }
  std::string GetGratingBlaze(int turret, int grating) const { return Ask(&Record::GetGratingBlaze, turret, grating); }
  MerakResult SetGratingBlaze(int turret, int grating, const std::string& blaze) {
    return Tell(&Record::SetGratingBlaze, turret, grating, blaze);
  }
  std::string GetFilterString(int filter) const { return Ask(&Record::GetFilterString, filter); }
  MerakResult SetFilterString(int filter, const std::string& text) {
    return Tell(&Record::SetFilterString, filter, text);
  }
  int GetNoOfGratings(int turret) const { return Ask(&Record::GetNoOfGratings, turret); }
  MerakResult SetNoOfGratings(int turret, int count) { return Tell(&Record::SetNoOfGratings, turret, count); }
  int GetNoOfTurrets() const { return Ask(&Record::GetNoOfTurrets); }
  MerakResult SetNoOfTurrets(int count) { return Tell(&Record::SetNoOfTurrets, count); }
  int GetActiveTurret() const { return Ask(&Record::GetActiveTurret); }
  MerakResult SetActiveTurret(int turret) { return Tell(&Record::SetActiveTurret, turret); }

  /// Has the answers of the following at hand, for a record that asks the controller for some of them: kSuccess, or
  /// why it cannot.
  MerakResult LoadActiveTurretGratings() { return Tell(&Record::LoadActiveTurretGratings); }
  int GetActiveTurretNoOfGratings() { return Ask(&Record::GetActiveTurretNoOfGratings); }
  std::string GetActiveTurretGratingBlaze(int grating) { return Ask(&Record::GetActiveTurretGratingBlaze, grating); }
  float GetActiveTurretGratingLines(int grating) { return Ask(&Record::GetActiveTurretGratingLines, grating); }
  int GetActiveTurretGratingStart(int grating) { return Ask(&Record::GetActiveTurretGratingStart, grating); }
  int GetActiveTurretGratingOffset(int grating) { return Ask(&Record::GetActiveTurretGratingOffset, grating); }
  MerakResult SetActiveTurretGratingOffset(int grating, int offset) {
    return Tell(&Record::SetActiveTurretGratingOffset, grating, offset);
  }

 protected:
  MerakRecordOperations() = default;
  ~MerakRecordOperations() = default;
  MerakRecordOperations(const MerakRecordOperations&) = delete;
  MerakRecordOperations& operator=(const MerakRecordOperations&) = delete;

  /// Null while there is none.
  std::unique_ptr<TTivanMerakEeprom> mRecord;

 private:
  template <class Getter, class... Arguments>
  std::invoke_result_t<Getter, Record&, Arguments...> Ask(Getter getter, Arguments... arguments) const {
    return mRecord != nullptr ? std::invoke(getter, *mRecord, arguments...)
                              : std::invoke_result_t<Getter, Record&, Arguments...>{};
  }

  template <class Operation, class... Arguments>
  MerakResult Tell(Operation operation, const Arguments&... arguments) {
    return mRecord != nullptr ? std::invoke(operation, *mRecord, arguments...) : merak::kDeviceNotOpen;
  }
};

}  // namespace corvane
