// The focus mirror that older instruments do not have: it is never present, so its operations throw
// TCorvaneException(TCorvaneException::kFailure).
#pragma once

#include "core/ISpectrographFocusMirror.h"

class Corvane;

class TSDKFocusMirror final : public ISpectrographFocusMirror {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKFocusMirror(Corvane* driver) : mDriver(driver) {}

  bool IsPresent() override;
  void SetMirrorFocus(int steps) override;
  int GetMirrorFocus() override;
  int GetFocusMirrorMaxSteps() override;
  void Reset() override;
  /// Do nothing and answer false, whether or not there is a mirror.
  bool FocusMirrorAutoFocus() override { return false; }
  bool FocusMirrorCancelAutoFocus() override { return false; }

 private:
  Corvane* mDriver;
};
