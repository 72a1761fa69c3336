#include "components/TCorvaneMerakEeprom.h"

#include "components/MerakOperation.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "controller/TMerakOrbis.h"

using corvane::ReadGratings;
using corvane::ReadRecord;

int TCorvaneMerakEeprom::GetNumberGratings() {
  int count = 0;
  ReadGratings(mAborter, mController, [&] { count = mController.GetActiveTurretNoOfGratings(); });
  return count;
}

void TCorvaneMerakEeprom::GetGratingInfoEx(int grating, float& lines, const char*& blaze, float& home, float& offset) {
  GetGratingInfo(grating, lines, blaze);
  ReadRecord(mAborter, mController, [&] {
    home = static_cast<float>(mController.GetActiveTurretGratingStart(grating));
    offset = static_cast<float>(mController.GetActiveTurretGratingOffset(grating));
  });
}

void TCorvaneMerakEeprom::GetGratingInfo(int grating, float& lines, const char*& blaze) {
  constexpr std::size_t kLongestBlaze = 15;
  corvane::RequireIndex(grating, static_cast<int>(mBlaze.size()));
  ReadGratings(mAborter, mController, [&] {
    const TCorvaneMerakGratingInfo info(mController);
    lines = info.GetLines(grating);
    std::string& text = mBlaze[static_cast<std::size_t>(grating)];
    text = info.GetBlaze(grating).substr(0, kLongestBlaze);
    blaze = text.c_str();
  });
}

void TCorvaneMerakEeprom::GetOpticalParams(float& focalLength, float& angularDeviation, float& focalTilt) {
  corvane::RunPaused(
      mAborter, [&] { return mController.ReadOpticalParamsFromEEPROM(&focalLength, &angularDeviation, &focalTilt); });
}
