// What an instrument remembers without power: bytes on an LX or MX, numbered texts on an SX. Used by
// ControllerInstrument and by the state file.
#pragma once

#include "controller/EepromImage.h"
#include "controller/ParameterMemory.h"

namespace corvane::sim {

struct InstrumentMemory {
  EepromImage bytes;           ///< all zero on an SX
  ParameterMemory parameters;  ///< all empty on others

  InstrumentMemory() = default;
  /// As the instrument leaves the works: the description's record and its patches.
  explicit InstrumentMemory(const InstrumentDescription& description);

  /// The record as the firmware sees it: what the memory holds, and the description for what its layout lacks. The
  /// active turret of an SX is not in it (0).
  Record Decode(const InstrumentDescription& description) const;
};

}  // namespace corvane::sim
