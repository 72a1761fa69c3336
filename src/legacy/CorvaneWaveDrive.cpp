// Corvane: the wave drive. It turns through EECorvData::kStepsPerTurn steps and always ends its moves forward.
#include <limits>

#include "components/optics/ReferenceLines.h"
#include "components/optics/TTivanMath.h"
#include "components/optics/WavelengthSpan.h"
#include "legacy/Corvane.h"
#include "platform/TimeSource.h"

namespace {

constexpr int kMotor = corvane::kWaveMotor;
constexpr int kHalfTurn = EECorvData::kStepsPerTurn / 2;
/// Steps by which a backward move overshoots, to come back forward.
constexpr int kOvershoot = 2000;
constexpr std::uint64_t kTurnaroundMilliseconds = 250;
constexpr std::uint64_t kGratingMilliseconds = 1000;
/// Blaze text of a plane mirror in a grating's place.
constexpr const char* kMirrorBlaze = "MIRR";

}  // namespace

unsigned int Corvane::GetCurrentWaveSteps(int* steps) {
  *steps = mWaveSteps;
  return kSuccess;
}

unsigned int Corvane::SaveCurrentWaveSteps(int steps) {
  mWaveSteps = steps;
  return kSuccess;
}

bool Corvane::MoveWaveDrive(std::int64_t target, unsigned int& result) {
  using Limits = std::numeric_limits<int>;
  int position = kNoStepPosition;
  if (target < Limits::min() || target > Limits::max() || GetCurrentWaveSteps(&position) != kSuccess) {
    return false;
  }
  if (position == kNoStepPosition) {
    if (ResetWavelength(true) != kSuccess) {
      return false;
    }
    position = 0;
  }
  std::int64_t distance = target - position;
  if (distance > kHalfTurn) {
    distance -= EECorvData::kStepsPerTurn;
  } else if (distance < -kHalfTurn) {
    distance += EECorvData::kStepsPerTurn;
  }
  if (!TurnWaveDrive(distance, result)) {
    // Nobody knows where it stands: it is homed before it moves again.
    SaveCurrentWaveSteps(kNoStepPosition);
    return false;
  }
  return SaveCurrentWaveSteps(static_cast<int>(target)) == kSuccess;
}

bool Corvane::TurnWaveDrive(std::int64_t distance, unsigned int& result) {
  const auto pulse = [&](bool forward, std::int64_t steps) {
    SetDirection(kMotor, forward);
    if (steps > std::numeric_limits<int>::max() || Pulse(kMotor, static_cast<int>(steps), 0) != kSuccess) {
      result = kFailure;
    }
  };
  if (distance > 0) {
    pulse(true, distance);
  } else if (distance < 0) {
    pulse(false, kOvershoot - distance);
    corvane::SleepMilliseconds(kTurnaroundMilliseconds);
    pulse(true, kOvershoot);
  }
  return mData.WaitForStandstill(kMotor) == legacy::kSuccess;
}

unsigned int Corvane::SetWavelength(float nm) {
  if (!HasData()) {
    return kNoData;
  }
  int grating = 0;
  if (GetGrating(&grating) != kSuccess) {
    return kFailure;
  }
  unsigned int result = kSuccess;
  MoveToWavelength(nm, grating, result);
  return result;
}

unsigned int Corvane::SetGrating(int grating) {
  if (!HasData()) {
    return kNoData;
  }
  if (!IsGrating(grating)) {
    return kFailure;
  }
  if (Grating(grating).blaze == kMirrorBlaze) {
    return GotoZeroOrder(grating);
  }
  float nm = 0.0F;
  if (GetWavelength(&nm) != kSuccess) {
    return kFailure;
  }
  unsigned int result = kSuccess;
  if (MoveToWavelength(nm, grating, result)) {
    // Whatever the pulses gave: the drive is where the new grating belongs.
    mGrating = grating;
    corvane::SleepMilliseconds(kGratingMilliseconds);
  }
  return result;
}

bool Corvane::MoveToWavelength(float nm, int grating, unsigned int& result) {
  result = kFailure;
  float min = 0.0F;
  float max = 0.0F;
  bool mirror = false;
  if (GetWavelengthLimits(grating, &min, &max) != kSuccess) {
    return false;
  }
  if (!(nm >= min && nm <= max)) {
    result = kOutsideLimits;
    return false;
  }
  if (GetMirrorPosition(mirror) != kSuccess) {
    return false;
  }
  const int port = mirror ? 0 : 1;
  const int target = mData.ConvertWaveToSteps(nm, grating, port);
  const corvane::CorvDataValues::Motion& range = mData.values.motors[kMotor];
  if (target > range.maxSteps || target < range.minSteps) {
    return false;
  }
  unsigned int pulses = kSuccess;
  if (!MoveWaveDrive(target, pulses)) {
    return false;
  }
  const float reached = mData.GetActualWavelength(nm, grating, port);
  result = StoreWave(Grating(grating).lines * reached / corvane::kReferenceLines) == kSuccess ? pulses : kFailure;
  return true;
}

unsigned int Corvane::GotoZeroOrder(int grating) {
  if (!HasData()) {
    return kNoData;
  }
  bool mirror = false;
  if ((!IsGrating(grating) && GetGrating(&grating) != kSuccess) || GetMirrorPosition(mirror) != kSuccess) {
    return kFailure;
  }
  const corvane::CorvDataValues::Grating& wanted = Grating(grating);
  const std::int64_t offset = mData.values.detectorOffset[mirror ? 0 : 1];
  unsigned int result = kSuccess;
  if (!MoveWaveDrive(offset + wanted.start + wanted.offset, result)) {
    return kFailure;
  }
  mGrating = grating;
  return StoreWave(0.0F) == kSuccess ? result : kFailure;
}

unsigned int Corvane::GetWavelength(float* nm) {
  if (!HasData()) {
    return kNoData;
  }
  const float lines = Grating(mGrating).lines;
  *nm = TivanUtility::TTivanMath::IsZero(lines) ? 0.0F : mData.values.currentWave * corvane::kReferenceLines / lines;
  return kSuccess;
}

unsigned int Corvane::AtZeroOrder(bool* atZeroOrder) {
  if (!HasData()) {
    return kNoData;
  }
  *atZeroOrder = mData.values.currentWave == 0.0F;
  return kSuccess;
}

unsigned int Corvane::GetWavelengthLimits(int grating, float* min, float* max) {
  if (!HasData()) {
    return kNoData;
  }
  const int asked = grating == kActiveGrating ? mGrating : grating;
  if (!IsGrating(asked)) {
    return kFailure;
  }
  *min = 0.0F;
  *max = corvane::GreatestWavelength(Grating(asked).lines, mData.values.angularDeviation);
  return kSuccess;
}
