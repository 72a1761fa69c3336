// The shutter of a controller instrument: deliberately none, although the controller knows a "SHUTTER_MODE". It is
// never present, and every operation throws TCorvaneException::kFailure.
#pragma once

#include "core/ISpectrographShutter.h"

class TMerakShutter final : public ISpectrographShutter {
 public:
  bool IsPresent() override { return false; }
  void SetExternalShutter(int mode) override;
  int GetExternalShutter() override;
  bool IsExternalModePossible(int mode) override;
  void SetInternalShutter(int mode) override;
  int GetInternalShutter() override;
  bool InternalShutterAvailable() override;
  void LoadShutterValues() override;
  void ExternalChange() override;
};
