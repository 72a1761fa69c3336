// Exported functions in the form of serial port calls: thin forms of the others, that answer 1 or 0 and leave the
// status for FT_W32_GetLastError.
#include <algorithm>
#include <array>

#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BridgeDevice;
using corvane::LineState;
using corvane::OnDevice;
using corvane::OnDeviceWith;
using corvane::Store;

namespace {

constexpr DWORD kNames = FT_OPEN_BY_SERIAL_NUMBER | FT_OPEN_BY_DESCRIPTION | FT_OPEN_BY_LOCATION;

BOOL Told(FT_HANDLE handle, FT_STATUS status) {
  OnDevice(handle, [&](BridgeDevice& device) {
    device.SetLastStatus(status);
    return status;
  });
  return status == FT_OK ? 1 : 0;
}

FT_STATUS NotOffered(FT_HANDLE handle) {
  return OnDevice(handle, [](BridgeDevice&) { return FT_NOT_SUPPORTED; });
}

struct EscapeRow {
  DWORD function;
  FT_STATUS (*call)(FT_HANDLE);
};

constexpr std::array<EscapeRow, 7> kEscapes{{{FT_ESCAPE_SET_RTS, FT_SetRts},
                                             {FT_ESCAPE_CLEAR_RTS, FT_ClrRts},
                                             {FT_ESCAPE_SET_DTR, FT_SetDtr},
                                             {FT_ESCAPE_CLEAR_DTR, FT_ClrDtr},
                                             {FT_ESCAPE_RESET, FT_ResetDevice},
                                             {FT_ESCAPE_SET_BREAK, FT_SetBreakOn},
                                             {FT_ESCAPE_CLEAR_BREAK, FT_SetBreakOff}}};

USHORT FlowOf(const FTDCB& settings) {
  if (settings.fOutX != 0 || settings.fInX != 0) {
    return FT_FLOW_XON_XOFF;
  }
  if (settings.fOutxCtsFlow != 0 || settings.fRtsControl == FT_CONTROL_HANDSHAKE) {
    return FT_FLOW_RTS_CTS;
  }
  return settings.fOutxDsrFlow != 0 || settings.fDtrControl == FT_CONTROL_HANDSHAKE ? FT_FLOW_DTR_DSR : FT_FLOW_NONE;
}

FT_STATUS SetLine(FT_HANDLE handle, DWORD control, FT_STATUS (*set)(FT_HANDLE), FT_STATUS (*clear)(FT_HANDLE)) {
  switch (control) {
    case FT_CONTROL_DISABLE:
      return clear(handle);
    case FT_CONTROL_ENABLE:
      return set(handle);
    default:
      return FT_OK;  // the handshake has it
  }
}

FT_STATUS SetState(FT_HANDLE handle, const FTDCB& s) {
  const USHORT flow = FlowOf(s);
  FT_STATUS status = FT_SetBaudRate(handle, s.BaudRate);
  status = status != FT_OK ? status : FT_SetDataCharacteristics(handle, s.ByteSize, s.StopBits, s.Parity);
  status = status != FT_OK ? status : SetLine(handle, s.fDtrControl, FT_SetDtr, FT_ClrDtr);
  status = status != FT_OK ? status : SetLine(handle, s.fRtsControl, FT_SetRts, FT_ClrRts);
  status = status != FT_OK
               ? status
               : FT_SetFlowControl(handle, flow, static_cast<UCHAR>(s.XonChar), static_cast<UCHAR>(s.XoffChar));
  return status != FT_OK ? status
                         : FT_SetChars(handle, static_cast<UCHAR>(s.EvtChar), s.EvtChar != 0 ? 1 : 0,
                                       static_cast<UCHAR>(s.ErrorChar), s.fErrorChar);
}

DWORD ControlOf(bool handshake, bool on) {
  if (handshake) {
    return FT_CONTROL_HANDSHAKE;
  }
  return on ? FT_CONTROL_ENABLE : FT_CONTROL_DISABLE;
}

FTDCB StateOf(const LineState& line) {
  FTDCB state{};
  state.DCBlength = sizeof state;
  state.BaudRate = line.baud;
  state.fBinary = 1;
  state.fParity = line.parity != FT_PARITY_NONE ? 1 : 0;
  state.fOutxCtsFlow = line.flow == FT_FLOW_RTS_CTS ? 1 : 0;
  state.fOutxDsrFlow = line.flow == FT_FLOW_DTR_DSR ? 1 : 0;
  state.fDtrControl = ControlOf(line.flow == FT_FLOW_DTR_DSR, line.dtr) & 3U;
  state.fRtsControl = ControlOf(line.flow == FT_FLOW_RTS_CTS, line.rts) & 3U;
  state.fOutX = state.fInX = line.flow == FT_FLOW_XON_XOFF ? 1 : 0;
  state.fErrorChar = line.errorEnabled ? 1 : 0;
  state.ByteSize = line.wordLength;
  state.Parity = line.parity;
  state.StopBits = line.stopBits;
  state.XonChar = static_cast<char>(line.xon);
  state.XoffChar = static_cast<char>(line.xoff);
  state.ErrorChar = static_cast<char>(line.errorCharacter);
  state.EvtChar = static_cast<char>(line.eventEnabled ? line.eventCharacter : 0);
  return state;
}

}  // namespace

FT_HANDLE FT_W32_CreateFile(LPCTSTR name, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD attributes, FT_HANDLE) {
  FT_HANDLE handle = nullptr;
  // The opening only reads the name.
  const FT_STATUS status = FT_OpenEx(const_cast<char*>(name), attributes & kNames, &handle);
  return status == FT_OK ? handle : nullptr;
}

FT_HANDLE FT_W32_OpenFile(LPCTSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD creation,
                          DWORD attributes, FT_HANDLE pattern) {
  return FT_W32_CreateFile(name, access, share, security, creation, attributes, pattern);
}

BOOL FT_W32_CloseHandle(FT_HANDLE handle) {
  return FT_Close(handle) == FT_OK ? 1 : 0;
}

BOOL FT_W32_ReadFile(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received, LPOVERLAPPED overlapped) {
  return Told(handle, overlapped != nullptr ? NotOffered(handle) : FT_Read(handle, buffer, count, received));
}

BOOL FT_W32_WriteFile(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written, LPOVERLAPPED overlapped) {
  return Told(handle, overlapped != nullptr ? NotOffered(handle) : FT_Write(handle, buffer, count, written));
}

DWORD FT_W32_GetLastError(FT_HANDLE handle) {
  return OnDevice(handle, [](BridgeDevice& device) { return device.LastStatus(); });
}

BOOL FT_W32_GetOverlappedResult(FT_HANDLE handle, LPOVERLAPPED, LPDWORD, BOOL) {
  return Told(handle, NotOffered(handle));
}

BOOL FT_W32_CancelIo(FT_HANDLE handle) {
  return Told(handle, NotOffered(handle));
}

BOOL FT_W32_ClearCommBreak(FT_HANDLE handle) {
  return Told(handle, FT_SetBreakOff(handle));
}

BOOL FT_W32_SetCommBreak(FT_HANDLE handle) {
  return Told(handle, FT_SetBreakOn(handle));
}

BOOL FT_W32_ClearCommError(FT_HANDLE handle, LPDWORD errors, LPFTCOMSTAT status) {
  return Told(handle, OnDeviceWith(
                          handle,
                          [&](BridgeDevice& device) {
                            FTCOMSTAT queues{};
                            queues.cbInQue = device.Available();
                            queues.cbOutQue = device.Unsent();
                            Store(status, queues);
                            *errors = device.Events().TakeLineErrors();
                            return FT_OK;
                          },
                          errors));
}

BOOL FT_W32_EscapeCommFunction(FT_HANDLE handle, DWORD function) {
  const auto* const row =
      std::find_if(kEscapes.begin(), kEscapes.end(), [=](const EscapeRow& r) { return r.function == function; });
  if (row != kEscapes.end()) {
    return Told(handle, row->call(handle));
  }
  return Told(handle, OnDevice(handle, [](BridgeDevice&) { return FT_INVALID_PARAMETER; }));
}

BOOL FT_W32_GetCommModemStatus(FT_HANDLE handle, LPDWORD status) {
  return Told(handle, FT_GetModemStatus(handle, status));
}

BOOL FT_W32_GetCommState(FT_HANDLE handle, LPFTDCB settings) {
  return Told(handle, OnDeviceWith(
                          handle,
                          [&](BridgeDevice& device) {
                            *settings = StateOf(device.Line());
                            return FT_OK;
                          },
                          settings));
}

BOOL FT_W32_SetCommState(FT_HANDLE handle, LPFTDCB settings) {
  return Told(handle, OnDeviceWith(
                          handle, [&](BridgeDevice&) { return SetState(handle, *settings); }, settings));
}

BOOL FT_W32_GetCommTimeouts(FT_HANDLE handle, LPFTTIMEOUTS timeouts) {
  return Told(handle, OnDeviceWith(
                          handle,
                          [&](BridgeDevice& device) {
                            *timeouts = {0, 0, device.ReadTimeout(), 0, device.WriteTimeout()};
                            return FT_OK;
                          },
                          timeouts));
}

BOOL FT_W32_SetCommTimeouts(FT_HANDLE handle, LPFTTIMEOUTS timeouts) {
  return Told(handle, OnDeviceWith(
                          handle,
                          [&](BridgeDevice& device) {
                            device.SetTimeouts(timeouts->ReadTotalTimeoutConstant, timeouts->WriteTotalTimeoutConstant);
                            return FT_OK;
                          },
                          timeouts));
}

BOOL FT_W32_PurgeComm(FT_HANDLE handle, DWORD mask) {
  return Told(handle, FT_Purge(handle, mask));
}

BOOL FT_W32_SetCommMask(FT_HANDLE handle, ULONG mask) {
  return Told(handle, FT_SetWaitMask(handle, mask));
}

BOOL FT_W32_SetupComm(FT_HANDLE handle, DWORD, DWORD) {
  return Told(handle, OnDevice(handle, [](BridgeDevice&) { return FT_OK; }));
}

BOOL FT_W32_WaitCommEvent(FT_HANDLE handle, PULONG event, LPOVERLAPPED overlapped) {
  return Told(handle, overlapped != nullptr ? NotOffered(handle) : FT_WaitOnMask(handle, event));
}
