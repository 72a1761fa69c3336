// Motorised focus mirror of a spectrograph; positions in motor steps. Operations that cannot be carried out throw
// TCorvaneException.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographFocusMirror : public TBusyDeviceServer {
 public:
  /// Relative move.
  virtual void SetMirrorFocus(int steps) = 0;
  virtual int GetMirrorFocus() = 0;
  virtual int GetFocusMirrorMaxSteps() = 0;
  virtual void Reset() = 0;
  virtual bool FocusMirrorAutoFocus() = 0;
  virtual bool FocusMirrorCancelAutoFocus() = 0;
};
