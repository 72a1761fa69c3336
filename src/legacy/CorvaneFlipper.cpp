// Corvane: the flipper mirror. This library's own sequence.
//
// The mirror turns forward to port 1 and backward to port 0, by the whole travel of its motor. Where it stands is known
// from the record alone, which may be wrong after a failure: it is sent even to where it is thought to be, which a
// drive against its stop does no harm to.
#include "core/PortLimits.h"
#include "legacy/Corvane.h"

namespace {

constexpr int kMotor = corvane::kFlipperMotor;

}  // namespace

unsigned int Corvane::SendMirror(int port) {
  corvane::CorvDataValues& values = mData.values;
  const std::int64_t travel = std::int64_t{values.motors[kMotor].maxSteps} - values.motors[kMotor].minSteps;
  unsigned int result = kSuccess;
  if (travel < 1 || !Travel(kMotor, port == 1, travel, result)) {
    return kFailure;
  }
  values.currentMirror = port;
  return Store({corvane::CorvField::kCurrentMirror}) == kSuccess ? result : kFailure;
}

unsigned int Corvane::SetMirrorPosition(bool mirror) {
  return OnRecord([&](auto&) { return SendMirror(mirror ? 0 : 1); });
}

unsigned int Corvane::GetMirrorPosition(bool& mirror) {
  return OnRecord([&](auto&) {
    mirror = PortInUse() == 0;
    return kSuccess;
  });
}

unsigned int Corvane::ResetMirror() {
  return OnRecord([&](auto&) { return SendMirror(0); });
}

unsigned int Corvane::GetPortCCDLimits(bool mirror, float& low, float& high, bool& limited) {
  const corvane::PortLimits& limits = mirror ? corvane::kDirectPort : corvane::kSidePort;
  low = limits.low;
  high = limits.high;
  limited = limits.limited;
  return kSuccess;
}
