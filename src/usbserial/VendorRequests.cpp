#include "usbserial/VendorRequests.h"

#include <array>
#include <cstddef>

namespace corvane {
namespace {

using enum BridgeRequest;

constexpr bool kPort = true;
constexpr bool kLater = true;

// In the order of the names.
constexpr std::array<VendorRow, 20> kRows{{
    {kResetDevice, 0, 0, !kPort, 0, !kLater, FT_IO_ERROR},
    {kPurgeReceive, 0, 1, kPort, 0, !kLater, FT_IO_ERROR},
    {kPurgeTransmit, 0, 2, kPort, 0, !kLater, FT_IO_ERROR},
    {kSetDtr, 1, 0x0101, kPort, 0, !kLater, FT_IO_ERROR},
    {kClearDtr, 1, 0x0100, kPort, 0, !kLater, FT_IO_ERROR},
    {kSetRts, 1, 0x0202, kPort, 0, !kLater, FT_IO_ERROR},
    {kClearRts, 1, 0x0200, kPort, 0, !kLater, FT_IO_ERROR},
    {kFlowControl, 2, 0, kPort, 0, !kLater, FT_IO_ERROR},  // index: mode
    {kBaudRate, 3, 0, kPort, 0, !kLater, FT_IO_ERROR},     // value: divisor; index: its index bits
    {kLineValue, 4, 0, kPort, 0, !kLater, FT_IO_ERROR},    // value: format and break
    {kModemStatus, 5, 0, kPort, 2, !kLater, FT_IO_ERROR},
    {kEventCharacter, 6, 0, kPort, 0, !kLater, FT_IO_ERROR},
    {kErrorCharacter, 7, 0, kPort, 0, !kLater, FT_IO_ERROR},
    {kSetLatency, 9, 0, kPort, 0, kLater, FT_IO_ERROR},  // value: milliseconds
    {kGetLatency, 10, 0, kPort, 1, kLater, FT_IO_ERROR},
    {kSetBitMode, 11, 0, kPort, 0, kLater, FT_IO_ERROR},                // value: mode and mask
    {kGetBitMode, 12, 0, kPort, 1, !kLater, FT_IO_ERROR},               // asked of every chip
    {kReadEeprom, 0x90, 0, !kPort, 2, !kLater, FT_EEPROM_READ_FAILED},  // index: word address
    {kWriteEeprom, 0x91, 0, !kPort, 0, !kLater, FT_EEPROM_WRITE_FAILED},
    {kEraseEeprom, 0x92, 0, !kPort, 0, !kLater, FT_EEPROM_ERASE_FAILED},
}};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    if (kRows[i].name != static_cast<BridgeRequest>(i)) {
      return false;
    }
  }
  return true;
}
static_assert(InOrder());

}  // namespace

const VendorRow& RowOf(BridgeRequest name) {
  return kRows.at(static_cast<std::size_t>(name));
}

}  // namespace corvane
