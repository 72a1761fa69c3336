#include "components/TMCorvaneWaveStrategyBuiltIn.h"

#include "controller/TMerakOrbis.h"

MerakResult TMCorvaneWaveStrategyBuiltIn::SetWavelength(float nm) {
  return mController.MoveTo(nm);
}

MerakResult TMCorvaneWaveStrategyBuiltIn::GetWavelength(float& nm) {
  return mController.Position(nm);
}
