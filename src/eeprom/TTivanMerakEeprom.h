// An instrument's EEPROM record as it is held in memory: the cache that TMerakOrbis owns while a controller is open and
// forwards to. Derived classes know how a family of controllers keeps the record and move it to and fro; this base
// never talks to the controller on its own account.
//
// Turrets, gratings, ports and filters count from 0. A getter answers 0 or "" for an index outside its table, a setter
// kOutOfRange. Numbers that came from an instrument are kept as they came, however odd: a turret may claim 255
// gratings. Cache-only setters compare with the value held (floats bit for bit) and mark the record unsaved only when
// it differs. A text longer than corvane::kMaxTextLength, a blaze text longer than corvane::kMaxBlazeLength, is cut.
// Results are controller codes (core/MerakResult.h).
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "core/MerakResult.h"
#include "core/TextLengths.h"
#include "eeprom/IMerakEepromAccess.h"
#include "eeprom/MerakEepromRecord.h"

class TTivanMerakEeprom {
 public:
  /// -1 as a result code.
  static constexpr MerakResult kOutOfRange = static_cast<MerakResult>(-1);

  /// The controller is borrowed and outlives the record.
  explicit TTivanMerakEeprom(corvane::IMerakEepromAccess& controller);
  TTivanMerakEeprom(const TTivanMerakEeprom&) = delete;
  TTivanMerakEeprom& operator=(const TTivanMerakEeprom&) = delete;
  /// Writes nothing: WriteIfDirty comes first where unsaved values matter.
  virtual ~TTivanMerakEeprom() = default;

  /// Reads the whole record. Always 0: a part that cannot be read keeps what the family says, and the rest goes on,
  /// unless the controller falls silent, which ends the reading.
  virtual MerakResult Read() = 0;
  /// Sets the modified date to today and writes the record, but for the values that the last Read did not get whole:
  /// the instrument keeps its own until a setter was given one. Always 0; a controller that falls silent ends it.
  virtual MerakResult Write() = 0;
  /// Writes the three values at once and keeps them.
  virtual MerakResult WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) = 0;
  /// The three cached values; null outputs are skipped. Always 0.
  virtual MerakResult ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation, float* focalTilt);
  /// Write() when values are unsaved; else 0.
  virtual MerakResult WriteIfDirty();
  /// Not 0: wavelengths are turned into motor steps in this library, not in the controller.
  virtual unsigned char GetWaveToStepsEnable();
  virtual MerakResult SetWaveToStepsEnable(unsigned char enable);
  /// nm.
  virtual float GetCurrentWavelength() = 0;
  /// Reaches the instrument at once where the family keeps the wavelength in the record.
  virtual MerakResult SetCurrentWavelength(float wavelength) = 0;
  /// Called after every change of a grating offset, for families whose offsets must reach the controller at once.
  virtual MerakResult WriteOffsets() = 0;
  virtual int GetActiveTurretNoOfGratings();
  virtual std::string GetActiveTurretGratingBlaze(int grating);
  /// Per mm.
  virtual float GetActiveTurretGratingLines(int grating);
  /// Motor steps.
  virtual int GetActiveTurretGratingStart(int grating);
  virtual int GetActiveTurretGratingOffset(int grating);
  /// kOutOfRange also while the active turret could not be read: the offset would go to another one's grating.
  virtual MerakResult SetActiveTurretGratingOffset(int grating, int offset);
  /// Replaces an entrance index by the one under which its detector offsets are kept.
  virtual void GetAdjustedDetectorIndex(int* entrance) = 0;
  /// Writes the active turret to the instrument at once.
  virtual MerakResult StoreActiveTurret() = 0;
  virtual int GetNoFilters() const { return corvane::MerakEepromRecord::kFilters; }
  virtual int GetMinNoGratings() const { return 1; }
  /// Also the number of gratings of a turret that the accessors reach.
  virtual int GetMaxNoGratings() const = 0;
  virtual int GetMinNoTurrets() const { return 1; }
  virtual int GetMaxNoTurrets() const { return corvane::MerakEepromRecord::kTurrets; }
  virtual int GetMaxNoOutputs() const { return corvane::MerakEepromRecord::kPorts; }
  virtual int GetMaxNoInputs() const = 0;
  /// Has what concerns the active turret's gratings at hand, for families that ask the controller for some of it: 0, or
  /// why not.
  virtual MerakResult LoadActiveTurretGratings();
  /// False for a text that could not reach the instrument; setters of texts refuse it with kInvalidParameter.
  virtual bool CanStore(std::string_view text) const;

  std::string GetIDString() const;
  MerakResult SetIDString(std::string_view text);
  std::string GetStructureVersion() const;
  MerakResult SetStructureVersion(std::string_view text);
  std::string GetSerialNumber() const;
  MerakResult SetSerialNumber(std::string_view text);
  std::string GetManufactureDate() const;
  MerakResult SetManufactureDate(std::string_view text);
  std::string GetModifiedDate() const;

  /// Metres.
  float GetFocalLength() const;
  MerakResult SetFocalLength(float value);
  /// Degrees.
  float GetAngularDev() const;
  MerakResult SetAngularDev(float value);
  /// Degrees.
  float GetPlaneTilt() const;
  MerakResult SetPlaneTilt(float value);
  /// Index 0 to 4; see components/TStepperWaveToSteps.h for the meaning.
  float GetWaveToStepsCoeff(int index) const;
  MerakResult SetWaveToStepsCoeff(int index, float value);
  float GetSinAmplitude() const;
  MerakResult SetSinAmplitude(float value);
  float GetSinPhase() const;
  MerakResult SetSinPhase(float value);
  float GetSinFrequency() const;
  MerakResult SetSinFrequency(float value);

  int GetGratingOffset(int turret, int grating) const;
  /// Followed by WriteOffsets when the offset changed.
  MerakResult SetGratingOffset(int turret, int grating, int offset);
  int GetGratingStart(int turret, int grating) const;
  MerakResult SetGratingStart(int turret, int grating, int start);
  float GetGratingLines(int turret, int grating) const;
  MerakResult SetGratingLines(int turret, int grating, float lines);
  std::string GetGratingBlaze(int turret, int grating) const;
  MerakResult SetGratingBlaze(int turret, int grating, std::string_view blaze);
  int GetNoOfGratings(int turret) const;
  MerakResult SetNoOfGratings(int turret, int count);
  /// 0 for a port below 0 or above 2. The entrance is adjusted (GetAdjustedDetectorIndex) before the table is asked; an
  /// exit of 2 is taken along in the index, so entrance 0, exit 2 answers as entrance 1, exit 0.
  int GetDetectorOffset(int entrance, int exit);
  /// Ports 0 and 1 only; the entrance is adjusted in the same way, but kOutOfRange while the structure's version, which
  /// decides on it, could not be read.
  MerakResult SetDetectorOffset(int entrance, int exit, int offset);
  std::string GetFilterString(int filter) const;
  MerakResult SetFilterString(int filter, std::string_view text);
  int GetNoOfTurrets() const;
  MerakResult SetNoOfTurrets(int count);
  int GetActiveTurret() const;
  /// From the least to the greatest number of turrets, less one; stores the turret on the instrument at once and
  /// answers with that write's code. The old turret stays when the write fails.
  MerakResult SetActiveTurret(int turret);

  /// True while values are held that the instrument does not have.
  bool IsDirty() const { return mDirty; }

 protected:
  /// True when both have the same bits: a NaN equals itself and -0 differs from 0.
  static bool BinaryFloatCompare(float a, float b);
  void UpdateModifiedTime();
  void SetDirty(bool dirty) { mDirty = dirty; }
  corvane::MerakEepromRecord& Values() { return mRecord; }
  const corvane::MerakEepromRecord& Values() const { return mRecord; }
  corvane::IMerakEepromAccess& Controller() { return mController; }

  template <typename Table>
  static bool Holds(const Table& table, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < table.size();
  }

  /// Starts a transfer of several values, whose first failure counts.
  void BeginTransfer() { mFirstFailure = merak::kSuccess; }
  /// Remembers a first failure; false when the controller fell silent.
  bool Note(MerakResult result);
  MerakResult FirstFailure() const { return mFirstFailure; }

  // Values of the record, by their address, that the instrument has and the last Read did not get whole. What is held
  // in their place is a default or a part, which must not go over the instrument's own data.
  void SetUnread(const void* value) { mUnread.insert(value); }
  /// The value held is the instrument's or a caller's.
  /// True when it was not known before: what is held of it is then nobody's value, to which nothing compares equal.
  bool SetKnown(const void* value) { return mUnread.erase(value) != 0; }
  void SetAllKnown() { mUnread.clear(); }
  bool IsUnread(const void* value) const { return mUnread.count(value) != 0; }

 private:
  bool HasGrating(int turret, int grating) const;
  /// Every store makes the value known, the same value again too.
  MerakResult Store(int& held, int value);
  MerakResult Store(float& held, float value);
  MerakResult Store(std::string& held, std::string_view text, std::size_t maxLength = corvane::kMaxTextLength);

  corvane::IMerakEepromAccess& mController;
  corvane::MerakEepromRecord mRecord;
  std::set<const void*> mUnread;
  MerakResult mFirstFailure = merak::kSuccess;
  bool mDirty = false;
};
