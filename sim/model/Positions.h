// Where the movable parts of a simulated instrument stand: what a state file keeps beside the memory.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

struct Positions {
  std::int64_t turret = 0;  ///< microsteps, in [0, total steps * microsteps)
  int grating = 1;          ///< the firmware's current grating, from 1
  int mountedTurret = 1;    ///< on an SX; on others the memory holds it
  int entrancePort = 0;
  int exitPort = 0;
  int filter = 1;
  std::string filterMode = "AUTO";
  int focus = 0;
  std::array<int, kSlits> slitWidths{};
  std::array<std::string, kSlits> slitModes{};
  int portOutputs = 0;  ///< four output lines, bits 0 to 3
  int shutterMode = 0;
};

}  // namespace corvane::sim
