// How the centre wavelength is set: by the controller's firmware (TMCorvaneWaveStrategyBuiltIn) or by steps computed
// here (TCorvaneMerakStepTurret). TMerakWavelength chooses one for every call. Results are controller codes
// (core/MerakResult.h).
#pragma once

#include "core/MerakResult.h"

class TMCorvaneWaveStrategy {
 public:
  virtual MerakResult SetWavelength(float nm) = 0;
  virtual MerakResult GetWavelength(float& nm) = 0;
  virtual ~TMCorvaneWaveStrategy() = default;
};
