#include "components/TCorvaneMerakGratingInfo.h"

#include "components/optics/WavelengthSpan.h"
#include "controller/TMerakOrbis.h"

float TCorvaneMerakGratingInfo::GetLines(int grating) const {
  return mController.GetActiveTurretGratingLines(grating);
}

std::string TCorvaneMerakGratingInfo::GetBlaze(int grating) const {
  return mController.GetActiveTurretGratingBlaze(grating);
}

float TCorvaneMerakGratingInfo::GetMaxWave(int grating) const {
  return corvane::GreatestWavelength(GetLines(grating), mController.GetAngularDev());
}
