#include "components/TCorvaneMerakStepTurret.h"

#include <algorithm>
#include <array>
#include <limits>

#include "components/MerakOperation.h"
#include "components/optics/ReferenceLines.h"
#include "components/optics/TStepperWaveToSteps.h"
#include "controller/TMerakOrbis.h"
#include "core/ISpectrographFlipper.h"
#include "eeprom/StructureVersion.h"
#include "eeprom/TTivanMerakEeprom.h"

namespace {

/// A position beyond int cannot be one; the controller refuses it as well when it arrives as the nearest bound.
int Saturate(std::int64_t steps) {
  return static_cast<int>(
      std::clamp<std::int64_t>(steps, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

MerakResult StorePort(int& held, int port) {
  if (port < 0 || port >= ISpectrographFlipper::kPorts) {
    return merak::kInvalidParameter;
  }
  held = port;
  return merak::kSuccess;
}

}  // namespace

MerakResult TCorvaneMerakStepTurret::ReadTotal(std::int64_t& total) {
  unsigned long given = 0;
  if (const MerakResult result = mController.GetTotalSteps(given); result != merak::kSuccess) {
    return result;
  }
  if (given == 0 || given > static_cast<unsigned long>(std::numeric_limits<int>::max())) {
    return merak::kIoError;
  }
  total = static_cast<std::int64_t>(given);
  return merak::kSuccess;
}

MerakResult TCorvaneMerakStepTurret::ReadPosition(int& step) {
  return corvane::RequireNumber(step, [this](int& given) { return mController.GetStep(given); });
}

MerakResult TCorvaneMerakStepTurret::SetCurrentExitPort(int port) {
  return StorePort(mExitPort, port);
}

MerakResult TCorvaneMerakStepTurret::SetCurrentEntrancePort(int port) {
  return StorePort(mEntrancePort, port);
}

MerakResult TCorvaneMerakStepTurret::RefreshPorts() {
  int port = mExitPort;
  if (mController.GetExitPort(port) == merak::kSuccess) {
    SetCurrentExitPort(port);
  } else if (mController.IsSilent()) {
    return merak::kIoError;
  }
  port = mEntrancePort;
  if (mController.GetEntrancePort(port) == merak::kSuccess) {
    SetCurrentEntrancePort(port);
  } else if (mController.IsSilent()) {
    return merak::kIoError;
  }
  return merak::kSuccess;
}

std::int64_t TCorvaneMerakStepTurret::ZeroPosition(int grating) {
  return std::int64_t{mController.GetActiveTurretGratingStart(grating)} +
         mController.GetActiveTurretGratingOffset(grating) + mController.GetDetectorOffset(mEntrancePort, mExitPort);
}

std::int64_t TCorvaneMerakStepTurret::tivanStepsToMerakSteps(std::int64_t steps, std::int64_t total) {
  // One wrap only.
  if (steps < 0) {
    return steps + total;
  }
  return steps >= total ? steps - total : steps;
}

std::int64_t TCorvaneMerakStepTurret::merakStepsToTivanSteps(std::int64_t steps, std::int64_t total) {
  const std::int64_t zero = ZeroPosition(0);
  const std::int64_t wrapped = tivanStepsToMerakSteps(zero, total);
  if (zero >= 0) {
    return steps < wrapped ? steps + total : steps;
  }
  return steps >= wrapped ? steps - total : steps;
}

MerakResult TCorvaneMerakStepTurret::StepShift(std::int64_t delta) {
  std::int64_t total = 0;
  int current = 0;
  if (const MerakResult result = ReadTotal(total); result != merak::kSuccess) {
    return result;
  }
  if (const MerakResult result = ReadPosition(current); result != merak::kSuccess) {
    return result;
  }
  if (current < 0 || current >= total) {
    return merak::kIoError;
  }
  return mController.StepAbs(Saturate(tivanStepsToMerakSteps(current + delta, total)));
}

MerakResult TCorvaneMerakStepTurret::MoveTo(int grating, float nm, std::int64_t total) {
  std::array<float, TStepperWaveToSteps::kCoefficients> coefficients{};
  for (int i = 0; i < TStepperWaveToSteps::kCoefficients; ++i) {
    coefficients[static_cast<std::size_t>(i)] = mController.GetWaveToStepsCoeff(i);
  }
  if (const MerakResult result = RefreshPorts(); result != merak::kSuccess) {
    return result;
  }
  const TStepperWaveToSteps converter(coefficients.data(), mController.GetSinAmplitude(), mController.GetSinPhase(),
                                      mController.GetSinFrequency(), static_cast<unsigned long>(total));
  const auto offset = static_cast<int>(ZeroPosition(grating - 1));
  const int version = corvane::StructureVersion::Parse(mController.GetStructureVersion()).majorNumber;
  const float x = nm / corvane::kReferenceLines * mController.GetActiveTurretGratingLines(grating - 1);
  const auto steps = static_cast<int>(converter.ToSteps(x, offset, version));
  const MerakResult result = mController.StepAbs(Saturate(tivanStepsToMerakSteps(steps, total)));
  if (result == merak::kSuccess) {
    // Its own failure is not the move's: the turret stands where it was asked to.
    mController.SetCurrentWavelength(nm);
  }
  return result;
}

MerakResult TCorvaneMerakStepTurret::SetWavelength(float nm) {
  std::int64_t total = 0;
  int grating = 0;
  if (const MerakResult result = ReadTotal(total); result != merak::kSuccess) {
    return result;
  }
  if (const MerakResult result = GetGrating(grating); result != merak::kSuccess) {
    return result;
  }
  return MoveTo(grating, nm, total);
}

MerakResult TCorvaneMerakStepTurret::GetWavelength(float& nm) {
  nm = mController.GetCurrentWavelength();
  return merak::kSuccess;
}

MerakResult TCorvaneMerakStepTurret::SetGrating(int grating, eWavelengthOption option) {
  if (grating < 1 || grating > kGratings) {
    return merak::kUnknownError;
  }
  std::int64_t total = 0;
  if (const MerakResult result = ReadTotal(total); result != merak::kSuccess) {
    return result;
  }
  float nm = 0.0F;
  if (option == kKeepWavelength) {
    GetWavelength(nm);
  }
  return MoveTo(grating, nm, total);
}

MerakResult TCorvaneMerakStepTurret::GetGrating(int& grating) {
  int position = 0;
  std::int64_t total = 0;
  if (const MerakResult result = ReadPosition(position); result != merak::kSuccess) {
    return result;
  }
  if (const MerakResult result = ReadTotal(total); result != merak::kSuccess) {
    return result;
  }
  if (position < 0 || position >= total) {
    return merak::kIoError;
  }
  // Unwrapped with the ports known so far; the comparison then takes the fresh ones.
  const std::int64_t steps = merakStepsToTivanSteps(position, total);
  if (const MerakResult result = RefreshPorts(); result != merak::kSuccess) {
    return result;
  }
  grating = kGratings;
  for (int i = kGratings - 1; i >= 0; --i) {
    if (steps >= ZeroPosition(i)) {
      grating = i + 1;
      break;
    }
  }
  return merak::kSuccess;
}

MerakResult TCorvaneMerakStepTurret::SetGratingOffset(int grating, int offset) {
  if (!mController.HasEepromRecord()) {
    return merak::kDeviceNotOpen;
  }
  int current = 0;
  if (const MerakResult result = GetGrating(current); result != merak::kSuccess) {
    return result;
  }
  const std::int64_t old = mController.GetActiveTurretGratingOffset(grating - 1);
  // Of other codes the turret takes no notice: the offset is stored, and the turret belongs where it says.
  if (mController.SetActiveTurretGratingOffset(grating - 1, offset) == TTivanMerakEeprom::kOutOfRange) {
    return merak::kUnknownError;
  }
  return grating == current ? StepShift(offset - old) : merak::kSuccess;
}

MerakResult TCorvaneMerakStepTurret::GetGratingOffset(int grating, int& offset) {
  offset = mController.GetActiveTurretGratingOffset(grating - 1);
  return merak::kSuccess;
}

MerakResult TCorvaneMerakStepTurret::SetDetectorOffset(int entrance, int exit, int offset) {
  if (!mController.HasEepromRecord()) {
    return merak::kDeviceNotOpen;
  }
  const std::int64_t old = mController.GetDetectorOffset(entrance, exit);
  if (mController.SetDetectorOffset(entrance, exit, offset) == TTivanMerakEeprom::kOutOfRange) {
    return merak::kInvalidParameter;
  }
  return entrance == mEntrancePort && exit == mExitPort ? StepShift(offset - old) : merak::kSuccess;
}

MerakResult TCorvaneMerakStepTurret::GetDetectorOffset(int entrance, int exit, int& offset) {
  offset = mController.GetDetectorOffset(entrance, exit);
  return merak::kSuccess;
}
