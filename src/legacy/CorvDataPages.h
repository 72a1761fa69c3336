// The EEPROM of an older instrument: six pages of 256 bytes. One table says where each value lies, how it is stored and
// since which structure version; reading, writing, their steps and the writing of single values walk it. Writing a
// single value that the structure version at hand does not have succeeds and writes nothing.
#pragma once

#include "legacy/CorvDataField.h"
#include "legacy/CorvDataValues.h"
#include "legacy/LegacyBus.h"

namespace corvane {

/// The step that brings the last of the values without which an instrument is not usable, and the last step of all.
inline constexpr int kFilterPageStep = 21;
inline constexpr int kLastPageStep = 25;

/// One step of reading; steps 11 to 22 read, all others have nothing to do. The address and the version come before the
/// rest of page 0, the profiles of all motors before the rest of pages 1 to 4, and otherwise fields in the order in
/// which they lie there, but a turret's third blaze with its others. Leaves out what the structure version in `values`
/// lacks. A version text of another form leaves the version as it is. kFailure when a transfer fails or the EEPROM
/// holds no record; kBeyondLimits for a
/// structure that is newer than 3.0.
int ReadPageStep(LegacyBus& bus, int step, CorvDataValues& values);

/// One step of writing with read-back; steps 11 to 25. Writes every field, whatever the structure version; only the
/// blazes follow it, which have moved. The EEPROM is in write mode.
int WritePageStep(LegacyBus& bus, int step, CorvDataValues& values);

/// Reads one of `values`, or writes it with read-back; kFailure also for one that the EEPROM does not hold.
int ReadPageValue(LegacyBus& bus, CorvDataValues& values, CorvValueId id);
int WritePageValue(LegacyBus& bus, CorvDataValues& values, CorvValueId id);

}  // namespace corvane
