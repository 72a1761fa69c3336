// Corvane: the slits. This library's own sequence.
//
// The instrument has no register for a slit's position: what the record holds as its width is the only bookkeeping. A
// slit moves straight to its target; a reset closes it against its stop, where the first calibration point lies.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "legacy/Corvane.h"

using corvane::CorvDataValues;

namespace {

/// Steps by which a second approach to the stop backs off.
constexpr int kApproach = 100;

/// Nobody knows where the slit stands.
constexpr float kNoWidth = std::numeric_limits<float>::quiet_NaN();

constexpr corvane::CorvMotor kSlitMotors[] = {corvane::kSlitMotor, corvane::kSecondSlitMotor};

/// The positions a slit's motor may be sent to; its stop may lie below the stored minimum.
struct SlitRange {
  std::int64_t min;
  std::int64_t max;
};

SlitRange RangeOf(const CorvDataValues& values, int slit) {
  const CorvDataValues::Motion& motion = values.motors[static_cast<std::size_t>(kSlitMotors[slit])];
  const CorvDataValues::SlitPoint& stop = values.slits[static_cast<std::size_t>(slit)].points.front();
  return {std::min(motion.minSteps, stop.steps), motion.maxSteps};
}

}  // namespace

bool Corvane::IsSlit(int slit) {
  return slit >= 0 && slit < static_cast<int>(CorvDataValues::kSlits);
}

unsigned int Corvane::SetSlit(int slit, float width) {
  return OnRecord(IsSlit(slit), [&](CorvDataValues& values) -> unsigned int {
    float& held = values.currentSlit[static_cast<std::size_t>(slit)];
    if (!mData.SlitConverts(slit, width) || !mData.SlitConverts(slit, held)) {
      return kFailure;
    }
    const std::int64_t target = mData.ConvertSlitToSteps(slit, width);
    const std::int64_t distance = target - mData.ConvertSlitToSteps(slit, held);
    const SlitRange range = RangeOf(values, slit);
    if (target < range.min || target > range.max) {
      return kFailure;
    }
    unsigned int result = kSuccess;
    held = kNoWidth;
    if (distance != 0 && (!Travel(kSlitMotors[slit], distance > 0, std::abs(distance), result) || result != kSuccess)) {
      return kFailure;
    }
    return KeepSlit(slit, width);
  });
}

unsigned int Corvane::KeepSlit(int slit, float width) {
  const auto index = static_cast<std::size_t>(slit);
  mData.values.currentSlit[index] = width;
  return Store({corvane::CorvField::kCurrentSlit, index});
}

unsigned int Corvane::GetSlit(int slit, float* width) {
  return OnRecord(IsSlit(slit), [&](const CorvDataValues& values) {
    const float held = values.currentSlit[static_cast<std::size_t>(slit)];
    if (!std::isfinite(held)) {
      return kFailure;
    }
    *width = held;
    return kSuccess;
  });
}

unsigned int Corvane::ResetSlit(int slit, bool twice) {
  return OnRecord(IsSlit(slit), [&](CorvDataValues& values) -> unsigned int {
    const auto index = static_cast<std::size_t>(slit);
    const int motor = kSlitMotors[slit];
    const SlitRange range = RangeOf(values, slit);
    if (range.max <= range.min) {
      return kFailure;
    }
    unsigned int result = kSuccess;
    values.currentSlit[index] = kNoWidth;
    if (!Travel(motor, false, range.max - range.min, result) ||
        (twice && !(Travel(motor, true, kApproach, result) && Travel(motor, false, kApproach, result))) ||
        result != kSuccess) {
      return kFailure;
    }
    return KeepSlit(slit, static_cast<float>(values.slits[index].points.front().width));
  });
}

unsigned int Corvane::GetCurrentSlitSteps(int slit, int* steps) {
  float width = 0.0F;
  const unsigned int result = GetSlit(slit, &width);
  if (result != kSuccess) {
    return result;
  }
  if (!mData.SlitConverts(slit, width)) {
    return kFailure;
  }
  *steps = mData.ConvertSlitToSteps(slit, width);
  return kSuccess;
}

unsigned int Corvane::ReadSlitCoefficients(int& steps1, int& width1, int& steps2, int& width2) {
  return OnRecord([&](const CorvDataValues& values) -> int {
    if (values.loadedFromEeprom) {
      return mData.ReadSlitCoefficients(steps1, width1, steps2, width2);
    }
    const auto& [first, second] = values.slits.front().points;
    steps1 = first.steps;
    width1 = first.width;
    steps2 = second.steps;
    width2 = second.width;
    return corvane::legacy::kSuccess;
  });
}

unsigned int Corvane::WriteSlitCoefficients(int steps1, int width1, int steps2, int width2) {
  // What no line goes through is refused, and an EEPROM that holds no record of ours stays as it is.
  return OnRecord(width1 != width2 && mData.values.loadedFromEeprom,
                  [&](auto&) { return mData.WriteSlitCoefficients(steps1, width1, steps2, width2); });
}
