// The motorised focus mirror of a controller instrument; positions in motor steps of its axis. Without one, and while
// the peripheral list cannot be had, positions are 0 and a reset does nothing, deliberately without an error. Only a
// move tells the two apart.
//
// Failures throw TCorvaneException with the controller's code, merak::kIoError for a reply without a number.
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
  /// "MOVE_FOCUS", a relative move; 0 steps send nothing. Busy meanwhile. Without a mirror nothing. Throws when the
  /// list cannot be had, and kIoError when it shows a mirror that it did not show as the position was asked for last (a
  /// caller that reckoned with that 0 would drive the mirror past its end), or shows none where a position could be
  /// read.
  void SetMirrorFocus(int steps) override;
  /// "FOCUS?". 0 without a word right behind a question for the travel that met silence.
  int GetMirrorFocus() override;
  /// "FOCUS_TOTALSTEPS?".
  int GetFocusMirrorMaxSteps() override;
  /// "FOCUS_HOME". Busy meanwhile.
  void Reset() override;
  /// False: there is no automatic focus. The clients see the component busy all the same.
  bool FocusMirrorAutoFocus() override;
  bool FocusMirrorCancelAutoFocus() override;

 private:
  /// For what the list was asked for. Travel, position and move follow each other: a controller that was silent at one
  /// of them is not waited for a second time at the next.
  enum class Asked { kNothing, kTravel, kPosition };

  bool IsListed(Asked what);
  static bool FnAutoFocus();
  static bool FnCancelAutoFocus();

  TMerakOrbis& mController;
  bool mPositionUnknown = false;
  bool mPositionRead = false;
  Asked mMetSilence = Asked::kNothing;
  TCVNAcquisitionAborter mAborter{false};
};
