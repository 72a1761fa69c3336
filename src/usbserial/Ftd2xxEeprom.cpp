// Exported functions of the chip's EEPROM: its words, and, as a table, the functions that this library does not offer.
#include <array>
#include <cstdint>

#include "usbserial/ExportFrame.h"
#include "usbserial/ftd2xx.h"

using corvane::BridgeDevice;
using corvane::BridgeRequest;
using corvane::OnDevice;
using corvane::OnDeviceWith;

namespace {

constexpr DWORD kLastAddress = 0xFFFF;

// What is not offered is still checked: a program gets the same answers to its own mistakes.
template <class... Pointers>
FT_STATUS NotOffered(FT_HANDLE handle, const Pointers*... pointers) {
  return OnDeviceWith(
      handle, [](BridgeDevice&) { return FT_NOT_SUPPORTED; }, pointers...);
}

}  // namespace

FT_STATUS FT_ReadEE(FT_HANDLE handle, DWORD address, LPWORD value) {
  return OnDeviceWith(
      handle,
      [&](BridgeDevice& device) {
        if (address > kLastAddress) {
          return FT_INVALID_PARAMETER;
        }
        std::array<std::uint8_t, 2> word{};
        const FT_STATUS status = device.Request(BridgeRequest::kReadEeprom, 0, address, word);
        if (status == FT_OK) {
          *value = static_cast<WORD>(word[0] | word[1] << 8);
        }
        return status;
      },
      value);
}

FT_STATUS FT_WriteEE(FT_HANDLE handle, DWORD address, WORD value) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    return address > kLastAddress ? FT_INVALID_PARAMETER : device.Request(BridgeRequest::kWriteEeprom, value, address);
  });
}

FT_STATUS FT_EraseEE(FT_HANDLE handle) {
  return OnDevice(handle, [](BridgeDevice& device) { return device.Request(BridgeRequest::kEraseEeprom); });
}

FT_STATUS FT_IoCtl(FT_HANDLE handle, DWORD, LPVOID input, DWORD inputLength, LPVOID output, DWORD outputLength,
                   LPDWORD returned, LPOVERLAPPED) {
  const bool complete = (input != nullptr || inputLength == 0) && (output != nullptr || outputLength == 0);
  return NotOffered(handle, complete ? returned : nullptr);
}

// Each row is a signature, and the pointers that must not be null. The rows name parameters that nobody looks at.
#pragma GCC diagnostic ignored "-Wunused-parameter"
// NOLINTBEGIN(misc-unused-parameters,readability-non-const-parameter)

#define NOT_OFFERED(name, parameters, ...) \
  FT_STATUS name parameters {              \
    return NotOffered(__VA_ARGS__);        \
  }

NOT_OFFERED(FT_EE_Program, (FT_HANDLE handle, PFT_PROGRAM_DATA data), handle, data)
NOT_OFFERED(FT_EE_ProgramEx,
            (FT_HANDLE handle, PFT_PROGRAM_DATA data, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
             PCHAR serial),
            handle, data, manufacturer, manufacturerId, description, serial)
NOT_OFFERED(FT_EE_Read, (FT_HANDLE handle, PFT_PROGRAM_DATA data), handle, data)
NOT_OFFERED(FT_EE_ReadEx,
            (FT_HANDLE handle, PFT_PROGRAM_DATA data, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
             PCHAR serial),
            handle, data, manufacturer, manufacturerId, description, serial)
NOT_OFFERED(FT_EE_ReadConfig, (FT_HANDLE handle, UCHAR address, PUCHAR value), handle, value)
NOT_OFFERED(FT_EE_WriteConfig, (FT_HANDLE handle, UCHAR address, UCHAR value), handle)
NOT_OFFERED(FT_EE_ReadECC, (FT_HANDLE handle, UCHAR option, LPWORD value), handle, value)
NOT_OFFERED(FT_EE_UASize, (FT_HANDLE handle, LPDWORD size), handle, size)
NOT_OFFERED(FT_EE_UARead, (FT_HANDLE handle, PUCHAR data, DWORD length, LPDWORD read), handle, data, read)
NOT_OFFERED(FT_EE_UAWrite, (FT_HANDLE handle, PUCHAR data, DWORD length), handle, data)
NOT_OFFERED(FT_EEPROM_Read,
            (FT_HANDLE handle, PVOID data, DWORD size, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
             PCHAR serial),
            handle, data, manufacturer, manufacturerId, description, serial)
NOT_OFFERED(FT_EEPROM_Program,
            (FT_HANDLE handle, PVOID data, DWORD size, PCHAR manufacturer, PCHAR manufacturerId, PCHAR description,
             PCHAR serial),
            handle, data, manufacturer, manufacturerId, description, serial)

// NOLINTEND(misc-unused-parameters,readability-non-const-parameter)
