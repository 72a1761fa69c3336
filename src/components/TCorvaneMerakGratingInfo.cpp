#include "components/TCorvaneMerakGratingInfo.h"

#include <cmath>

#include "components/TTivanMath.h"
#include "controller/TMerakOrbis.h"

float TCorvaneMerakGratingInfo::GetLines(int grating) const {
  return mController.GetActiveTurretGratingLines(grating);
}

std::string TCorvaneMerakGratingInfo::GetBlaze(int grating) const {
  return mController.GetActiveTurretGratingBlaze(grating);
}

float TCorvaneMerakGratingInfo::GetMaxWave(int grating) const {
  // Square root of 3, in nm per mm: 2 sin(60 degrees), the turret's greatest angle.
  constexpr float kGreatestSine = 1732050.75F;
  constexpr double kRadiansPerDegree = 0.017453292519943278;
  const float lines = GetLines(grating);
  if (TivanUtility::TTivanMath::IsZero(lines)) {
    return 0.0F;
  }
  const auto angle = static_cast<float>(mController.GetAngularDev() * kRadiansPerDegree);
  return static_cast<float>(kGreatestSine * std::cos(static_cast<double>(angle)) / lines);
}
