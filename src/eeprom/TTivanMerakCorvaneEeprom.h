// The EEPROM record of LX, MX and unknown models: a byte image, addresses from 1, moved one byte an exchange. The
// layout depends on the structure version that the image itself states. TMerakOrbis creates one when it opens such a
// model.
#pragma once

#include <cstddef>
#include <initializer_list>

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
  /// its field. The record counts as saved when every byte sent arrived.
  MerakResult Write() override;
  /// The code of the first field that failed; all three values are kept in any case.
  MerakResult WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) override;
  /// Writes nothing unless the record was read: without the version the places are unknown, and defaults would go over
  /// the instrument's own data where the reading was broken off.
  MerakResult WriteIfDirty() override;
  float GetCurrentWavelength() override;
  /// Writes only a wavelength that differs from the one held.
  MerakResult SetCurrentWavelength(float wavelength) override;
  /// Nothing: offsets are written with the record.
  MerakResult WriteOffsets() override;
  /// Structures up to 2 have detector offsets for one entrance only.
  void GetAdjustedDetectorIndex(int* entrance) override;
  /// Deliberately also where the structure has only one turret: its place is defined all the same, nothing else lies
  /// there, and Read and Write leave it alone. kEepromError while the place is unknown because the version could not
  /// be read.
  MerakResult StoreActiveTurret() override;
  int GetMaxNoGratings() const override { return 3; }
  int GetMaxNoInputs() const override { return corvane::MerakEepromRecord::kPorts; }

 private:
  bool ReadValue(corvane::RecordValue value, int address, int width);
  bool WriteValue(corvane::RecordValue value, int address, int width);
  /// Writes single fields and answers the first failure.
  MerakResult WriteFields(std::initializer_list<std::size_t> numbers);

  /// The version under which the last Read or Write placed its fields.
  corvane::StructureVersion mVersion;
  /// What the last Read achieved: the version text, and everything without the controller falling silent.
  bool mVersionRead = false;
  bool mReadToTheEnd = false;
};
