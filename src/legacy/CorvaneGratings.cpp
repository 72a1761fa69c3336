// Corvane: gratings, turrets and the offsets in steps that belong to them.
#include <algorithm>

#include "legacy/Corvane.h"

using corvane::CorvDataValues;

bool Corvane::IsGrating(int grating) {
  return grating >= 1 && grating <= static_cast<int>(CorvDataValues::kGratings);
}

const CorvDataValues::Grating& Corvane::Grating(int grating) const {
  return mData.values.ActiveTurret().gratings[static_cast<std::size_t>(grating - 1)];
}

unsigned int Corvane::GetGrating(int* grating) {
  if (!HasData()) {
    return kNoData;
  }
  *grating = mGrating;
  return kSuccess;
}

unsigned int Corvane::GetNumberGratings(int* count) {
  if (!HasData()) {
    return kNoData;
  }
  *count = mData.values.ActiveTurret().numberOfGratings;
  return kSuccess;
}

unsigned int Corvane::GetGratingInfoEx(int grating, float* lines, const char** blaze, float* home, float* offset) {
  if (!HasData()) {
    return kNoData;
  }
  const int number = FromZeroBased(grating);
  if (!IsGrating(number)) {
    return kFailure;
  }
  const CorvDataValues::Grating& info = Grating(number);
  *lines = info.lines;
  *blaze = info.blaze.c_str();
  *home = static_cast<float>(info.start);
  *offset = static_cast<float>(info.offset);
  return kSuccess;
}

unsigned int Corvane::SetTurret(int turret) {
  if (!HasData()) {
    return kNoData;
  }
  CorvDataValues& values = mData.values;
  if (turret < 1 || turret > std::min(values.numberOfTurrets, static_cast<int>(CorvDataValues::kTurrets))) {
    return kFailure;
  }
  values.turret = turret;
  mGrating = 1;
  return Store(&values.turret);
}

unsigned int Corvane::GetTurret(int& turret) {
  if (!HasData()) {
    return kNoData;
  }
  turret = mData.values.turret;
  return kSuccess;
}

unsigned int Corvane::ModifyOffset(std::int32_t& held, int offset, bool inUse) {
  const std::int64_t shift = std::int64_t{offset} - held;
  held = offset;
  unsigned int result = kSuccess;
  if (inUse && shift != 0 && mWaveSteps != kNoStepPosition && !MoveWaveDrive(mWaveSteps + shift, result)) {
    result = kFailure;
  }
  return Store(&held) == kSuccess ? result : kFailure;
}

unsigned int Corvane::ModifyDetectorOffset(int entrance, int exit, int offset) {
  if (!HasData()) {
    return kNoData;
  }
  if (entrance != 0 || exit < 0 || exit > 1) {
    return kFailure;
  }
  return ModifyOffset(mData.values.detectorOffset[static_cast<std::size_t>(exit)], offset, exit == PortInUse());
}

unsigned int Corvane::ModifyDetectorOffset(int offset) {
  return ModifyDetectorOffset(0, 0, offset);
}

unsigned int Corvane::GetDetectorOffset(int entrance, int exit, int* offset) {
  if (!HasData()) {
    return kNoData;
  }
  if (entrance != 0 || exit < 0 || exit > 1) {
    return kFailure;
  }
  *offset = mData.values.detectorOffset[static_cast<std::size_t>(exit)];
  return kSuccess;
}

unsigned int Corvane::ModifyGratingOffset(int grating, int offset) {
  if (!HasData()) {
    return kNoData;
  }
  const int number = FromZeroBased(grating);
  if (!IsGrating(number)) {
    return kFailure;
  }
  CorvDataValues::Grating& changed = mData.values.ActiveTurret().gratings[static_cast<std::size_t>(number - 1)];
  return ModifyOffset(changed.offset, offset, number == mGrating);
}

unsigned int Corvane::HeldGratingOffset(int grating, int* offset) const {
  const int number = FromZeroBased(grating);
  if (!IsGrating(number)) {
    return kFailure;
  }
  *offset = Grating(number).offset;
  return kSuccess;
}
