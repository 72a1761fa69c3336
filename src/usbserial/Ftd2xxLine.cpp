// Exported functions of the line settings, the modem lines, the latency timer and the bit modes, and the control
// request of the caller's choice.
#include <array>
#include <cstdint>

#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BridgeDevice;
using corvane::BridgeLibrary;
using corvane::BridgeRequest;
using corvane::LineSettings;
using corvane::OnDevice;
using corvane::OnDeviceWith;

namespace {

template <class Body>
FT_STATUS OnLine(FT_HANDLE handle, Body body) {
  return OnDevice(handle, [&](BridgeDevice& device) { return device.OnLine(body); });
}

FT_STATUS Send(FT_HANDLE handle, BridgeRequest name, unsigned value = 0) {
  return OnDevice(handle, [&](BridgeDevice& device) { return device.Request(name, value); });
}

FT_STATUS AskForByte(FT_HANDLE handle, BridgeRequest name, PUCHAR byte) {
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        UCHAR answer = 0;
        const FT_STATUS status = device.Request(name, 0, 0, {&answer, 1});
        if (status == FT_OK) {
          *byte = answer;
        }
        return status;
      },
      byte);
}

}  // namespace

FT_STATUS FT_SetBaudRate(FT_HANDLE handle, ULONG baud) {
  return OnLine(handle, [=](LineSettings& line) { return line.SetBaudRate(baud); });
}

FT_STATUS FT_SetDivisor(FT_HANDLE handle, USHORT divisor) {
  return OnLine(handle, [=](LineSettings& line) { return line.SetDivisor(divisor); });
}

FT_STATUS FT_SetDataCharacteristics(FT_HANDLE handle, UCHAR wordLength, UCHAR stopBits, UCHAR parity) {
  return OnLine(handle, [=](LineSettings& line) { return line.SetDataCharacteristics(wordLength, stopBits, parity); });
}

FT_STATUS FT_SetBreakOn(FT_HANDLE handle) {
  return OnLine(handle, [](LineSettings& line) { return line.SetBreak(true); });
}

FT_STATUS FT_SetBreakOff(FT_HANDLE handle) {
  return OnLine(handle, [](LineSettings& line) { return line.SetBreak(false); });
}

FT_STATUS FT_SetFlowControl(FT_HANDLE handle, USHORT mode, UCHAR xon, UCHAR xoff) {
  return OnLine(handle, [=](LineSettings& line) { return line.SetFlowControl(mode, xon, xoff); });
}

FT_STATUS FT_SetChars(FT_HANDLE handle, UCHAR event, UCHAR eventEnabled, UCHAR error, UCHAR errorEnabled) {
  return OnLine(handle,
                [=](LineSettings& line) { return line.SetChars(event, eventEnabled != 0, error, errorEnabled != 0); });
}

FT_STATUS FT_SetDtr(FT_HANDLE handle) {
  return OnLine(handle, [](LineSettings& line) { return line.SetDtr(true); });
}

FT_STATUS FT_ClrDtr(FT_HANDLE handle) {
  return OnLine(handle, [](LineSettings& line) { return line.SetDtr(false); });
}

FT_STATUS FT_SetRts(FT_HANDLE handle) {
  return OnLine(handle, [](LineSettings& line) { return line.SetRts(true); });
}

FT_STATUS FT_ClrRts(FT_HANDLE handle) {
  return OnLine(handle, [](LineSettings& line) { return line.SetRts(false); });
}

FT_STATUS FT_GetModemStatus(FT_HANDLE handle, PULONG status) {
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        std::array<std::uint8_t, 2> answer{};
        const FT_STATUS result = device.Request(BridgeRequest::kModemStatus, 0, 0, answer);
        if (result == FT_OK) {
          *status = answer[0] | static_cast<ULONG>(answer[1]) << 8;
        }
        return result;
      },
      status);
}

FT_STATUS FT_SetLatencyTimer(FT_HANDLE handle, UCHAR latency) {
  return Send(handle, BridgeRequest::kSetLatency, latency);
}

FT_STATUS FT_GetLatencyTimer(FT_HANDLE handle, PUCHAR latency) {
  return AskForByte(handle, BridgeRequest::kGetLatency, latency);
}

FT_STATUS FT_SetBitMode(FT_HANDLE handle, UCHAR mask, UCHAR mode) {
  return Send(handle, BridgeRequest::kSetBitMode, mask | static_cast<unsigned>(mode) << 8);
}

FT_STATUS FT_GetBitMode(FT_HANDLE handle, PUCHAR mode) {
  return AskForByte(handle, BridgeRequest::kGetBitMode, mode);
}

FT_STATUS FT_ResetDevice(FT_HANDLE handle) {
  return Send(handle, BridgeRequest::kResetDevice);
}

FT_STATUS FT_ResetPort(FT_HANDLE handle) {
  return OnDevice(handle, [](BridgeDevice& device) { return BridgeLibrary::Instance().ResetPort(device); });
}

FT_STATUS FT_CyclePort(FT_HANDLE handle) {
  return FT_ResetPort(handle);
}

FT_STATUS FT_VendorRequest(UCHAR request, USHORT value, USHORT index, PUCHAR buffer, USHORT length, UCHAR requestType,
                           FT_HANDLE device) {
  return OnDevice(device, [&](BridgeDevice& open) {
    if (buffer == nullptr && length != 0) {
      return FT_INVALID_PARAMETER;
    }
    return open.Vendor(request, value, index, {buffer, length}, requestType);
  });
}
