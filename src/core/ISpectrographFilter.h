// Filter wheel of a spectrograph; filters are 0-based here. Operations that cannot be carried out throw
// TCorvaneException.
#pragma once

#include "core/TDeviceServer.h"

class ISpectrographFilter : public TBusyDeviceServer {
 public:
  virtual void SetFilter(int filter) = 0;
  virtual int GetFilter() = 0;
  virtual void Reset() = 0;
  /// Copies a filter's label, at most corvane::kMaxTextLength characters and a terminator, into text.
  virtual void GetFilterInfo(int filter, char* text, int maxLength) = 0;
  virtual void SetFilterInfo(int filter, const char* text) = 0;
};
