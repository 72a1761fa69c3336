#include "components/TCorvaneMerakGrating.h"

#include "components/MerakOperation.h"
#include "components/TCorvaneMerakGratingInfo.h"
#include "components/TCorvaneMerakStepTurret.h"
#include "components/TMerakSpectrographDevice.h"
#include "controller/TMerakOrbis.h"

using corvane::ReadGratings;
using corvane::ReadRecord;
using corvane::RequireIndex;
using corvane::RunBusy;
using corvane::RunPaused;

TCorvaneMerakGrating::TCorvaneMerakGrating(TMerakSpectrographDevice& device)
    : mDevice(device), mController(device.GetMerakOrbis()), mBuiltIn(mController) {
  mBlaze.fill("300");
}

TMCorvaneGratingStrategy& TCorvaneMerakGrating::Strategy() {
  // Chosen afresh for every call: a changed flag takes effect at once.
  if (mController.GetWaveToStepsEnable() != 0) {
    return mDevice.GetStepTurret();
  }
  return mBuiltIn;
}

void TCorvaneMerakGrating::SetGrating(int grating) {
  RunBusy(mAborter, *this,
          [&] { return Strategy().SetGrating(grating + 1, TMCorvaneGratingStrategy::kKeepWavelength); });
}

int TCorvaneMerakGrating::GetGrating() {
  int grating = 0;
  RunPaused(mAborter, [&] { return Strategy().GetGrating(grating); });
  return grating - 1;
}

void TCorvaneMerakGrating::Reset() {
  RunBusy(mAborter, *this, [&] { return Strategy().SetGrating(1, TMCorvaneGratingStrategy::kGoHome); });
}

void TCorvaneMerakGrating::UnsafeReset() {
  const corvane::AcquisitionPause pause(mAborter);
  Reset();
}

int TCorvaneMerakGrating::GetNumberGratings() {
  int count = 0;
  ReadGratings(mAborter, mController, [&] { count = mController.GetActiveTurretNoOfGratings(); });
  return count;
}

void TCorvaneMerakGrating::GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) {
  RequireIndex(grating, static_cast<int>(mBlaze.size()));
  ReadGratings(mAborter, mController, [&] {
    const TCorvaneMerakGratingInfo info(mController);
    lines = info.GetLines(grating);
    std::string& text = mBlaze[static_cast<std::size_t>(grating)];
    text = info.GetBlaze(grating);
    blaze = text.c_str();
    home = static_cast<float>(mController.GetActiveTurretGratingStart(grating));
    offset = static_cast<float>(mController.GetActiveTurretGratingOffset(grating));
  });
}

void TCorvaneMerakGrating::SetDetectorOffset(int entrance, int exit, int offset) {
  RunBusy(mAborter, *this, [&] { return Strategy().SetDetectorOffset(entrance, exit, offset); });
}

int TCorvaneMerakGrating::GetDetectorOffset(int entrance, int exit) {
  int offset = 0;
  ReadRecord(mAborter, mController, [&] { Strategy().GetDetectorOffset(entrance, exit, offset); });
  return offset;
}

void TCorvaneMerakGrating::ReadPorts(int& entrance, int& exit) {
  RunPaused(mAborter, [&] {
    const auto ask = [this](int& port, MerakResult (TMerakOrbis::*query)(int&)) {
      return corvane::RequireNumber(port, [&](int& given) { return (mController.*query)(given); });
    };
    const MerakResult result = ask(entrance, &TMerakOrbis::GetEntrancePort);
    return result == merak::kSuccess ? ask(exit, &TMerakOrbis::GetExitPort) : result;
  });
}

void TCorvaneMerakGrating::SetDetectorOffset(int offset) {
  int entrance = 0;
  int exit = 0;
  ReadPorts(entrance, exit);
  SetDetectorOffset(entrance, exit, offset);
}

int TCorvaneMerakGrating::GetDetectorOffset() {
  int entrance = 0;
  int exit = 0;
  ReadPorts(entrance, exit);
  return GetDetectorOffset(entrance, exit);
}

void TCorvaneMerakGrating::SetGratingOffset(int grating, int offset) {
  RequireIndex(grating, static_cast<int>(mBlaze.size()));
  RunBusy(mAborter, *this, [&] { return Strategy().SetGratingOffset(grating + 1, offset); });
}

int TCorvaneMerakGrating::GetGratingOffset(int grating) {
  RequireIndex(grating, static_cast<int>(mBlaze.size()));
  int offset = 0;
  ReadRecord(mAborter, mController, [&] { Strategy().GetGratingOffset(grating + 1, offset); });
  return offset;
}

void TCorvaneMerakGrating::GratingOffsetAutoAdjust() {
  RunBusy(mAborter, *this, [&] { return Strategy().GratingOffsetAutoAdjust(); });
}

void TCorvaneMerakGrating::GratingOffsetCancelAutoAdjust() {
  corvane::ThrowOnFailure(Strategy().GratingOffsetCancelAutoAdjust());
}

void TCorvaneMerakGrating::SetTurret(int turret) {
  RunPaused(mAborter, [&] { return mController.SetActiveTurret(turret); });
}

int TCorvaneMerakGrating::GetTurret() {
  int turret = 0;
  ReadRecord(mAborter, mController, [&] { turret = mController.GetActiveTurret(); });
  return turret;
}
