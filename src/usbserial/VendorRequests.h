// The vendor control requests of the bridge chips as one table: what this library asks of a chip, by name. Used by
// ControlPath, which sends them; data only.
#pragma once

#include <cstdint>

#include "usbserial/ftd2xx.h"

namespace corvane {

enum class BridgeRequest : std::uint8_t {
  kResetDevice,
  kPurgeReceive,
  kPurgeTransmit,
  kSetDtr,
  kClearDtr,
  kSetRts,
  kClearRts,
  kFlowControl,
  kBaudRate,
  kLineValue,
  kModemStatus,
  kEventCharacter,
  kErrorCharacter,
  kSetLatency,
  kGetLatency,
  kSetBitMode,
  kGetBitMode,
  kReadEeprom,
  kWriteEeprom,
  kEraseEeprom,
};

struct VendorRow {
  BridgeRequest name;
  std::uint8_t request;
  std::uint16_t value;       ///< or-ed with the caller's
  bool portInIndex;          ///< the port is or-ed into the caller's index
  std::uint8_t answerBytes;  ///< 0: host to device
  bool laterChipsOnly;       ///< chips without latency timer and bit modes are not asked
  FT_STATUS failure;         ///< what a request that fails answers
};

const VendorRow& RowOf(BridgeRequest name);

}  // namespace corvane
