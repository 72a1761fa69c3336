// The exported functions that are not built yet, as a table: each row is a signature and what the function checks, its
// handle first, then the pointers that must not be null.
#include <initializer_list>

#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

namespace {

template <class... Pointers>
FT_STATUS Pending(FT_HANDLE handle, Pointers... pointers) {
  return corvane::OnDevice(handle, [&](auto&) -> FT_STATUS {
    const bool complete = (true && ... && (pointers != nullptr));
    return complete ? FT_NOT_SUPPORTED : FT_INVALID_PARAMETER;
  });
}

}  // namespace

// The rows name their parameters, not all of which are checked.
#pragma GCC diagnostic ignored "-Wunused-parameter"
// NOLINTBEGIN(misc-unused-parameters,readability-non-const-parameter)

#define PENDING(name, parameters, ...) \
  FT_STATUS name parameters {          \
    return Pending(__VA_ARGS__);       \
  }

// Reading
PENDING(FT_GetQueueStatusEx, (FT_HANDLE handle, LPDWORD available), handle, available)
PENDING(FT_StopInTask, (FT_HANDLE handle), handle)
PENDING(FT_RestartInTask, (FT_HANDLE handle), handle)
PENDING(FT_SetResetPipeRetryCount, (FT_HANDLE handle, DWORD count), handle)
// Line settings and modem lines
PENDING(FT_SetBaudRate, (FT_HANDLE handle, ULONG baud), handle)
PENDING(FT_SetDivisor, (FT_HANDLE handle, USHORT divisor), handle)
PENDING(FT_SetDataCharacteristics, (FT_HANDLE handle, UCHAR wordLength, UCHAR stopBits, UCHAR parity), handle)
PENDING(FT_SetBreakOn, (FT_HANDLE handle), handle)
PENDING(FT_SetBreakOff, (FT_HANDLE handle), handle)
PENDING(FT_SetFlowControl, (FT_HANDLE handle, USHORT mode, UCHAR xon, UCHAR xoff), handle)
PENDING(FT_SetChars, (FT_HANDLE handle, UCHAR event, UCHAR eventEnabled, UCHAR error, UCHAR errorEnabled), handle)
PENDING(FT_SetDtr, (FT_HANDLE handle), handle)
PENDING(FT_ClrDtr, (FT_HANDLE handle), handle)
PENDING(FT_SetRts, (FT_HANDLE handle), handle)
PENDING(FT_ClrRts, (FT_HANDLE handle), handle)
PENDING(FT_GetModemStatus, (FT_HANDLE handle, PULONG status), handle, status)
PENDING(FT_SetLatencyTimer, (FT_HANDLE handle, UCHAR latency), handle)
PENDING(FT_GetLatencyTimer, (FT_HANDLE handle, PUCHAR latency), handle, latency)
PENDING(FT_SetBitMode, (FT_HANDLE handle, UCHAR mask, UCHAR mode), handle)
PENDING(FT_GetBitMode, (FT_HANDLE handle, PUCHAR mode), handle, mode)
PENDING(FT_ResetDevice, (FT_HANDLE handle), handle)
PENDING(FT_ResetPort, (FT_HANDLE handle), handle)
PENDING(FT_CyclePort, (FT_HANDLE handle), handle)
PENDING(FT_VendorRequest,
        (UCHAR request, USHORT value, USHORT index, PUCHAR buffer, USHORT length, UCHAR requestType, FT_HANDLE device),
        device)
// Status and events
PENDING(FT_GetStatus, (FT_HANDLE handle, LPDWORD receiveBytes, LPDWORD transmitBytes, LPDWORD events), handle,
        receiveBytes, transmitBytes, events)
PENDING(FT_GetEventStatus, (FT_HANDLE handle, LPDWORD events), handle, events)
PENDING(FT_SetEventNotification, (FT_HANDLE handle, DWORD mask, PVOID event), handle)
PENDING(FT_SetWaitMask, (FT_HANDLE handle, DWORD mask), handle)
PENDING(FT_WaitOnMask, (FT_HANDLE handle, LPDWORD events), handle, events)
PENDING(FT_IoCtl,
        (FT_HANDLE handle, DWORD code, LPVOID input, DWORD inputLength, LPVOID output, DWORD outputLength,
         LPDWORD returned, LPOVERLAPPED overlapped),
        handle)
// EEPROM of the bridge chip
PENDING(FT_ReadEE, (FT_HANDLE handle, DWORD address, LPWORD value), handle, value)
PENDING(FT_WriteEE, (FT_HANDLE handle, DWORD address, WORD value), handle)
PENDING(FT_EraseEE, (FT_HANDLE handle), handle)
PENDING(FT_EE_Program, (FT_HANDLE handle, PFT_PROGRAM_DATA data), handle, data)
PENDING(FT_EE_ProgramEx,
        (FT_HANDLE handle, PFT_PROGRAM_DATA data, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
         PCHAR serial),
        handle, data)
PENDING(FT_EE_Read, (FT_HANDLE handle, PFT_PROGRAM_DATA data), handle, data)
PENDING(FT_EE_ReadEx,
        (FT_HANDLE handle, PFT_PROGRAM_DATA data, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
         PCHAR serial),
        handle, data)
PENDING(FT_EE_ReadConfig, (FT_HANDLE handle, UCHAR address, PUCHAR value), handle, value)
PENDING(FT_EE_WriteConfig, (FT_HANDLE handle, UCHAR address, UCHAR value), handle)
PENDING(FT_EE_ReadECC, (FT_HANDLE handle, UCHAR option, LPWORD value), handle, value)
PENDING(FT_EE_UASize, (FT_HANDLE handle, LPDWORD size), handle, size)
PENDING(FT_EE_UARead, (FT_HANDLE handle, PUCHAR data, DWORD length, LPDWORD read), handle, data, read)
PENDING(FT_EE_UAWrite, (FT_HANDLE handle, PUCHAR data, DWORD length), handle, data)
PENDING(FT_EEPROM_Read,
        (FT_HANDLE handle, PVOID data, DWORD size, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
         PCHAR serial),
        handle, data)
PENDING(FT_EEPROM_Program,
        (FT_HANDLE handle, PVOID data, DWORD size, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
         PCHAR serial),
        handle, data)

// Those that do not return a status answer a value which says that they did nothing.
#define PENDING_VALUE(type, name, parameters, value) \
  type name parameters {                             \
    return value;                                    \
  }

// Divisor arithmetic
PENDING_VALUE(int, FT_CalcDivisor, (ULONG baud, PUSHORT divisor, PUSHORT index, int newChip), -1)
PENDING_VALUE(int, FT_CalcDivisorHi, (ULONG baud, PUSHORT divisor, PUSHORT index), -1)
PENDING_VALUE(int, FT_GetDivisor,
              (ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent, int* above, int newChip),
              divisor == nullptr || index == nullptr ? 0 : -1)
PENDING_VALUE(int, FT_GetDivisorHi,
              (ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent, int* above),
              divisor == nullptr || index == nullptr ? 0 : -1)
PENDING_VALUE(ULONG, FT_CalcBaudRate, (USHORT divisor, USHORT index), 0)
PENDING_VALUE(ULONG, FT_CalcBaudRateHi, (USHORT divisor, USHORT index), 0)
// Serial port calls
PENDING_VALUE(FT_HANDLE, FT_W32_CreateFile,
              (LPCTSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD creation,
               DWORD attributes, FT_HANDLE pattern),
              nullptr)
PENDING_VALUE(FT_HANDLE, FT_W32_OpenFile,
              (LPCTSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD creation,
               DWORD attributes, FT_HANDLE pattern),
              nullptr)
PENDING_VALUE(BOOL, FT_W32_CloseHandle, (FT_HANDLE handle), 0)
PENDING_VALUE(BOOL, FT_W32_ReadFile,
              (FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received, LPOVERLAPPED overlapped), 0)
PENDING_VALUE(BOOL, FT_W32_WriteFile,
              (FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written, LPOVERLAPPED overlapped), 0)
PENDING_VALUE(DWORD, FT_W32_GetLastError, (FT_HANDLE handle), Pending(handle))
PENDING_VALUE(BOOL, FT_W32_GetOverlappedResult,
              (FT_HANDLE handle, LPOVERLAPPED overlapped, LPDWORD transferred, BOOL wait), 0)
PENDING_VALUE(BOOL, FT_W32_CancelIo, (FT_HANDLE handle), 0)
PENDING_VALUE(BOOL, FT_W32_ClearCommBreak, (FT_HANDLE handle), 0)
PENDING_VALUE(BOOL, FT_W32_ClearCommError, (FT_HANDLE handle, LPDWORD errors, LPFTCOMSTAT status), 0)
PENDING_VALUE(BOOL, FT_W32_EscapeCommFunction, (FT_HANDLE handle, DWORD function), 0)
PENDING_VALUE(BOOL, FT_W32_GetCommModemStatus, (FT_HANDLE handle, LPDWORD status), 0)
PENDING_VALUE(BOOL, FT_W32_GetCommState, (FT_HANDLE handle, LPFTDCB settings), 0)
PENDING_VALUE(BOOL, FT_W32_GetCommTimeouts, (FT_HANDLE handle, LPFTTIMEOUTS timeouts), 0)
PENDING_VALUE(BOOL, FT_W32_PurgeComm, (FT_HANDLE handle, DWORD mask), 0)
PENDING_VALUE(BOOL, FT_W32_SetCommBreak, (FT_HANDLE handle), 0)
PENDING_VALUE(BOOL, FT_W32_SetCommMask, (FT_HANDLE handle, ULONG mask), 0)
PENDING_VALUE(BOOL, FT_W32_SetCommState, (FT_HANDLE handle, LPFTDCB settings), 0)
PENDING_VALUE(BOOL, FT_W32_SetCommTimeouts, (FT_HANDLE handle, LPFTTIMEOUTS timeouts), 0)
PENDING_VALUE(BOOL, FT_W32_SetupComm, (FT_HANDLE handle, DWORD readQueueSize, DWORD writeQueueSize), 0)
PENDING_VALUE(BOOL, FT_W32_WaitCommEvent, (FT_HANDLE handle, PULONG event, LPOVERLAPPED overlapped), 0)

// NOLINTEND(misc-unused-parameters,readability-non-const-parameter)
