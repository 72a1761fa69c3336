// Corvane: the wave drive. It turns through EECorvData::kStepsPerTurn steps and always ends its moves forward.
#include <cmath>
#include <limits>
#include <optional>

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
  return Bus().WaitForStandstill(kMotor) == corvane::legacy::kSuccess;
}

unsigned int Corvane::SetWavelength(float nm) {
  return OnRecord([&](auto&) {
    unsigned int result = kSuccess;
    MoveToWavelength(nm, mGrating, result);
    return result;
  });
}

unsigned int Corvane::SetGrating(int grating) {
  return OnRecord(IsGrating(grating), [&](auto&) -> unsigned int {
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
  });
}

bool Corvane::MoveToWavelength(float nm, int grating, unsigned int& result) {
  result = kFailure;
  float min = 0.0F;
  float max = 0.0F;
  if (GetWavelengthLimits(grating, &min, &max) != kSuccess) {
    return false;
  }
  if (!(nm >= min && nm <= max)) {
    result = kBeyondLimits;
    return false;
  }
  const int port = PortInUse();
  const std::optional<int> target = mData.WavePosition(nm, grating, port);
  const corvane::CorvDataValues::Motion& range = mData.values.motors[kMotor];
  if (!target || *target > range.maxSteps || *target < range.minSteps) {
    return false;
  }
  unsigned int pulses = kSuccess;
  if (!MoveWaveDrive(*target, pulses)) {
    return false;
  }
  const float reached = mData.GetActualWavelength(nm, grating, port);
  result = StoreWave(Grating(grating).lines * reached / corvane::kReferenceLines) == kSuccess ? pulses : kFailure;
  return true;
}

unsigned int Corvane::GotoZeroOrder(int grating) {
  return OnRecord([&](auto&) { return MoveToZeroOrder(IsGrating(grating) ? grating : mGrating); });
}

unsigned int Corvane::MoveToZeroOrder(int grating) {
  const corvane::CorvDataValues::Grating& wanted = Grating(grating);
  const std::int64_t offset = mData.values.detectorOffset[static_cast<std::size_t>(PortInUse())];
  unsigned int result = kSuccess;
  if (!MoveWaveDrive(offset + wanted.start + wanted.offset, result)) {
    return kFailure;
  }
  mGrating = grating;
  return StoreWave(0.0F) == kSuccess ? result : kFailure;
}

unsigned int Corvane::GetWavelength(float* nm) {
  return OnRecord([&](const corvane::CorvDataValues& values) {
    const float lines = Grating(mGrating).lines;
    const float answer =
        TivanUtility::TTivanMath::IsZero(lines) ? 0.0F : values.currentWave * corvane::kReferenceLines / lines;
    if (!std::isfinite(values.currentWave) || !std::isfinite(answer)) {
      return kFailure;
    }
    *nm = answer;
    return kSuccess;
  });
}

unsigned int Corvane::AtZeroOrder(bool* atZeroOrder) {
  return OnRecord([&](const corvane::CorvDataValues& values) {
    if (!std::isfinite(values.currentWave)) {
      return kFailure;
    }
    *atZeroOrder = values.currentWave == 0.0F;
    return kSuccess;
  });
}

unsigned int Corvane::GetWavelengthLimits(int grating, float* min, float* max) {
  const int asked = grating == kActiveGrating ? mGrating : grating;
  return OnRecord(IsGrating(asked), [&](const corvane::CorvDataValues& values) {
    *min = 0.0F;
    *max = corvane::GreatestWavelength(Grating(asked).lines, values.angularDeviation);
    return kSuccess;
  });
}
