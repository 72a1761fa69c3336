// One slit of a spectrograph. Operations that cannot be carried out throw TCorvaneException.
#pragma once

#include "core/StepPosition.h"
#include "core/TDeviceServer.h"

class ISpectrographSlit : public TBusyDeviceServer {
 public:
  /// Slit number of the exported functions (1 to 4) less one.
  enum TSlitPosition : int { kSlitPosition0 = 0, kSlitPosition1 = 1, kSlitPosition2 = 2, kSlitPosition3 = 3 };
  static constexpr int kPositions = 4;

  /// Opens the slit to a width in micrometres.
  virtual void SetSlit(float width) = 0;
  /// Width in micrometres.
  virtual float GetSlit() = 0;
  virtual void SetSlitMode(const char* mode) = 0;
  /// Mode text, owned by the component, valid until its next call.
  virtual const char* GetSlitMode() = 0;
  virtual void Reset() = 0;
  virtual void UnsafeReset() = 0;
  /// Motor position in steps, or corvane::kNoStepPosition.
  virtual int GetSlitStep() = 0;
};
