// The EEPROM record of LX, MX and unknown models: a byte image, addresses from 1, moved one byte an exchange. The
// layout depends on the structure version that the image itself states. TMerakOrbis creates one when it opens such a
// model.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <set>

#include "eeprom/MerakEepromLayout.h"
#include "eeprom/StructureVersion.h"
#include "eeprom/TTivanMerakEeprom.h"

class TTivanMerakCorvaneEeprom final : public TTivanMerakEeprom {
 public:
  explicit TTivanMerakCorvaneEeprom(corvane::IMerakEepromAccess& controller);

  /// A byte that cannot be read ends its field: a text keeps the bytes before it, an int these and the failing one, a
  /// float or a single byte the value held. Such a value answers the getters and stays out of Write.
  MerakResult Read() override;
  /// What Read reads for the structure version held, in the same order and places. A byte that cannot be written ends
  /// its field. The record counts as saved when every byte sent arrived. A version that was not read is asked for once
  /// more; nothing is written while the places are unknown.
  MerakResult Write() override;
  /// The code of the first field that failed; all three values are kept in any case, and a failed one is unsaved.
  MerakResult WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) override;
  /// Also without a change, what should have reached the instrument at once and did not.
  MerakResult WriteIfDirty() override;
  float GetCurrentWavelength() override;
  /// Writes only a wavelength that differs from the one held. One whose bytes did not all arrive stays unsaved: the
  /// next call writes it, the same wavelength too, or else WriteIfDirty.
  MerakResult SetCurrentWavelength(float wavelength) override;
  /// Nothing: offsets are written with the record.
  MerakResult WriteOffsets() override;
  /// Structures up to 2 have detector offsets for one entrance only.
  void GetAdjustedDetectorIndex(int* entrance) override;
  /// Deliberately also where the structure has only one turret: its place is defined all the same, nothing else lies
  /// there, and Read and Write leave it alone. kEepromError while the place is unknown because the version cannot be
  /// read.
  MerakResult StoreActiveTurret() override;
  int GetMaxNoGratings() const override { return 3; }
  int GetMaxNoInputs() const override { return corvane::MerakEepromRecord::kPorts; }

 private:
  /// Every value of such a structure but the version.
  void SetFieldsUnread(corvane::StructureVersion version);
  bool IsVersionKnown() const;
  /// False when the controller fell silent, as the next one.
  bool ReadVersion();
  bool ReadValue(corvane::RecordValue value, int address, int width);
  MerakResult WriteValue(corvane::RecordValue value, int address, int width);
  /// One that is a single value.
  MerakResult WriteField(std::size_t number);
  /// Writes these fields and those that are unsaved from earlier, up to a silence; answers the first failure.
  MerakResult Save(std::initializer_list<std::size_t> numbers);

  /// The version under which the last Read or Write placed its fields.
  corvane::StructureVersion mVersion;
  /// Fields given to be written at once of which not every byte arrived, so that the instrument may hold half of one.
  std::set<std::size_t> mUnsaved;
};
