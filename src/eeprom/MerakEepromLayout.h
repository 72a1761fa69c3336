// The byte image of the EEPROM of LX, MX and unknown models: where each value of the record lies, how wide it is, since
// which structure version it exists, and in which order values travel. TTivanMerakCorvaneEeprom walks it to read and
// to write; nothing here talks to a controller.
//
// Integers are 32-bit two's complement and floats IEEE 754 single precision, least significant byte first; a number
// kept in one byte counts from 0 to 255. Texts fill their field and have no terminator of their own.
#pragma once

#include <array>
#include <cstddef>
#include <functional>

#include "eeprom/MerakEepromRecord.h"
#include "eeprom/RecordValue.h"
#include "eeprom/StructureVersion.h"

namespace corvane {

/// Numbers of the fields that are moved on their own.
enum EepromFieldNumber : std::size_t {
  kFieldStructureVersion = 1,
  kFieldFocalLength = 5,
  kFieldAngularDeviation = 6,
  kFieldPlaneTilt = 7,
  kFieldCurrentWavelength = 14,
  kFieldActiveTurret = 34,
};

inline constexpr std::size_t kEepromFields = 35;
using EepromAddresses = std::array<int, kEepromFields>;

/// First address of every field: 1, then each behind the one before it.
EepromAddresses SetupEepromAddresses(StructureVersion version);

/// Puts in place what a structure of this version does not store.
void SetAbsentFields(StructureVersion version, MerakEepromRecord& record);

/// Moves one value of `width` bytes at `address`; false ends the walk.
using EepromTransfer = std::function<bool(RecordValue value, int address, int width)>;

/// Walks the values of one field.
bool WalkEepromField(std::size_t number, StructureVersion version, MerakEepromRecord& record,
                     const EepromTransfer& transfer);
/// Walks every field that a structure of this version has, except the structure version, in the order of travel.
bool WalkEepromFields(StructureVersion version, MerakEepromRecord& record, const EepromTransfer& transfer);

}  // namespace corvane
