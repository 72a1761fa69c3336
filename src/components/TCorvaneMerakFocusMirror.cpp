#include "components/TCorvaneMerakFocusMirror.h"

#include <utility>

#include "components/MerakOperation.h"
#include "controller/TMerakOrbis.h"
#include "core/TAutoFocus.h"

namespace {

constexpr const char* kName = "FOC";

}  // namespace

bool TCorvaneMerakFocusMirror::IsPresent() {
  return IsListed(Asked::kNothing);
}

bool TCorvaneMerakFocusMirror::IsListed(Asked what) {
  const corvane::AcquisitionPause pause(mAborter);
  bool listed = false;
  const MerakResult result = mController.FindInPeripheralNames(kName, listed);
  mMetSilence = result == merak::kIoError && mController.IsSilent() ? what : Asked::kNothing;
  return result == merak::kSuccess && listed;
}

void TCorvaneMerakFocusMirror::SetMirrorFocus(int steps) {
  if (std::exchange(mMetSilence, Asked::kNothing) == Asked::kPosition && mController.IsSilent()) {
    throw TCorvaneException(merak::kIoError);
  }
  if (corvane::ReadListContainsText(mAborter, mController, kName)) {
    if (mPositionUnknown) {
      throw TCorvaneException(merak::kIoError);
    }
    corvane::RunBusy(mAborter, *this, [&] { return mController.SetMirrorFocus(steps); });
  } else if (mPositionRead) {
    throw TCorvaneException(merak::kIoError);
  }
}

int TCorvaneMerakFocusMirror::GetMirrorFocus() {
  mPositionRead = false;
  if (mMetSilence == Asked::kTravel && mController.IsSilent()) {
    mMetSilence = Asked::kPosition;
    mPositionUnknown = true;
    return 0;
  }
  mPositionUnknown = !IsListed(Asked::kPosition);
  if (mPositionUnknown) {
    return 0;
  }
  const int position = corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetMirrorFocus(given); });
  mPositionRead = true;
  return position;
}

int TCorvaneMerakFocusMirror::GetFocusMirrorMaxSteps() {
  if (!IsListed(Asked::kTravel)) {
    return 0;
  }
  return corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetFocusMirrorMaxSteps(given); });
}

void TCorvaneMerakFocusMirror::Reset() {
  if (IsPresent()) {
    corvane::RunBusy(mAborter, *this, [&] { return mController.FocusMirrorHome(); });
  }
}

bool TCorvaneMerakFocusMirror::FnAutoFocus() {
  return TAutoFocus().DoAutoFocus();
}

bool TCorvaneMerakFocusMirror::FnCancelAutoFocus() {
  return TAutoFocus().CancelAutoFocus();
}

bool TCorvaneMerakFocusMirror::FocusMirrorAutoFocus() {
  bool focused = false;
  corvane::RunBusy(mAborter, *this, [&] {
    focused = FnAutoFocus();
    return merak::kSuccess;
  });
  return focused;
}

bool TCorvaneMerakFocusMirror::FocusMirrorCancelAutoFocus() {
  return FnCancelAutoFocus();
}
