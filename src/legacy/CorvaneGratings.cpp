// Corvane: gratings, turrets and the offsets in steps that belong to them.
#include <algorithm>
#include <variant>

#include "legacy/Corvane.h"

using corvane::CorvDataValues;
using corvane::CorvField;

bool Corvane::IsGrating(int grating) {
  return grating >= 1 && grating <= static_cast<int>(CorvDataValues::kGratings);
}

const CorvDataValues::Grating& Corvane::Grating(int grating) const {
  return mData.values.ActiveTurret().gratings[static_cast<std::size_t>(grating - 1)];
}

bool Corvane::IsPort(int entrance, int exit) {
  return entrance == 0 && (exit == 0 || exit == 1);
}

unsigned int Corvane::GetGrating(int* grating) {
  return OnRecord([&](auto&) {
    *grating = mGrating;
    return kSuccess;
  });
}

unsigned int Corvane::GetNumberGratings(int* count) {
  return OnRecord([&](const CorvDataValues& values) {
    *count = values.ActiveTurret().numberOfGratings;
    return kSuccess;
  });
}

unsigned int Corvane::GetGratingInfoEx(int grating, float* lines, const char** blaze, float* home, float* offset) {
  const int number = FromZeroBased(grating);
  return OnRecord(IsGrating(number), [&](auto&) {
    const CorvDataValues::Grating& info = Grating(number);
    *lines = info.lines;
    *blaze = info.blaze.c_str();
    *home = static_cast<float>(info.start);
    *offset = static_cast<float>(info.offset);
    return kSuccess;
  });
}

unsigned int Corvane::SetTurret(int turret) {
  const int turrets = std::min(mData.values.numberOfTurrets, static_cast<int>(CorvDataValues::kTurrets));
  return OnRecord(turret >= 1 && turret <= turrets, [&](CorvDataValues& values) {
    values.turret = turret;
    mGrating = 1;
    return Store({CorvField::kTurret});
  });
}

unsigned int Corvane::GetTurret(int& turret) {
  return OnRecord([&](const CorvDataValues& values) {
    turret = values.turret;
    return kSuccess;
  });
}

unsigned int Corvane::ModifyOffset(corvane::CorvValueId which, int offset, bool inUse) {
  std::int32_t& held = *std::get<std::int32_t*>(corvane::ValueOf(mData.values, which));
  const std::int64_t shift = std::int64_t{offset} - held;
  held = offset;
  unsigned int result = kSuccess;
  if (inUse && shift != 0 && mWaveSteps != kNoStepPosition && !MoveWaveDrive(mWaveSteps + shift, result)) {
    result = kFailure;
  }
  return Store(which) == kSuccess ? result : kFailure;
}

unsigned int Corvane::ModifyDetectorOffset(int entrance, int exit, int offset) {
  return OnRecord(IsPort(entrance, exit), [&](auto&) {
    return ModifyOffset({CorvField::kDetectorOffset, static_cast<std::size_t>(exit)}, offset, exit == PortInUse());
  });
}

unsigned int Corvane::ModifyDetectorOffset(int offset) {
  return ModifyDetectorOffset(0, 0, offset);
}

unsigned int Corvane::GetDetectorOffset(int entrance, int exit, int* offset) {
  return OnRecord(IsPort(entrance, exit), [&](const CorvDataValues& values) {
    *offset = values.detectorOffset[static_cast<std::size_t>(exit)];
    return kSuccess;
  });
}

unsigned int Corvane::ModifyGratingOffset(int grating, int offset) {
  const int number = FromZeroBased(grating);
  return OnRecord(IsGrating(number), [&](const CorvDataValues& values) {
    const corvane::CorvElements offsets = corvane::OfTurret(values.ActiveTurretIndex(), CorvField::kGratingOffset);
    return ModifyOffset(offsets[static_cast<std::size_t>(number - 1)], offset, number == mGrating);
  });
}

unsigned int Corvane::HeldGratingOffset(int grating, int* offset) const {
  const int number = FromZeroBased(grating);
  if (!IsGrating(number)) {
    return kFailure;
  }
  *offset = Grating(number).offset;
  return kSuccess;
}
