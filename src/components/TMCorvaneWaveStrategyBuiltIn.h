// Sets wavelengths by the controller's firmware: "MOVETO" and "POSITION".
#pragma once

#include "components/TMCorvaneWaveStrategy.h"

class TMerakOrbis;

class TMCorvaneWaveStrategyBuiltIn final : public TMCorvaneWaveStrategy {
 public:
  /// The controller is borrowed.
  explicit TMCorvaneWaveStrategyBuiltIn(TMerakOrbis& controller) : mController(controller) {}
  MerakResult SetWavelength(float nm) override;
  MerakResult GetWavelength(float& nm) override;

 private:
  TMerakOrbis& mController;
};
