// The shutter of an older instrument: an external one, switched by an output line.
#pragma once

#include "core/ISpectrographShutter.h"

class Corvane;

/// A shutter that is not fitted and every failure throw TCorvaneException(TCorvaneException::kFailure).
class TSDKShutter final : public ISpectrographShutter {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKShutter(Corvane* driver) : mDriver(driver) {}

  bool IsPresent() override;
  void SetExternalShutter(int mode) override;
  /// The mode last set, 0 at first; the instrument is not asked.
  int GetExternalShutter() override;
  /// Modes 0 and 1.
  bool IsExternalModePossible(int mode) override;
  /// There is no internal shutter: both throw.
  void SetInternalShutter(int mode) override;
  int GetInternalShutter() override;
  bool InternalShutterAvailable() override { return false; }
  void LoadShutterValues() override {}
  /// Tells the clients.
  void ExternalChange() override;

 private:
  Corvane* mDriver;
  int mMode = 0;
};
