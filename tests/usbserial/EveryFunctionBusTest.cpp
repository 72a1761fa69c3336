// Every exported function with a good handle, with handles that name no open device, and with null for its pointers.
#include <array>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

#include "FtBusFixture.h"

namespace {

using Output = std::array<UCHAR, 256>;

Output Filled() {
  Output filled{};
  filled.fill(0x5A);
  filled.back() = 0;  // it serves as a text too
  return filled;
}

/// Any pointer, to the same bytes or null.
struct Pointer {
  void* to = nullptr;
  template <class T>
  operator T*() const {  // NOLINT(google-explicit-constructor): for every type of argument
    return static_cast<T*>(to);
  }
};

struct Args {
  FT_HANDLE h = nullptr;
  Pointer p;
};

struct Row {
  const char* name;
  long good;  ///< with an open device and outputs: a status, or what the function says
  long bad;   ///< with a handle that names no device
  long null;  ///< with an open device and null pointers
  std::function<long(const Args&)> call;
};

long Number(long answer) {
  return answer;
}
// A call that opens answers a handle.
constexpr long kNoDevice = 0;
long Number(FT_HANDLE handle) {
  return handle == nullptr ? kNoDevice : 1;
}

#define CALL(name, good, bad, null, ...)                                                             \
  Row {                                                                                              \
#name, good, bad, null, []([[maybe_unused]] const Args& a) { return Number(name(__VA_ARGS__)); } \
  }
#define ASK(name, ...) CALL(name, FT_OK, FT_INVALID_HANDLE, FT_INVALID_PARAMETER, a.h, __VA_ARGS__)
#define LACKING(name, ...) CALL(name, FT_NOT_SUPPORTED, FT_INVALID_HANDLE, FT_INVALID_PARAMETER, a.h, __VA_ARGS__)
#define FREE(name, good, null, ...) CALL(name, good, good, null, __VA_ARGS__)
#define PLAIN(name, ...) CALL(name, FT_OK, FT_INVALID_HANDLE, FT_OK, a.h __VA_OPT__(, ) __VA_ARGS__)

// A serial port call answers 1 or 0; the row names the status that it leaves behind.
long Left(FT_HANDLE handle, BOOL answer) {
  const DWORD status = FT_W32_GetLastError(handle);
  return (status == FT_OK) == (answer == 1) ? static_cast<long>(status) : -99;
}
#define SERIAL(name, good, null, ...)                                                 \
  Row {                                                                               \
#name, good, FT_INVALID_HANDLE, null,                                             \
        [](const Args& a) { return Left(a.h, name(a.h __VA_OPT__(, ) __VA_ARGS__)); } \
  }

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows{
      FREE(FT_CalcBaudRate, 9600, 9600, 312 | 0x4000, 0),
      FREE(FT_CalcBaudRateHi, 9600, 9600, 1250, 2),
      FREE(FT_CalcDivisor, 1, -1, 9600, a.p, a.p, 1),
      FREE(FT_CalcDivisorHi, 1, -1, 9600, a.p, a.p),
      FREE(FT_GetDivisor, 1, 0, 9600, a.p, a.p, a.p, a.p, a.p, 1),
      FREE(FT_GetDivisorHi, 1, 0, 9600, a.p, a.p, a.p, a.p, a.p),
      FREE(FT_CreateDeviceInfoList, FT_OK, FT_INVALID_PARAMETER, a.p),
      FREE(FT_GetDeviceInfoDetail, FT_OK, FT_OK, 0, a.p, a.p, a.p, a.p, a.p, a.p, a.p),
      FREE(FT_GetDeviceInfoList, FT_OK, FT_INVALID_PARAMETER, a.p, a.p),
      FREE(FT_GetLibraryVersion, FT_OK, FT_INVALID_PARAMETER, a.p),
      FREE(FT_GetVIDPID, FT_OK, FT_INVALID_PARAMETER, a.p, a.p),
      FREE(FT_ListDevices, FT_OK, FT_INVALID_PARAMETER, a.p, nullptr, FT_LIST_NUMBER_ONLY),
      FREE(FT_Open, FT_DEVICE_NOT_OPENED, FT_INVALID_PARAMETER, 0, a.p),
      FREE(FT_OpenEx, FT_DEVICE_NOT_FOUND, FT_INVALID_PARAMETER, a.p, FT_OPEN_BY_SERIAL_NUMBER, a.p),
      FREE(FT_SetVIDPID, FT_OK, FT_OK, 0, 0),
      PLAIN(FT_Close),
      PLAIN(FT_ClrDtr),
      PLAIN(FT_ClrRts),
      PLAIN(FT_CyclePort),
      PLAIN(FT_EraseEE),
      PLAIN(FT_Purge, 3),
      PLAIN(FT_ResetDevice),
      PLAIN(FT_ResetPort),
      PLAIN(FT_RestartInTask),
      PLAIN(FT_SetBaudRate, 115200),
      PLAIN(FT_SetBitMode, 0, 0),
      PLAIN(FT_SetBreakOff),
      PLAIN(FT_SetBreakOn),
      PLAIN(FT_SetChars, 1, 1, 2, 1),
      PLAIN(FT_SetDataCharacteristics, 8, 0, 0),
      PLAIN(FT_SetDeadmanTimeout, 1000),
      PLAIN(FT_SetDivisor, 26),
      PLAIN(FT_SetDtr),
      PLAIN(FT_SetFlowControl, FT_FLOW_NONE, 0, 0),
      PLAIN(FT_SetLatencyTimer, 2),
      PLAIN(FT_SetResetPipeRetryCount, 3),
      PLAIN(FT_SetRts),
      PLAIN(FT_SetTimeouts, 1, 1),
      PLAIN(FT_SetUSBParameters, 64, 64),
      PLAIN(FT_SetWaitMask, 7),
      PLAIN(FT_StopInTask),
      PLAIN(FT_WriteEE, 3, 0x1234),
      ASK(FT_GetBitMode, a.p),
      CALL(FT_GetDeviceInfo, FT_OK, FT_INVALID_HANDLE, FT_OK, a.h, a.p, a.p, a.p, a.p, nullptr),
      ASK(FT_GetDeviceLocId, a.p),
      ASK(FT_GetDriverVersion, a.p),
      ASK(FT_GetEventStatus, a.p),
      ASK(FT_GetLatencyTimer, a.p),
      ASK(FT_GetModemStatus, a.p),
      ASK(FT_GetQueueStatus, a.p),
      ASK(FT_GetQueueStatusEx, a.p),
      ASK(FT_GetStatus, a.p, a.p, a.p),
      ASK(FT_Read, a.p, 1, a.p),
      ASK(FT_ReadEE, 3, a.p),
      // Not kept: the bytes of an output are no event.
      ASK(FT_SetEventNotification, a.p.to == nullptr ? 7 : 0, a.p),
      CALL(FT_VendorRequest, FT_OK, FT_INVALID_HANDLE, FT_INVALID_PARAMETER, 5, 0, 0, a.p, 2, 0xC0, a.h),
      ASK(FT_WaitOnMask, a.p),
      ASK(FT_Write, a.p, 1, a.p),
      ASK(FT_WriteMultiThread, a.p, 1, a.p),
      ASK(FT_WriteSingleThread, a.p, 1, a.p),
      LACKING(FT_EEPROM_Program, a.p, 1, a.p, a.p, a.p, a.p),
      LACKING(FT_EEPROM_Read, a.p, 1, a.p, a.p, a.p, a.p),
      LACKING(FT_EE_Program, a.p),
      LACKING(FT_EE_ProgramEx, a.p, a.p, a.p, a.p, a.p),
      LACKING(FT_EE_Read, a.p),
      LACKING(FT_EE_ReadConfig, 0, a.p),
      LACKING(FT_EE_ReadECC, 0, a.p),
      LACKING(FT_EE_ReadEx, a.p, a.p, a.p, a.p, a.p),
      LACKING(FT_EE_UARead, a.p, 1, a.p),
      LACKING(FT_EE_UASize, a.p),
      LACKING(FT_EE_UAWrite, a.p, 1),
      CALL(FT_EE_WriteConfig, FT_NOT_SUPPORTED, FT_INVALID_HANDLE, FT_NOT_SUPPORTED, a.h, 0, 0),
      LACKING(FT_IoCtl, 0, a.p, 1, a.p, 1, a.p, nullptr),
      FREE(FT_W32_CreateFile, kNoDevice, kNoDevice, a.p, 0, 0, nullptr, 0, FT_OPEN_BY_DESCRIPTION, nullptr),
      FREE(FT_W32_OpenFile, kNoDevice, kNoDevice, a.p, 0, 0, nullptr, 0, FT_OPEN_BY_SERIAL_NUMBER, nullptr),
      CALL(FT_W32_CloseHandle, 1, 0, 1, a.h),
      CALL(FT_W32_GetLastError, FT_OK, FT_INVALID_HANDLE, FT_OK, a.h),
      SERIAL(FT_W32_ClearCommBreak, FT_OK, FT_OK),
      SERIAL(FT_W32_EscapeCommFunction, FT_OK, FT_OK, FT_ESCAPE_SET_DTR),
      SERIAL(FT_W32_PurgeComm, FT_OK, FT_OK, FT_PURGE_RX),
      SERIAL(FT_W32_SetCommBreak, FT_OK, FT_OK),
      SERIAL(FT_W32_SetCommMask, FT_OK, FT_OK, 7),
      SERIAL(FT_W32_SetupComm, FT_OK, FT_OK, 4096, 4096),
      SERIAL(FT_W32_CancelIo, FT_NOT_SUPPORTED, FT_NOT_SUPPORTED),
      SERIAL(FT_W32_GetOverlappedResult, FT_NOT_SUPPORTED, FT_NOT_SUPPORTED, nullptr, a.p, 0),
      SERIAL(FT_W32_ClearCommError, FT_OK, FT_INVALID_PARAMETER, a.p, nullptr),
      SERIAL(FT_W32_GetCommModemStatus, FT_OK, FT_INVALID_PARAMETER, a.p),
      SERIAL(FT_W32_GetCommState, FT_OK, FT_INVALID_PARAMETER, a.p),
      SERIAL(FT_W32_GetCommTimeouts, FT_OK, FT_INVALID_PARAMETER, a.p),
      SERIAL(FT_W32_ReadFile, FT_OK, FT_INVALID_PARAMETER, a.p, 1, a.p, nullptr),
      SERIAL(FT_W32_SetCommState, FT_INVALID_BAUD_RATE, FT_INVALID_PARAMETER, a.p),
      SERIAL(FT_W32_SetCommTimeouts, FT_OK, FT_INVALID_PARAMETER, a.p),
      SERIAL(FT_W32_WaitCommEvent, FT_OK, FT_INVALID_PARAMETER, a.p, nullptr),
      SERIAL(FT_W32_WriteFile, FT_OK, FT_INVALID_PARAMETER, a.p, 1, a.p, nullptr),
  };
  return rows;
}

using FtEveryFunctionTest = corvane::FtBusTest;

TEST_F(FtEveryFunctionTest, ChecksItsHandleThenItsPointersAndDoesItsWork) {
  PlugEcho();
  std::multiset<std::string> names;
  for (const Row& row : Rows()) {
    SCOPED_TRACE(*names.insert(row.name));
    alignas(8) Output output = Filled();
    FT_HANDLE const closed = Open(0, 1, 100);
    EXPECT_EQ(row.call({closed, {}}), row.null);
    FT_Close(closed);
    FT_HANDLE const live = Open(0, 1, 100);
    for (FT_HANDLE const bad : {FT_HANDLE{nullptr}, closed, static_cast<FT_HANDLE>(&output)}) {
      EXPECT_EQ(row.call({bad, {&output}}), row.bad);
      if (row.bad != row.good) {
        EXPECT_EQ(output, Filled());
      }
    }
    EXPECT_EQ(row.call({live, {&output}}), row.good);
    FT_Close(live);
  }
  std::ifstream list(CORVANE_FT_NAMES);
  const std::multiset<std::string> exported(std::istream_iterator<std::string>(list), {});
  EXPECT_EQ(names, exported);
  Output output = Filled();
  const Pointer p{&output};
  EXPECT_EQ(FT_EE_ReadEx(Open(), p, p, p, p, nullptr), FT_INVALID_PARAMETER);
}

}  // namespace
