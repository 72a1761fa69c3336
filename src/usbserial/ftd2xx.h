// The D2XX interface to USB serial bridge chips, as this library implements it on libusb-1.0.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

#define CORVANE_FT_API __attribute__((visibility("default")))

typedef unsigned int DWORD;
typedef unsigned int FT_STATUS;
typedef void* FT_HANDLE;
typedef void* PVOID;
typedef void* LPVOID;
typedef DWORD* LPDWORD;

enum {
  FT_OK = 0,
  FT_INVALID_HANDLE,
  FT_DEVICE_NOT_FOUND,
  FT_DEVICE_NOT_OPENED,
  FT_IO_ERROR,
  FT_INSUFFICIENT_RESOURCES,
  FT_INVALID_PARAMETER,
  FT_INVALID_BAUD_RATE,
  FT_DEVICE_NOT_OPENED_FOR_ERASE,
  FT_DEVICE_NOT_OPENED_FOR_WRITE,
  FT_FAILED_TO_WRITE_DEVICE,
  FT_EEPROM_READ_FAILED,
  FT_EEPROM_WRITE_FAILED,
  FT_EEPROM_ERASE_FAILED,
  FT_EEPROM_NOT_PRESENT,
  FT_EEPROM_NOT_PROGRAMMED,
  FT_INVALID_ARGS,
  FT_NOT_SUPPORTED,
  FT_OTHER_ERROR
};

#define FT_LIST_NUMBER_ONLY 0x80000000U
#define FT_LIST_BY_INDEX 0x40000000U
#define FT_LIST_ALL 0x20000000U

typedef struct _ft_device_list_info_node {
  DWORD Flags;
  DWORD Type;
  DWORD ID;
  DWORD LocId;
  char SerialNumber[16];
  char Description[64];
  FT_HANDLE ftHandle;
} FT_DEVICE_LIST_INFO_NODE;

CORVANE_FT_API FT_STATUS FT_SetVIDPID(DWORD vid, DWORD pid);
CORVANE_FT_API FT_STATUS FT_GetVIDPID(DWORD* vid, DWORD* pid);
CORVANE_FT_API FT_STATUS FT_ListDevices(PVOID arg1, PVOID arg2, DWORD flags);
CORVANE_FT_API FT_STATUS FT_CreateDeviceInfoList(LPDWORD count);
CORVANE_FT_API FT_STATUS FT_GetDeviceInfoList(FT_DEVICE_LIST_INFO_NODE* nodes, LPDWORD count);
CORVANE_FT_API FT_STATUS FT_Open(int index, FT_HANDLE* handle);
CORVANE_FT_API FT_STATUS FT_Close(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_Read(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received);
CORVANE_FT_API FT_STATUS FT_Write(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written);
CORVANE_FT_API FT_STATUS FT_SetTimeouts(FT_HANDLE handle, DWORD readTimeout, DWORD writeTimeout);
CORVANE_FT_API FT_STATUS FT_Purge(FT_HANDLE handle, DWORD mask);

#ifdef __cplusplus
}
#endif
