// The D2XX interface to FTDI USB serial bridge chips, as this library implements it on libusb-1.0. For programs in
// C11 and C++ that talk to a bridge directly; the library's own USB transport uses the same functions. It does not
// program the EEPROM of a bridge chip by fields.
//
// Rules for the whole interface
// - Status values are 32 bits wide, as are DWORD and ULONG, on every platform.
// - A function that takes a handle answers FT_INVALID_HANDLE (1) when it does not name a device that this library
//   holds open. A closed handle never becomes valid again.
// - Failures inside: out of memory (or of threads) gives FT_INSUFFICIENT_RESOURCES (5), anything unforeseen
//   FT_OTHER_ERROR (18). No exception leaves a function.
// - Functions may be called from any thread. One writer at a time sends; readers of one device share its bytes.
// - pthread_cancel ends a thread that waits in FT_Read or FT_WaitOnMask, also by way of FT_W32_ReadFile and
//   FT_W32_WaitCommEvent; in every other function it takes effect after the call.
// - After fork() the child is as a process that has called nothing yet: the parent's handles name no device there (1),
//   nothing is sent on the parent's devices, and it opens devices of its own. What cannot be undone: libusb's watch
//   over plugging is one for both, so only one of them should list devices after something was plugged, and nothing
//   should be plugged or pulled during fork() itself; and the child keeps the parent's descriptors until it ends.
// - Times are milliseconds.
// - "Request n" is a vendor control request on endpoint 0; "port" is its index word: 0 for a chip of one channel, the
//   channel counted from 1 for a chip of several.
//   The functions that send one answer 0; 1; 4 when the request failed, timed out, or was ended by a close;
//   6 when an output is null. An output is written only on 0 (the buffer of FT_VendorRequest also in part).
// - The settings of a line are remembered as they are made, not asked of the chip.
#pragma once

#include <pthread.h>

#ifdef __cplusplus
extern "C" {
#else
#include <assert.h>
#endif

#define CORVANE_FT_API __attribute__((visibility("default")))

typedef unsigned char UCHAR;
typedef unsigned short USHORT;
typedef unsigned short WORD;
typedef unsigned int ULONG;
typedef unsigned int DWORD;
typedef int BOOL;
typedef void* PVOID;
typedef void* LPVOID;
typedef UCHAR* PUCHAR;
typedef USHORT* PUSHORT;
typedef WORD* LPWORD;
typedef ULONG* PULONG;
typedef DWORD* LPDWORD;
typedef char* PCHAR;
typedef const char* LPCTSTR;

typedef unsigned int FT_STATUS;
typedef DWORD FT_DEVICE;
/// An open device: a token, not an address. Null names no device.
typedef void* FT_HANDLE;

/// Status values.
#define FT_OK ((FT_STATUS)0)
#define FT_INVALID_HANDLE ((FT_STATUS)1)
#define FT_DEVICE_NOT_FOUND ((FT_STATUS)2)
#define FT_DEVICE_NOT_OPENED ((FT_STATUS)3)
#define FT_IO_ERROR ((FT_STATUS)4)
#define FT_INSUFFICIENT_RESOURCES ((FT_STATUS)5)
#define FT_INVALID_PARAMETER ((FT_STATUS)6)
#define FT_INVALID_BAUD_RATE ((FT_STATUS)7)
#define FT_DEVICE_NOT_OPENED_FOR_ERASE ((FT_STATUS)8)
#define FT_DEVICE_NOT_OPENED_FOR_WRITE ((FT_STATUS)9)
#define FT_FAILED_TO_WRITE_DEVICE ((FT_STATUS)10)
#define FT_EEPROM_READ_FAILED ((FT_STATUS)11)
#define FT_EEPROM_WRITE_FAILED ((FT_STATUS)12)
#define FT_EEPROM_ERASE_FAILED ((FT_STATUS)13)
#define FT_EEPROM_NOT_PRESENT ((FT_STATUS)14)
#define FT_EEPROM_NOT_PROGRAMMED ((FT_STATUS)15)
#define FT_INVALID_ARGS ((FT_STATUS)16)
#define FT_NOT_SUPPORTED ((FT_STATUS)17)
#define FT_OTHER_ERROR ((FT_STATUS)18)

/// Chip types (the field Type of a node, FT_GetDeviceInfo).
#define FT_DEVICE_BM ((FT_DEVICE)0)
#define FT_DEVICE_AM ((FT_DEVICE)1)
#define FT_DEVICE_100AX ((FT_DEVICE)2)
#define FT_DEVICE_UNKNOWN ((FT_DEVICE)3)
#define FT_DEVICE_2232C ((FT_DEVICE)4)
#define FT_DEVICE_232R ((FT_DEVICE)5)
#define FT_DEVICE_2232H ((FT_DEVICE)6)
#define FT_DEVICE_4232H ((FT_DEVICE)7)
#define FT_DEVICE_232H ((FT_DEVICE)8)
#define FT_DEVICE_X_SERIES ((FT_DEVICE)9)

/// FT_ListDevices: the form (exactly one) ...
#define FT_LIST_NUMBER_ONLY 0x80000000U
#define FT_LIST_BY_INDEX 0x40000000U
#define FT_LIST_ALL 0x20000000U
/// ... and FT_ListDevices, FT_OpenEx: what a device is named by (at most one, exactly one).
#define FT_OPEN_BY_SERIAL_NUMBER 1U
#define FT_OPEN_BY_DESCRIPTION 2U
#define FT_OPEN_BY_LOCATION 4U

/// Bits of the field Flags of a node.
#define FT_FLAGS_OPENED 1U
#define FT_FLAGS_HISPEED 2U

/// FT_Purge.
#define FT_PURGE_RX 1U
#define FT_PURGE_TX 2U

/// FT_SetDataCharacteristics.
#define FT_BITS_8 ((UCHAR)8)
#define FT_BITS_7 ((UCHAR)7)
#define FT_STOP_BITS_1 ((UCHAR)0)
#define FT_STOP_BITS_2 ((UCHAR)2)
#define FT_PARITY_NONE ((UCHAR)0)
#define FT_PARITY_ODD ((UCHAR)1)
#define FT_PARITY_EVEN ((UCHAR)2)
#define FT_PARITY_MARK ((UCHAR)3)
#define FT_PARITY_SPACE ((UCHAR)4)

/// FT_SetFlowControl.
#define FT_FLOW_NONE 0x0000U
#define FT_FLOW_RTS_CTS 0x0100U
#define FT_FLOW_DTR_DSR 0x0200U
#define FT_FLOW_XON_XOFF 0x0400U

/// FT_SetEventNotification, FT_GetStatus, FT_GetEventStatus, FT_SetWaitMask, FT_WaitOnMask.
#define FT_EVENT_RXCHAR 1U        ///< bytes were received
#define FT_EVENT_MODEM_STATUS 2U  ///< CTS, DSR, RI or DCD changed
#define FT_EVENT_LINE_STATUS 4U   ///< an overrun, parity or framing error, or a break, began or ended
#define FT_EVENT_TX_EMPTY 8U      ///< all bytes of a write went out; only while a mask asks for it

/// FT_GetModemStatus.
#define FT_MODEM_CTS 0x0010U
#define FT_MODEM_DSR 0x0020U
#define FT_MODEM_RI 0x0040U
#define FT_MODEM_DCD 0x0080U
#define FT_LINE_OVERRUN 0x0200U
#define FT_LINE_PARITY 0x0400U
#define FT_LINE_FRAMING 0x0800U
#define FT_LINE_BREAK 0x1000U

/// One device of the list.
typedef struct _ft_device_list_info_node {
  DWORD Flags;            ///< FT_FLAGS_OPENED: in use (by this or another process); FT_FLAGS_HISPEED
  DWORD Type;             ///< chip type, FT_DEVICE_UNKNOWN (3) when not known
  DWORD ID;               ///< vendor number in the upper 16 bits, product number in the lower 16
  DWORD LocId;            ///< bus << 8 | address; for a chip of several channels that << 4 | channel (from 1)
  char SerialNumber[16];  ///< always terminated
  char Description[64];   ///< always terminated
  FT_HANDLE ftHandle;     ///< null unless this process holds the device open
} FT_DEVICE_LIST_INFO_NODE;

static_assert(sizeof(DWORD) == 4, "DWORD has 32 bits");
#if defined(__x86_64__) && !defined(__ILP32__)
static_assert(sizeof(FT_DEVICE_LIST_INFO_NODE) == 104, "published layout");
#endif

/// An event of the host, which it makes and keeps: it waits on `condition`, with `mutex`, until `set` is not 0, and
/// puts that back to 0.
typedef struct ft_event {
  pthread_cond_t condition;
  pthread_mutex_t mutex;
  int set;
} FT_EVENT;

/// FT_W32_EscapeCommFunction.
#define FT_ESCAPE_SET_RTS 3U
#define FT_ESCAPE_CLEAR_RTS 4U
#define FT_ESCAPE_SET_DTR 5U
#define FT_ESCAPE_CLEAR_DTR 6U
#define FT_ESCAPE_RESET 7U
#define FT_ESCAPE_SET_BREAK 8U
#define FT_ESCAPE_CLEAR_BREAK 9U

/// fDtrControl and fRtsControl of a FTDCB.
#define FT_CONTROL_DISABLE 0U
#define FT_CONTROL_ENABLE 1U
#define FT_CONTROL_HANDSHAKE 2U

/// Line settings of the FT_W32_* functions.
typedef struct ft_dcb {
  DWORD DCBlength;
  DWORD BaudRate;
  DWORD fBinary : 1;
  DWORD fParity : 1;
  DWORD fOutxCtsFlow : 1;
  DWORD fOutxDsrFlow : 1;
  DWORD fDtrControl : 2;
  DWORD fDsrSensitivity : 1;
  DWORD fTXContinueOnXoff : 1;
  DWORD fOutX : 1;
  DWORD fInX : 1;
  DWORD fErrorChar : 1;
  DWORD fNull : 1;
  DWORD fRtsControl : 2;
  DWORD fAbortOnError : 1;
  DWORD fDummy2 : 17;
  WORD wReserved;
  WORD XonLim;
  WORD XoffLim;
  UCHAR ByteSize;
  UCHAR Parity;
  UCHAR StopBits;
  char XonChar;
  char XoffChar;
  char ErrorChar;
  char EofChar;
  char EvtChar;
  WORD wReserved1;
} FTDCB, *LPFTDCB;

/// Queue state of the FT_W32_* functions.
typedef struct ft_comstat {
  DWORD fCtsHold : 1;
  DWORD fDsrHold : 1;
  DWORD fRlsdHold : 1;
  DWORD fXoffHold : 1;
  DWORD fXoffSent : 1;
  DWORD fEof : 1;
  DWORD fTxim : 1;
  DWORD fReserved : 25;
  DWORD cbInQue;
  DWORD cbOutQue;
} FTCOMSTAT, *LPFTCOMSTAT;

/// Time-outs of the FT_W32_* functions, in milliseconds.
typedef struct ft_timeouts {
  DWORD ReadIntervalTimeout;
  DWORD ReadTotalTimeoutMultiplier;
  DWORD ReadTotalTimeoutConstant;
  DWORD WriteTotalTimeoutMultiplier;
  DWORD WriteTotalTimeoutConstant;
} FTTIMEOUTS, *LPFTTIMEOUTS;

/// Arguments that this library never looks into: overlapped operation, access rights, and the EEPROM image of a chip.
typedef struct ft_overlapped OVERLAPPED, *LPOVERLAPPED;
typedef struct ft_security_attributes SECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;
typedef struct ft_program_data FT_PROGRAM_DATA, *PFT_PROGRAM_DATA;

// ---------------------------------------------------------------------------------------------------------------------
// Finding devices

/// Replaces the sixteenth, custom row of the table of supported devices (0x0403:0x6017 at first): a non-zero vid
/// replaces its vendor number, a non-zero pid its product number. Always 0.
CORVANE_FT_API FT_STATUS FT_SetVIDPID(DWORD vid, DWORD pid);

/// The custom row of the table. 6 when a pointer is null, else 0.
CORVANE_FT_API FT_STATUS FT_GetVIDPID(DWORD* vid, DWORD* pid);

/// Lists attached supported devices, one per channel, in libusb's order.
/// FT_LIST_NUMBER_ONLY: *(DWORD*)arg1 receives their number. FT_LIST_BY_INDEX: arg1 is an index from 0, arg2 receives
/// the name. FT_LIST_ALL: arg1 is an array that receives the names, *(DWORD*)arg2 their number.
/// Names, by FT_OPEN_BY_...: serial number (the default; a buffer of 16), description (a buffer of 64), location (a
/// DWORD). The array of FT_LIST_ALL holds pointers to such buffers and ends early at a null one; for locations it is
/// an array of DWORD. A device that cannot be opened has empty names there.
/// 0; 2 index beyond the list; 3 the device cannot be opened for its text; 6 null argument or another combination of
/// flags; 18 libusb does not start. The count is written only on 0.
CORVANE_FT_API FT_STATUS FT_ListDevices(PVOID arg1, PVOID arg2, DWORD flags);

/// Builds the device list anew and stores it: opens and closes every supported device that is free, as FT_Open and
/// FT_Close do. A device that this process holds open is listed with its handle and stays open; one that cannot be
/// opened has FT_FLAGS_OPENED, type 3 and zeros. *count receives the length of the list.
/// 0; 5 no memory for the list; 6 null pointer; otherwise as FT_ListDevices.
CORVANE_FT_API FT_STATUS FT_CreateDeviceInfoList(LPDWORD count);

/// Copies the stored list into nodes, which has room for as many nodes as FT_CreateDeviceInfoList reported, and its
/// length into *count. nodes may be null. 6 when count is null, else 0.
CORVANE_FT_API FT_STATUS FT_GetDeviceInfoList(FT_DEVICE_LIST_INFO_NODE* nodes, LPDWORD count);

/// One node of the stored list, by index from 0. Outputs may be null; serial has room for 16, description for 64
/// characters. 0; 2 index beyond the stored list.
CORVANE_FT_API FT_STATUS FT_GetDeviceInfoDetail(DWORD index, LPDWORD flags, LPDWORD type, LPDWORD id, LPDWORD locId,
                                                LPVOID serial, LPVOID description, FT_HANDLE* handle);

/// The version of this interface, 0x010112 (1.1.12). 6 for a null pointer, else 0.
CORVANE_FT_API FT_STATUS FT_GetLibraryVersion(LPDWORD version);

// ---------------------------------------------------------------------------------------------------------------------
// Opening and closing

/// Opens the index-th attached supported device, counted from 0 as FT_ListDevices lists them: takes its interface
/// (from a kernel serial driver too, where the system allows it), sends a reset (request 0, which reaches the first
/// channel of a chip; to a later one instead request 0 with the values 1 and 2 and its port, which empty its buffers),
/// 9600 baud (request 3), 8 data bits, no parity, 1 stop bit (request 4), no flow control (request 2), whose failures
/// are ignored, and starts reading. After a request that timed out (5 s) the others get half a second each. The
/// latency timer stays as it is. Time-outs are 0 until
/// FT_SetTimeouts. 0 and *handle; 2 no such device, or it vanished; 3 already open, no access, or held by another
/// driver; 4 it lacks its bulk endpoints; 5 no memory or no thread; 6 null pointer; 18 libusb does not start. *handle
/// is written only on 0.
CORVANE_FT_API FT_STATUS FT_Open(int index, FT_HANDLE* handle);

/// As FT_Open, the device chosen by arg: flags FT_OPEN_BY_SERIAL_NUMBER or FT_OPEN_BY_DESCRIPTION, arg a text;
/// FT_OPEN_BY_LOCATION, arg the location as a value. The first match counts. 2 no match; 6 other flags, or arg null
/// where it is a text; otherwise as FT_Open.
CORVANE_FT_API FT_STATUS FT_OpenEx(PVOID arg, DWORD flags, FT_HANDLE* handle);

/// Closes the device and makes the handle invalid. A read, a write or a control request under way in another thread
/// ends with 4. Takes at most about a second, also when the device is gone; the clearing of a stalled endpoint that is
/// under way comes to its end first. 0; 1.
CORVANE_FT_API FT_STATUS FT_Close(FT_HANDLE handle);

// ---------------------------------------------------------------------------------------------------------------------
// Reading and writing

/// Takes count bytes out of the receive buffer, waiting for them until the read time-out (0: without limit). *received
/// is the number of bytes taken; fewer than count, possibly none, after the time-out, which is no failure.
/// 0; 1; 4 the device is gone or was closed, even if bytes were waiting; 6 null buffer or received. That the device is
/// gone shows at the next request to it: while the receive buffer is full none is made, so reads go on until there is
/// room for one, and 4 follows, whatever is left in the buffer.
/// While it waits it polls: every microsecond for 20 ms without new data, then at intervals of a twentieth of the time
/// without new data, 10 ms at most, and whenever data come.
CORVANE_FT_API FT_STATUS FT_Read(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received);

/// Sends count bytes on the bulk OUT path and waits until the chip has taken them or the write time-out (0: none) is
/// over. *written is the number of bytes taken. A transfer that the system does not hand back within two seconds after
/// the time-out is given up, and later writes fail at once. 0 when all were taken; 1; 4 otherwise; 6 null buffer or
/// written.
CORVANE_FT_API FT_STATUS FT_Write(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written);

/// The same as FT_Write.
CORVANE_FT_API FT_STATUS FT_WriteSingleThread(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written);
CORVANE_FT_API FT_STATUS FT_WriteMultiThread(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written);

/// Sets both time-outs in milliseconds, 0 for none, for the calls made from now on. 0; 1.
CORVANE_FT_API FT_STATUS FT_SetTimeouts(FT_HANDLE handle, DWORD readTimeout, DWORD writeTimeout);

/// FT_PURGE_RX empties the chip's receive buffer (request 0, value 1, port, sent six times), then this side's: received
/// bytes and requests under way are dropped. FT_PURGE_TX empties the chip's transmit buffer (request 0, value 2, port).
/// Other bits are ignored: a mask without these two does nothing and keeps received bytes. 0; 1; 4 a request failed.
CORVANE_FT_API FT_STATUS FT_Purge(FT_HANDLE handle, DWORD mask);

/// The number of bytes that FT_Read can take at once, while the device is there: an unplug leaves the number as it is,
/// and FT_Read tells of it. 0; 1; 6.
CORVANE_FT_API FT_STATUS FT_GetQueueStatus(FT_HANDLE handle, LPDWORD available);

/// The same as FT_GetQueueStatus.
CORVANE_FT_API FT_STATUS FT_GetQueueStatusEx(FT_HANDLE handle, LPDWORD available);

/// Sets the length of the read requests that are made from now on: 64 to 65536 bytes in steps of 64 (4096 at first);
/// a length that is no multiple of the device's packet size is rounded up to one. The length for writing is not used.
/// 0; 1; 6 another length.
CORVANE_FT_API FT_STATUS FT_SetUSBParameters(FT_HANDLE handle, ULONG inTransferSize, ULONG outTransferSize);

/// Sets the time-out of control requests in milliseconds (5000 at first, and again with 0). 0; 1.
CORVANE_FT_API FT_STATUS FT_SetDeadmanTimeout(FT_HANDLE handle, ULONG timeout);

/// Hold and resume the reading in the background: no further request is sent to the device; the up to four under way
/// still bring what they bring. What comes then stays in the chip, which loses bytes once its own buffer is full,
/// unless flow control holds the partner back. 0; 1.
CORVANE_FT_API FT_STATUS FT_StopInTask(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_RestartInTask(FT_HANDLE handle);

/// How often the clearing of a stalled endpoint is repeated, every millisecond, when it fails (50 at first). 0; 1.
CORVANE_FT_API FT_STATUS FT_SetResetPipeRetryCount(FT_HANDLE handle, DWORD count);

// ---------------------------------------------------------------------------------------------------------------------
// What an open device is

/// Type, ID, serial number (room for 16) and description (room for 64) of an open device, as in the device list.
/// Outputs may be null; dummy is not used. 0; 1.
CORVANE_FT_API FT_STATUS FT_GetDeviceInfo(FT_HANDLE handle, FT_DEVICE* type, LPDWORD id, PCHAR serial,
                                          PCHAR description, LPVOID dummy);

/// The location of an open device, as in the device list. 0; 1; 6.
CORVANE_FT_API FT_STATUS FT_GetDeviceLocId(FT_HANDLE handle, LPDWORD locId);

/// The same value as FT_GetLibraryVersion. 0; 1; 6.
CORVANE_FT_API FT_STATUS FT_GetDriverVersion(FT_HANDLE handle, LPDWORD version);

// ---------------------------------------------------------------------------------------------------------------------
// Line settings and modem lines

/// Sets the baud rate to the nearest that the chip can make (request 3; see FT_GetDivisor, for chips with the 12 MHz
/// clock FT_GetDivisorHi, and FT_GetDivisor below the reach of that). The index bits are the upper byte of the index
/// word above the port on chips of several channels or with the fast clock, else the index word. 7 more than 3 per cent
/// off, nothing was sent.
CORVANE_FT_API FT_STATUS FT_SetBaudRate(FT_HANDLE handle, ULONG baud);

/// Sends a divisor word as FT_CalcDivisor makes it, with index bits 0: it divides 3 MHz on every chip (request 3).
CORVANE_FT_API FT_STATUS FT_SetDivisor(FT_HANDLE handle, USHORT divisor);

/// Request 4: word length FT_BITS_7 or _8, stop bits FT_STOP_BITS_1, _2 or 1 for one and a half, parity FT_PARITY_...;
/// 6 for other values. Ends a break.
CORVANE_FT_API FT_STATUS FT_SetDataCharacteristics(FT_HANDLE handle, UCHAR wordLength, UCHAR stopBits, UCHAR parity);

/// Begin and end a break condition: request 4 with the characteristics set last, with and without the break bit 0x4000.
CORVANE_FT_API FT_STATUS FT_SetBreakOn(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_SetBreakOff(FT_HANDLE handle);

/// Request 2: FT_FLOW_..., 6 for another mode; the two characters count for FT_FLOW_XON_XOFF only. FT_FLOW_RTS_CTS then
/// raises RTS and FT_FLOW_DTR_DSR raises DTR (request 1).
CORVANE_FT_API FT_STATUS FT_SetFlowControl(FT_HANDLE handle, USHORT mode, UCHAR xon, UCHAR xoff);

/// Requests 6 and 7: event character, which the chip sends on at once, and the character that takes the place of one
/// with a parity error, each with its enabling flag (0 or not).
CORVANE_FT_API FT_STATUS FT_SetChars(FT_HANDLE handle, UCHAR event, UCHAR eventEnabled, UCHAR error,
                                     UCHAR errorEnabled);

/// Request 1: the two output lines.
CORVANE_FT_API FT_STATUS FT_SetDtr(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_ClrDtr(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_SetRts(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_ClrRts(FT_HANDLE handle);

/// Request 5: the input lines in the lower byte (FT_MODEM_...), the line status in the second (FT_LINE_...).
CORVANE_FT_API FT_STATUS FT_GetModemStatus(FT_HANDLE handle, PULONG status);

/// Requests 9 and 10: latency timer in milliseconds. 17 on a chip without one (FT_DEVICE_AM, FT_DEVICE_UNKNOWN),
/// nothing was sent.
CORVANE_FT_API FT_STATUS FT_SetLatencyTimer(FT_HANDLE handle, UCHAR latency);
CORVANE_FT_API FT_STATUS FT_GetLatencyTimer(FT_HANDLE handle, PUCHAR latency);

/// Request 11: pins of the mask become outputs, in this mode. 17 as FT_SetLatencyTimer.
CORVANE_FT_API FT_STATUS FT_SetBitMode(FT_HANDLE handle, UCHAR mask, UCHAR mode);

/// Request 12: the levels of the pins. Asked of every chip.
CORVANE_FT_API FT_STATUS FT_GetBitMode(FT_HANDLE handle, PUCHAR mode);

/// Request 0 with value 0 and index 0: on a chip of several channels it reaches the first, whichever the handle names.
/// That channel's buffers in the chip are emptied; received bytes stay.
CORVANE_FT_API FT_STATUS FT_ResetDevice(FT_HANDLE handle);

/// Reset the USB port of the device: a write under way or begun meanwhile fails, received bytes stay, the chip is as
/// after power-on, so its line is to be set again. So are the chip's other channels; those that this process holds open
/// go on reading, or have failed when their interface cannot be taken again. Another process that has a channel open
/// loses it. 4 also when a read request does not come back within a second (nothing was reset), when an interface
/// cannot be taken again, and when the device comes back as another one; the handle is of no use then. FT_CyclePort is
/// the same.
CORVANE_FT_API FT_STATUS FT_ResetPort(FT_HANDLE handle);
CORVANE_FT_API FT_STATUS FT_CyclePort(FT_HANDLE handle);

/// One control request of the caller's choice, within the time-out of FT_SetDeadmanTimeout. Type 0xC0 (vendor, to host)
/// fills the buffer: 0 when exactly length bytes came. For any other type, such as 0x40 (vendor, to device), 0 when no
/// byte was transferred: a request that carries data answers 4 although it was sent. The device comes last. 6 when
/// buffer is null and length is not 0. The settings that this library remembers do not follow.
CORVANE_FT_API FT_STATUS FT_VendorRequest(UCHAR request, USHORT value, USHORT index, PUCHAR buffer, USHORT length,
                                          UCHAR requestType, FT_HANDLE device);

// ---------------------------------------------------------------------------------------------------------------------
// Status and events. An event stays until FT_GetEventStatus or FT_WaitOnMask takes it; FT_EVENT_RXCHAR also ends when
// the receive buffer becomes empty. The lines are seen in the packets of the device, at least once in a latency period.

/// Bytes that FT_Read can take at once, bytes of the write under way, and the events that are there. 0; 1; 6.
CORVANE_FT_API FT_STATUS FT_GetStatus(FT_HANDLE handle, LPDWORD receiveBytes, LPDWORD transmitBytes, LPDWORD events);

/// The events that are there, which it takes. 0; 1; 6.
CORVANE_FT_API FT_STATUS FT_GetEventStatus(FT_HANDLE handle, LPDWORD events);

/// From now on, and at once if it is there, each event of the mask sets the host's event: locks its mutex, sets `set`
/// to 1, broadcasts its condition. So does a failure of the device, and FT_Close. While the host holds the mutex the
/// signal waits (FT_Close gives it up after some 20 ms); any function may be called meanwhile. `event` points to an
/// FT_EVENT that stays until FT_Close or a later call of this function has returned; mask 0 ends the signalling,
/// whatever `event` is. 0; 1; 6 null with another mask.
CORVANE_FT_API FT_STATUS FT_SetEventNotification(FT_HANDLE handle, DWORD mask, PVOID event);

/// The events that FT_WaitOnMask waits for; none at first. A waiting call goes on with the new mask. 0; 1.
CORVANE_FT_API FT_STATUS FT_SetWaitMask(FT_HANDLE handle, DWORD mask);

/// Waits until an event of the wait mask is there, or until the read time-out (0: without limit). *events receives
/// those of the mask, which it takes; 0 after the time-out, which is no failure, and at once while the mask is 0. 0; 1;
/// 4 the device is gone or was closed, nothing was taken; 6.
CORVANE_FT_API FT_STATUS FT_WaitOnMask(FT_HANDLE handle, LPDWORD events);

/// Not offered. 1; 6 when returned is null, or a buffer is null whose length is not 0; else 17.
CORVANE_FT_API FT_STATUS FT_IoCtl(FT_HANDLE handle, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                                  DWORD outputLength, LPDWORD returned, LPOVERLAPPED overlapped);

// ---------------------------------------------------------------------------------------------------------------------
// Divisor arithmetic, without a device. A divisor word is the divisor's whole part (14 bits) and, in the upper two bits
// with bit 0 of the index bits, its eighths.

/// The divisor word and index bits for a baud rate, of the 3 MHz clock; newChip 0 for the oldest chips
/// (FT_DEVICE_AM), which do not know the index bit. 1; 0 the fraction cannot be expressed: the caller takes the next
/// whole divisor; -1 out of range (below 184 baud), or divisor or index null: outputs untouched.
CORVANE_FT_API int FT_CalcDivisor(ULONG baud, PUSHORT divisor, PUSHORT index, int newChip);
/// The same of the 12 MHz clock (from 733 baud), which index bit 1 selects.
CORVANE_FT_API int FT_CalcDivisorHi(ULONG baud, PUSHORT divisor, PUSHORT index);

/// The same, the next whole divisor taken where need be, with the baud rate that results, its error in whole per cent,
/// and whether it is not below the wanted one. The last three may be null. 1 not more than 3 per cent off; 0 more, or
/// divisor or index null; -1 out of range, outputs untouched.
CORVANE_FT_API int FT_GetDivisor(ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent,
                                 int* above, int newChip);
CORVANE_FT_API int FT_GetDivisorHi(ULONG baud, PUSHORT divisor, PUSHORT index, PULONG actual, PULONG errorPercent,
                                   int* above);

/// The baud rate that a divisor word and index bits stand for, rounded down.
CORVANE_FT_API ULONG FT_CalcBaudRate(USHORT divisor, USHORT index);
CORVANE_FT_API ULONG FT_CalcBaudRateHi(USHORT divisor, USHORT index);

// ---------------------------------------------------------------------------------------------------------------------
// EEPROM of the bridge chip

/// Requests 0x90, 0x91, 0x92: one 16-bit word by its word address; the whole EEPROM, to 0xFFFF. A chip uses what is
/// written when it is plugged in the next time. 0; 1; 6 null value, or an address beyond 0xFFFF; 11, 12, 13 the
/// reading, writing, erasing failed.
CORVANE_FT_API FT_STATUS FT_ReadEE(FT_HANDLE handle, DWORD address, LPWORD value);
CORVANE_FT_API FT_STATUS FT_WriteEE(FT_HANDLE handle, DWORD address, WORD value);
CORVANE_FT_API FT_STATUS FT_EraseEE(FT_HANDLE handle);

/// Programming by fields is not offered: these check their handle (1) and their pointers (6), and answer
/// FT_NOT_SUPPORTED (17). The image types are opaque here.
CORVANE_FT_API FT_STATUS FT_EE_Program(FT_HANDLE handle, PFT_PROGRAM_DATA data);
CORVANE_FT_API FT_STATUS FT_EE_ProgramEx(FT_HANDLE handle, PFT_PROGRAM_DATA data, PCHAR manufacturer,
                                         PCHAR manufacturerId, PCHAR description, PCHAR serial);
CORVANE_FT_API FT_STATUS FT_EE_Read(FT_HANDLE handle, PFT_PROGRAM_DATA data);
CORVANE_FT_API FT_STATUS FT_EE_ReadEx(FT_HANDLE handle, PFT_PROGRAM_DATA data, PCHAR manufacturer, PCHAR manufacturerId,
                                      PCHAR description, PCHAR serial);
CORVANE_FT_API FT_STATUS FT_EE_ReadConfig(FT_HANDLE handle, UCHAR address, PUCHAR value);
CORVANE_FT_API FT_STATUS FT_EE_WriteConfig(FT_HANDLE handle, UCHAR address, UCHAR value);
CORVANE_FT_API FT_STATUS FT_EE_ReadECC(FT_HANDLE handle, UCHAR option, LPWORD value);
CORVANE_FT_API FT_STATUS FT_EE_UASize(FT_HANDLE handle, LPDWORD size);
CORVANE_FT_API FT_STATUS FT_EE_UARead(FT_HANDLE handle, PUCHAR data, DWORD length, LPDWORD read);
CORVANE_FT_API FT_STATUS FT_EE_UAWrite(FT_HANDLE handle, PUCHAR data, DWORD length);
CORVANE_FT_API FT_STATUS FT_EEPROM_Read(FT_HANDLE handle, PVOID data, DWORD size, PCHAR manufacturer,
                                        PCHAR manufacturerId, PCHAR description, PCHAR serial);
CORVANE_FT_API FT_STATUS FT_EEPROM_Program(FT_HANDLE handle, PVOID data, DWORD size, PCHAR manufacturer,
                                           PCHAR manufacturerId, PCHAR description, PCHAR serial);

// ---------------------------------------------------------------------------------------------------------------------
// The same operations in the form of serial port calls: thin forms of the functions above, with their masks and
// numbers. They answer 1 (true) or 0 (false); the status is kept for each handle. Overlapped operation is not offered:
// a call with an overlapped argument that is not null fails with FT_NOT_SUPPORTED (17).

/// FT_OpenEx with the FT_OPEN_BY_... bits of attributes; the other arguments and bits are not used. Null on failure.
CORVANE_FT_API FT_HANDLE FT_W32_CreateFile(LPCTSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                           DWORD creation, DWORD attributes, FT_HANDLE pattern);
CORVANE_FT_API FT_HANDLE FT_W32_OpenFile(LPCTSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                         DWORD creation, DWORD attributes, FT_HANDLE pattern);
/// FT_Close.
CORVANE_FT_API BOOL FT_W32_CloseHandle(FT_HANDLE handle);
/// FT_Read and FT_Write, with their time-outs.
CORVANE_FT_API BOOL FT_W32_ReadFile(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD received,
                                    LPOVERLAPPED overlapped);
CORVANE_FT_API BOOL FT_W32_WriteFile(FT_HANDLE handle, LPVOID buffer, DWORD count, LPDWORD written,
                                     LPOVERLAPPED overlapped);
/// The status of the last FT_W32_ call on the handle; FT_INVALID_HANDLE (1) for a handle that names no open device.
CORVANE_FT_API DWORD FT_W32_GetLastError(FT_HANDLE handle);
/// Not offered: 0, with 17.
CORVANE_FT_API BOOL FT_W32_GetOverlappedResult(FT_HANDLE handle, LPOVERLAPPED overlapped, LPDWORD transferred,
                                               BOOL wait);
CORVANE_FT_API BOOL FT_W32_CancelIo(FT_HANDLE handle);
/// FT_SetBreakOff.
CORVANE_FT_API BOOL FT_W32_ClearCommBreak(FT_HANDLE handle);
/// *errors: bits of the line status (FT_LINE_... >> 8) that came up since the last call. Status, which may be null: the
/// lengths of FT_GetStatus, no flags.
CORVANE_FT_API BOOL FT_W32_ClearCommError(FT_HANDLE handle, LPDWORD errors, LPFTCOMSTAT status);
/// FT_ESCAPE_...; 6 for another function.
CORVANE_FT_API BOOL FT_W32_EscapeCommFunction(FT_HANDLE handle, DWORD function);
/// FT_GetModemStatus.
CORVANE_FT_API BOOL FT_W32_GetCommModemStatus(FT_HANDLE handle, LPDWORD status);
/// The line settings as they were made last (9600 baud, 8 data bits, no parity, 1 stop bit, no flow control at first).
CORVANE_FT_API BOOL FT_W32_GetCommState(FT_HANDLE handle, LPFTDCB settings);
/// The time-outs of FT_SetTimeouts, as the two constants; the other members are 0.
CORVANE_FT_API BOOL FT_W32_GetCommTimeouts(FT_HANDLE handle, LPFTTIMEOUTS timeouts);
/// FT_Purge, with its bits.
CORVANE_FT_API BOOL FT_W32_PurgeComm(FT_HANDLE handle, DWORD mask);
/// FT_SetBreakOn.
CORVANE_FT_API BOOL FT_W32_SetCommBreak(FT_HANDLE handle);
/// FT_SetWaitMask, with its bits.
CORVANE_FT_API BOOL FT_W32_SetCommMask(FT_HANDLE handle, ULONG mask);
/// FT_SetBaudRate, FT_SetDataCharacteristics, the lines that are not part of a handshake, FT_SetFlowControl,
/// FT_SetChars, in this order up to the first that fails. Flow control: FT_FLOW_XON_XOFF with fOutX or fInX, else
/// FT_FLOW_RTS_CTS with fOutxCtsFlow or fRtsControl FT_CONTROL_HANDSHAKE, else FT_FLOW_DTR_DSR with fOutxDsrFlow or
/// such a fDtrControl. EvtChar is enabled when it is not 0. Other members are not used.
CORVANE_FT_API BOOL FT_W32_SetCommState(FT_HANDLE handle, LPFTDCB settings);
/// FT_SetTimeouts with the two constants; the other members are not used.
CORVANE_FT_API BOOL FT_W32_SetCommTimeouts(FT_HANDLE handle, LPFTTIMEOUTS timeouts);
/// Changes nothing, with 1: the receive buffer has 64 KiB, and writes are not queued.
CORVANE_FT_API BOOL FT_W32_SetupComm(FT_HANDLE handle, DWORD readQueueSize, DWORD writeQueueSize);
/// FT_WaitOnMask.
CORVANE_FT_API BOOL FT_W32_WaitCommEvent(FT_HANDLE handle, PULONG event, LPOVERLAPPED overlapped);

#ifdef __cplusplus
}
#endif
