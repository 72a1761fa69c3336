#include "components/TCorvaneMerakFocusMirror.h"

#include "components/MerakOperation.h"
#include "controller/TMerakOrbis.h"
#include "core/TAutoFocus.h"

namespace {

constexpr const char* kName = "FOC";

}  // namespace

bool TCorvaneMerakFocusMirror::IsPresent() {
  return corvane::ListContainsText(mAborter, mController, kName);
}

void TCorvaneMerakFocusMirror::SetMirrorFocus(int steps) {
  if (corvane::ReadListContainsText(mAborter, mController, kName)) {
    if (mPositionUnknown) {
      throw TCorvaneException(merak::kIoError);
    }
    corvane::RunBusy(mAborter, *this, [&] { return mController.SetMirrorFocus(steps); });
  }
}

int TCorvaneMerakFocusMirror::GetMirrorFocus() {
  mPositionUnknown = !IsPresent();
  if (mPositionUnknown) {
    return 0;
  }
  return corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetMirrorFocus(given); });
}

int TCorvaneMerakFocusMirror::GetFocusMirrorMaxSteps() {
  if (!IsPresent()) {
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
