#include "components/TMCorvaneGratingStrategyBuiltIn.h"

#include "controller/TMerakOrbis.h"
#include "eeprom/TTivanMerakEeprom.h"

MerakResult TMCorvaneGratingStrategyBuiltIn::SetGrating(int grating, eWavelengthOption option) {
  const MerakResult result = mController.Grating(grating);
  return result == merak::kSuccess && option == kGoHome ? mController.GratingHome() : result;
}

MerakResult TMCorvaneGratingStrategyBuiltIn::GetGrating(int& grating) {
  return mController.GetGrating(grating);
}

MerakResult TMCorvaneGratingStrategyBuiltIn::SetGratingOffset(int grating, int offset) {
  if (!mController.HasEepromRecord()) {
    return merak::kDeviceNotOpen;
  }
  const MerakResult stored = mController.SetActiveTurretGratingOffset(grating - 1, offset);
  if (stored == TTivanMerakEeprom::kOutOfRange) {
    return merak::kUnknownError;
  }
  // Deliberately without a result, as any other code of the record: the offset is stored, and the next move takes it in
  // at the latest. A controller that fell silent over it is not waited for a second time.
  if (stored == merak::kSuccess || !mController.IsSilent()) {
    mController.ResetPosition();
  }
  return merak::kSuccess;
}

MerakResult TMCorvaneGratingStrategyBuiltIn::GetGratingOffset(int grating, int& offset) {
  offset = mController.GetActiveTurretGratingOffset(grating - 1);
  return merak::kSuccess;
}

MerakResult TMCorvaneGratingStrategyBuiltIn::SetDetectorOffset(int entrance, int exit, int offset) {
  if (!mController.HasEepromRecord()) {
    return merak::kDeviceNotOpen;
  }
  mController.SetDetectorOffset(entrance, exit, offset);
  mController.ResetPosition();
  return merak::kSuccess;
}

MerakResult TMCorvaneGratingStrategyBuiltIn::GetDetectorOffset(int entrance, int exit, int& offset) {
  offset = mController.GetDetectorOffset(entrance, exit);
  return merak::kSuccess;
}
