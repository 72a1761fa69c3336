#include "components/TCorvaneMerakFocusMirror.h"

#include "components/MerakOperation.h"
#include "controller/TMerakOrbis.h"
#include "core/TAutoFocus.h"

namespace {

constexpr const char* kName = "FOC";

}  // namespace

bool TCorvaneMerakFocusMirror::IsPresent() {
  return corvane::ListsPeripheral(mAborter, mController, kName);
}

bool TCorvaneMerakFocusMirror::Fitted() {
  bool listed = false;
  corvane::RunPaused(mAborter, [&] { return mController.ListsPeripheral(kName, listed); });
  return listed;
}

void TCorvaneMerakFocusMirror::SetMirrorFocus(int steps) {
  if (Fitted()) {
    corvane::RunBusy(mAborter, *this, [&] { return mController.SetMirrorFocus(steps); });
  }
}

int TCorvaneMerakFocusMirror::GetMirrorFocus() {
  if (!Fitted()) {
    return 0;
  }
  return corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetMirrorFocus(given); });
}

int TCorvaneMerakFocusMirror::GetFocusMirrorMaxSteps() {
  if (!Fitted()) {
    return 0;
  }
  return corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetFocusMirrorMaxSteps(given); });
}

void TCorvaneMerakFocusMirror::Reset() {
  if (Fitted()) {
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
