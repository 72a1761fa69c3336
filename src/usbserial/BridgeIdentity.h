// What a bridge channel is called and what it is: the facts of a device-list node. Used by enumeration, open devices
// and the list functions; pure, without USB traffic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "usbserial/ftd2xx.h"

namespace corvane {

struct BridgeIdentity {
  static constexpr std::size_t kSerialSize = sizeof(FT_DEVICE_LIST_INFO_NODE::SerialNumber);
  static constexpr std::size_t kDescriptionSize = sizeof(FT_DEVICE_LIST_INFO_NODE::Description);

  DWORD type = FT_DEVICE_UNKNOWN;
  DWORD id = 0;
  DWORD location = 0;
  bool highSpeed = false;
  std::string serial;       ///< at most kSerialSize - 1 characters
  std::string description;  ///< at most kDescriptionSize - 1 characters
};

/// The chip type that a device release number (bcdDevice) tells; the oldest chips need the serial number's string
/// index besides.
DWORD ChipTypeOf(std::uint16_t release, std::uint8_t serialIndex);

/// Whether the chip divides 12 MHz for its baud rates instead of 3 MHz. It does so on a full-speed bus too.
bool HasFastBaudClock(const BridgeIdentity& identity);

/// Whether the chip has a latency timer and bit modes, and divides by every eighth for its baud rates. The oldest
/// chips do not, and one that is not known is not asked.
bool IsLaterChip(DWORD type);

/// Place of a channel on the bus; channel 0 stands for a chip that has only one.
DWORD LocationOf(std::uint8_t bus, std::uint8_t address, int channel);

/// A text of the device cut to fit a buffer of `size`, followed by `separator` and the channel's letter when the chip
/// has several. Ends at the first zero byte.
std::string ChannelText(std::string_view text, int channel, std::string_view separator, std::size_t size);

/// Copies a text and its terminator into a caller's buffer of `size` bytes, cutting it if need be.
void CopyText(const std::string& text, void* buffer, std::size_t size);

/// All of a node but ftHandle, which becomes null. `flags` is completed by the high-speed bit.
FT_DEVICE_LIST_INFO_NODE NodeOf(const BridgeIdentity& identity, DWORD flags);

}  // namespace corvane
