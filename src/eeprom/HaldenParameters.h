// The numbered text parameters of SX models: which value of the record each one is, and in which order they travel.
// TTivanMerakHaldenEeprom walks them to read and to write; nothing here talks to a controller.
#pragma once

#include <cstddef>
#include <functional>

#include "eeprom/MerakEepromRecord.h"
#include "eeprom/RecordValue.h"

namespace corvane {

struct HaldenParameter {
  int number;
  RecordValue value;
  /// Longest text kept of it.
  std::size_t longestText;
};

/// Parameters that are also written on their own.
enum class HaldenPart { kOther, kOptics, kOffsets };

/// The first of the parameters by which turrets count: a turret is there when its text is not empty.
inline constexpr int kHaldenFirstTurretText = 122;

/// Moves one parameter; false ends the walk.
using HaldenTransfer = std::function<bool(const HaldenParameter& parameter)>;

/// Walks every parameter of the record in the order of travel. False when a transfer ended the walk.
bool WalkHaldenParameters(MerakEepromRecord& record, const HaldenTransfer& transfer);
/// Walks one part: focal length, angular deviation and tilt, or the offsets of all gratings and then of the detectors.
bool WalkHaldenParameters(HaldenPart part, MerakEepromRecord& record, const HaldenTransfer& transfer);

}  // namespace corvane
