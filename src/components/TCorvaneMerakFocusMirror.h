// The motorised focus mirror of a controller instrument; positions in motor steps of its axis. Without one, moves do
// nothing and positions are 0, deliberately without an error.
//
// Failures throw TCorvaneException with the controller's code, merak::kIoError for a reply without a number. That
// the peripheral list cannot be had is one: it leaves open whether there is a mirror, and a position of 0 would let
// moves run past the end.
#pragma once

#include "core/ISpectrographFocusMirror.h"
#include "core/TCVNAcquisitionAborter.h"

class TMerakOrbis;

class TCorvaneMerakFocusMirror final : public ISpectrographFocusMirror {
 public:
  /// The controller is borrowed and outlives the component.
  explicit TCorvaneMerakFocusMirror(TMerakOrbis& controller) : mController(controller) {}

  /// A name in the controller's peripheral list contains "FOC"; false when the list cannot be had.
  bool IsPresent() override;
  /// "MOVE_FOCUS", a relative move; 0 steps send nothing. Busy meanwhile.
  void SetMirrorFocus(int steps) override;
  /// "FOCUS?".
  int GetMirrorFocus() override;
  /// "FOCUS_TOTALSTEPS?".
  int GetFocusMirrorMaxSteps() override;
  /// "FOCUS_HOME". Busy meanwhile.
  void Reset() override;
  /// False: there is no automatic focus. The clients see the component busy all the same.
  bool FocusMirrorAutoFocus() override;
  bool FocusMirrorCancelAutoFocus() override;

 private:
  /// As IsPresent, but throws when the list cannot be had.
  bool ReadPresence();
  static bool FnAutoFocus();
  static bool FnCancelAutoFocus();

  TMerakOrbis& mController;
  TCVNAcquisitionAborter mAborter{false};
};
