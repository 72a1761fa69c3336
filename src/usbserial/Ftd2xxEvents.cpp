// Exported functions of the queues, the events, and the reading in the background.
#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BridgeDevice;
using corvane::OnDevice;
using corvane::OnDeviceWith;

namespace {

FT_STATUS HoldReading(FT_HANDLE handle, bool held) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    device.Reads().SetHeld(held);
    return FT_OK;
  });
}

}  // namespace

FT_STATUS FT_GetQueueStatus(FT_HANDLE handle, LPDWORD available) {
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        *available = device.Available();
        return FT_OK;
      },
      available);
}

FT_STATUS FT_GetQueueStatusEx(FT_HANDLE handle, LPDWORD available) {
  return FT_GetQueueStatus(handle, available);
}

FT_STATUS FT_GetStatus(FT_HANDLE handle, LPDWORD receiveBytes, LPDWORD transmitBytes, LPDWORD events) {
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        *receiveBytes = device.Available();
        *transmitBytes = device.Unsent();
        *events = device.Events().Pending();
        return FT_OK;
      },
      receiveBytes, transmitBytes, events);
}

FT_STATUS FT_GetEventStatus(FT_HANDLE handle, LPDWORD events) {
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        *events = device.Events().TakeAll();
        return FT_OK;
      },
      events);
}

FT_STATUS FT_SetEventNotification(FT_HANDLE handle, DWORD mask, PVOID event) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    if (event == nullptr && mask != 0) {
      return FT_INVALID_PARAMETER;
    }
    device.SetNotification(mask, static_cast<FT_EVENT*>(event));
    return FT_OK;
  });
}

FT_STATUS FT_SetWaitMask(FT_HANDLE handle, DWORD mask) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    device.Events().SetWaitMask(mask);
    return FT_OK;
  });
}

FT_STATUS FT_WaitOnMask(FT_HANDLE handle, LPDWORD events) {
  const corvane::CancelShield shield;  // outside the frame's own, so that it knows what the host allows
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        *events = 0;
        return device.WaitOnMask(*events, shield);
      },
      events);
}

FT_STATUS FT_StopInTask(FT_HANDLE handle) {
  return HoldReading(handle, true);
}

FT_STATUS FT_RestartInTask(FT_HANDLE handle) {
  return HoldReading(handle, false);
}

FT_STATUS FT_SetResetPipeRetryCount(FT_HANDLE handle, DWORD count) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    device.Reads().SetClearRetries(count);
    return FT_OK;
  });
}
