// One motorised slit of a controller instrument. The controller turns widths into motor steps. Nothing asks whether the
// slit is fitted before it is told to do something: the controller knows, and its refusal is thrown.
//
// Failures throw TCorvaneException with the controller's code: merak::kIoError for a reply without the number asked
// for, merak::kNotSupported for slit modes on firmware below 2.7, which has none.
#pragma once

#include <string>
#include <string_view>

#include "core/ISpectrographSlit.h"
#include "core/TCVNAcquisitionAborter.h"

class TMerakOrbis;

class TCorvaneMerakSlit final : public ISpectrographSlit {
 public:
  /// Thrown for a position that is none; the one failure that carries the code of success.
  static constexpr int kUnknownPosition = 0;

  /// The controller is borrowed and outlives the component. Throws kUnknownPosition.
  TCorvaneMerakSlit(TMerakOrbis& controller, TSlitPosition position);

  /// The controller's peripheral list covers this slit; false when it cannot be had.
  bool IsPresent() override;
  /// "SLIT_WIDTH" with the whole micrometres of the width. Busy meanwhile. Once kIoError without a word when the
  /// controller was silent as it was asked for the mode, and has not been heard since.
  void SetSlit(float width) override;
  /// "SLIT_WIDTH?", micrometres.
  float GetSlit() override;
  /// "SLIT_MODE".
  void SetSlitMode(const char* mode) override;
  /// "SLIT_MODE?". At most 35 characters; a reply without a mode gives the one read before.
  const char* GetSlitMode() override;
  /// "SLITHOME". Busy meanwhile.
  void Reset() override;
  void UnsafeReset() override;
  /// The controller does not tell motor positions of slits.
  int GetSlitStep() override { return corvane::kNoStepPosition; }

 private:
  TMerakOrbis& mController;
  /// How the controller counts this slit, and its name in the peripheral list.
  int mNumber;
  std::string_view mTag;
  std::string mMode;
  bool mModeMetSilence = false;
  TCVNAcquisitionAborter mAborter{false};
};
