// The entrance slit of an older instrument, and the common part of its slits.
#pragma once

#include "core/ISpectrographSlit.h"
#include "legacy/Corvane.h"

/// Without a driver the slit is one that this model does not have. A slit that is not fitted, a mode, and every failure
/// throw TCorvaneException(TCorvaneException::kFailure).
class TSDKSlit : public ISpectrographSlit {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKSlit(Corvane* driver) : TSDKSlit(driver, 0, Corvane::kInputSlit) {}

  bool IsPresent() override;
  void SetSlit(float width) override;
  float GetSlit() override;
  /// These slits have no modes.
  void SetSlitMode(const char* mode) override;
  const char* GetSlitMode() override;
  void Reset() override;
  /// Finds the reference in one approach instead of two.
  void UnsafeReset() override;
  int GetSlitStep() override;

 protected:
  /// slit: the driver's number, from 0.
  TSDKSlit(Corvane* driver, int slit, Corvane::TPart part) : mDriver(driver), mSlit(slit), mPart(part) {}

 private:
  Corvane* mDriver;
  int mSlit;
  Corvane::TPart mPart;
};
