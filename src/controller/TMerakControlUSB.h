// The transport to a controller behind a USB serial bridge. The bridge is used with its own line settings, but for the
// latency timer where the environment variable CORVANE_USB_LATENCY_MS (1 to 255) asks for another one.
#pragma once

#include <string>

#include "controller/TMerakControl.h"
#include "usbserial/ftd2xx.h"

class TMerakControlUSB final : public TMerakControl {
 public:
  /// Puts the maker's VID/PID pair into the bridge's list of supported devices.
  TMerakControlUSB();
  ~TMerakControlUSB() override;
  TMerakControlUSB(const TMerakControlUSB&) = delete;
  TMerakControlUSB& operator=(const TMerakControlUSB&) = delete;

  bool IsAvailable() override { return mAvailable; }
  Status ListDevices(void* arg1, void* arg2, unsigned int flags) override;
  /// FT_INVALID_HANDLE when no handle came back, whatever the bridge's status was.
  Status Open(int index) override;
  /// Always FT_OK; closing a closed transport does nothing.
  Status Close() override;
  /// FT_IO_ERROR when received is null, whatever came.
  Status Read(void* buffer, unsigned int count, unsigned int* received) override;
  Status Write(const void* buffer, unsigned int count, unsigned int* written) override;
  Status SetTimeouts(unsigned int readTimeoutMs, unsigned int writeTimeoutMs) override;
  Status Purge(unsigned int mask) override;

  /// A line for the trace about the latency timer that the last opening could not set; empty when there is none.
  const std::string& Remark() const { return mRemark; }

  /// Place in the bridge's list of the last device with the maker's own VID/PID; -1 without one, -2 when there is no
  /// list.
  int GetDeviceIndex();
  static bool IsValidProduct(const FT_DEVICE_LIST_INFO_NODE& node);

 private:
  void SetLatency();

  bool mAvailable = true;
  FT_HANDLE mHandle = nullptr;
  std::string mRemark;
};
