// Vendor and product numbers of the devices that are plugged into the virtual bus.
#pragma once

#include <cstdint>

namespace usbid {

// Bridges as their chips' maker sells them.
inline constexpr std::uint16_t kChipMaker = 0x0403;
inline constexpr std::uint16_t kSerialCable = 0x6001;
inline constexpr std::uint16_t kTwoChannels = 0x6010;
inline constexpr std::uint16_t kFastCable = 0x6014;
// In the bridge library's custom row until that is set.
inline constexpr std::uint16_t kCustomProduct = 0x6017;

// A controller with an identifier of its own.
inline constexpr std::uint16_t kInstrumentMaker = 0x136E;
inline constexpr std::uint16_t kController = 0x0017;

}  // namespace usbid
