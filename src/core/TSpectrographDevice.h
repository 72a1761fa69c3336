// The instrument as a whole: opening and closing it, its model and serial number.
#pragma once

#include "core/TDeviceServer.h"

class TSpectrographDevice : public TDeviceServer {
 public:
  bool IsPresent() override = 0;
  virtual void SetActive(bool active) = 0;
  virtual bool IsActive() = 0;
  virtual void Load(bool unused) = 0;
  /// Points model at a constant text.
  virtual void GetModelNumber(const char*& model) = 0;
  /// Points serial at a text owned by the device, valid until its next call.
  virtual void GetSpectrographSerial(const char*& serial) = 0;
};
