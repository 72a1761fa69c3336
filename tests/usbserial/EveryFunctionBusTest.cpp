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

#define CALL(name, good, bad, null, ...)                                                                        \
  Row {                                                                                                         \
#name, good, bad, null, []([[maybe_unused]] const Args& a) { return static_cast<long>(name(__VA_ARGS__)); } \
  }
#define FREE(name, good, null, ...) CALL(name, good, good, null, __VA_ARGS__)
#define PLAIN(name, ...) CALL(name, 0, 1, 0, a.h __VA_OPT__(, ) __VA_ARGS__)

// A serial port call answers 1 or 0; the row names the status that it leaves behind.
long Left(FT_HANDLE handle, BOOL answer) {
  const DWORD status = FT_W32_GetLastError(handle);
  return (status == FT_OK) == (answer == 1) ? static_cast<long>(status) : -99;
}
#define SERIAL(name, good, null, ...)                                                                   \
  Row {                                                                                                 \
#name, good, 1, null, [](const Args& a) { return Left(a.h, name(a.h __VA_OPT__(, ) __VA_ARGS__)); } \
  }

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows{
      FREE(FT_CalcBaudRate, 9600, 9600, 312 | 0x4000, 0), FREE(FT_CalcBaudRateHi, 9600, 9600, 1250, 2),
      FREE(FT_CalcDivisor, 1, -1, 9600, a.p, a.p, 1), FREE(FT_CalcDivisorHi, 1, -1, 9600, a.p, a.p),
      FREE(FT_GetDivisor, 1, 0, 9600, a.p, a.p, a.p, a.p, a.p, 1),
      FREE(FT_GetDivisorHi, 1, 0, 9600, a.p, a.p, a.p, a.p, a.p), FREE(FT_CreateDeviceInfoList, 0, 6, a.p),
      FREE(FT_GetDeviceInfoDetail, 0, 0, 0, a.p, a.p, a.p, a.p, a.p, a.p, a.p),
      FREE(FT_GetDeviceInfoList, 0, 6, a.p, a.p), FREE(FT_GetLibraryVersion, 0, 6, a.p),
      FREE(FT_GetVIDPID, 0, 6, a.p, a.p), FREE(FT_ListDevices, 0, 6, a.p, nullptr, FT_LIST_NUMBER_ONLY),
      FREE(FT_Open, 3, 6, 0, a.p), FREE(FT_OpenEx, 2, 6, a.p, FT_OPEN_BY_SERIAL_NUMBER, a.p),
      Row{"FT_SetVIDPID", 0, 0, 0, [](const Args&) { return static_cast<long>(FT_SetVIDPID(0, 0)); }}, PLAIN(FT_Close),
      PLAIN(FT_ClrDtr), PLAIN(FT_ClrRts), PLAIN(FT_CyclePort), PLAIN(FT_EraseEE), PLAIN(FT_Purge, 3),
      PLAIN(FT_ResetDevice), PLAIN(FT_ResetPort), PLAIN(FT_RestartInTask), PLAIN(FT_SetBaudRate, 115200),
      PLAIN(FT_SetBitMode, 0, 0), PLAIN(FT_SetBreakOff), PLAIN(FT_SetBreakOn), PLAIN(FT_SetChars, 1, 1, 2, 1),
      PLAIN(FT_SetDataCharacteristics, 8, 0, 0), PLAIN(FT_SetDeadmanTimeout, 1000), PLAIN(FT_SetDivisor, 26),
      PLAIN(FT_SetDtr), PLAIN(FT_SetFlowControl, FT_FLOW_NONE, 0, 0), PLAIN(FT_SetLatencyTimer, 2),
      PLAIN(FT_SetResetPipeRetryCount, 3), PLAIN(FT_SetRts), PLAIN(FT_SetTimeouts, 1, 1),
      PLAIN(FT_SetUSBParameters, 64, 64), PLAIN(FT_SetWaitMask, 7), PLAIN(FT_StopInTask), PLAIN(FT_WriteEE, 3, 0x1234),
      CALL(FT_GetBitMode, 0, 1, 6, a.h, a.p), CALL(FT_GetDeviceInfo, 0, 1, 0, a.h, a.p, a.p, a.p, a.p, nullptr),
      CALL(FT_GetDeviceLocId, 0, 1, 6, a.h, a.p), CALL(FT_GetDriverVersion, 0, 1, 6, a.h, a.p),
      CALL(FT_GetEventStatus, 0, 1, 6, a.h, a.p), CALL(FT_GetLatencyTimer, 0, 1, 6, a.h, a.p),
      CALL(FT_GetModemStatus, 0, 1, 6, a.h, a.p), CALL(FT_GetQueueStatus, 0, 1, 6, a.h, a.p),
      CALL(FT_GetQueueStatusEx, 0, 1, 6, a.h, a.p), CALL(FT_GetStatus, 0, 1, 6, a.h, a.p, a.p, a.p),
      CALL(FT_Read, 0, 1, 6, a.h, a.p, 1, a.p), CALL(FT_ReadEE, 0, 1, 6, a.h, 3, a.p),
      // Not kept: the bytes of an output are no event.
      CALL(FT_SetEventNotification, 0, 1, 6, a.h, a.p.to == nullptr ? 7 : 0, a.p),
      CALL(FT_VendorRequest, 0, 1, 6, 5, 0, 0, a.p, 2, 0xC0, a.h), CALL(FT_WaitOnMask, 0, 1, 6, a.h, a.p),
      CALL(FT_Write, 0, 1, 6, a.h, a.p, 1, a.p), CALL(FT_WriteMultiThread, 0, 1, 6, a.h, a.p, 1, a.p),
      CALL(FT_WriteSingleThread, 0, 1, 6, a.h, a.p, 1, a.p),
      CALL(FT_EEPROM_Program, 17, 1, 6, a.h, a.p, 1, a.p, a.p, a.p, a.p),
      CALL(FT_EEPROM_Read, 17, 1, 6, a.h, a.p, 1, a.p, a.p, a.p, a.p), CALL(FT_EE_Program, 17, 1, 6, a.h, a.p),
      CALL(FT_EE_ProgramEx, 17, 1, 6, a.h, a.p, a.p, a.p, a.p, a.p), CALL(FT_EE_Read, 17, 1, 6, a.h, a.p),
      CALL(FT_EE_ReadConfig, 17, 1, 6, a.h, 0, a.p), CALL(FT_EE_ReadECC, 17, 1, 6, a.h, 0, a.p),
      CALL(FT_EE_ReadEx, 17, 1, 6, a.h, a.p, a.p, a.p, a.p, a.p), CALL(FT_EE_UARead, 17, 1, 6, a.h, a.p, 1, a.p),
      CALL(FT_EE_UASize, 17, 1, 6, a.h, a.p), CALL(FT_EE_UAWrite, 17, 1, 6, a.h, a.p, 1),
      CALL(FT_EE_WriteConfig, 17, 1, 17, a.h, 0, 0), CALL(FT_IoCtl, 17, 1, 6, a.h, 0, a.p, 1, a.p, 1, a.p, nullptr),
      Row{"FT_W32_CreateFile", 0, 0, 0, [](const Args& a) { return FT_W32_CreateFile(a.p, 0, 0, nullptr, 0, FT_OPEN_BY_DESCRIPTION, nullptr) == nullptr ? 0L : 1L; }},
      Row{"FT_W32_OpenFile", 0, 0, 0, [](const Args& a) { return FT_W32_OpenFile(a.p, 0, 0, nullptr, 0, FT_OPEN_BY_SERIAL_NUMBER, nullptr) == nullptr ? 0L : 1L; }},
      CALL(FT_W32_CloseHandle, 1, 0, 1, a.h), CALL(FT_W32_GetLastError, 0, 1, 0, a.h),
      SERIAL(FT_W32_ClearCommBreak, 0, 0), SERIAL(FT_W32_EscapeCommFunction, 0, 0, FT_ESCAPE_SET_DTR),
      SERIAL(FT_W32_PurgeComm, 0, 0, FT_PURGE_RX), SERIAL(FT_W32_SetCommBreak, 0, 0),
      SERIAL(FT_W32_SetCommMask, 0, 0, 7), SERIAL(FT_W32_SetupComm, 0, 0, 4096, 4096), SERIAL(FT_W32_CancelIo, 17, 17),
      SERIAL(FT_W32_GetOverlappedResult, 17, 17, nullptr, a.p, 0), SERIAL(FT_W32_ClearCommError, 0, 6, a.p, nullptr),
      SERIAL(FT_W32_GetCommModemStatus, 0, 6, a.p), SERIAL(FT_W32_GetCommState, 0, 6, a.p),
      SERIAL(FT_W32_GetCommTimeouts, 0, 6, a.p), SERIAL(FT_W32_ReadFile, 0, 6, a.p, 1, a.p, nullptr),
      SERIAL(FT_W32_SetCommState, 7, 6, a.p), SERIAL(FT_W32_SetCommTimeouts, 0, 6, a.p),
      SERIAL(FT_W32_WaitCommEvent, 0, 6, a.p, nullptr), SERIAL(FT_W32_WriteFile, 0, 6, a.p, 1, a.p, nullptr)};
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
      EXPECT_TRUE(row.bad == row.good || output == Filled());
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
