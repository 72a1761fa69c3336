// The file in which a simulated instrument keeps its memory and its positions from run to run; and where it stands, as
// a text for a look from outside.
#pragma once

#include <string>

#include "controller/InstrumentMemory.h"
#include "model/Positions.h"

namespace corvane::sim {

class ControllerInstrument;

/// docs/simulation.md has its keys. disturbed: lines that faults have hit.
std::string StateText(const ControllerInstrument& instrument, int disturbed);

/// False when there is no such file (outputs untouched). Throws std::runtime_error when the file is damaged, holds a
/// position that does not exist, or is one of another instrument.
bool LoadState(const InstrumentDescription& description, InstrumentMemory& memory, Positions& positions);

/// Replaces the file as a whole. A failure is reported on stderr: the instrument works on without keeping its state.
void SaveState(const InstrumentDescription& description, const InstrumentMemory& memory, const Positions& positions);

}  // namespace corvane::sim
