// Vendor control requests of the bridge chips: numbers, values, and the settings that a device is opened with. Used by
// BridgeDevice; data only.
#pragma once

#include <array>
#include <cstdint>

namespace corvane {

enum VendorRequest : std::uint8_t {
  kRequestReset = 0,
  kRequestFlowControl = 2,
  kRequestBaudRate = 3,
  kRequestLineData = 4,
};

/// Values of kRequestReset.
enum ResetValue : std::uint16_t {
  kResetDevice = 0,
  kPurgeReceive = 1,
  kPurgeTransmit = 2,
};

struct VendorOut {
  VendorRequest request;
  std::uint16_t value;
  std::uint16_t index;
};

/// What an opened channel is set to: reset, 9600 baud, 8 data bits, no parity, 1 stop bit, no flow control.
/// 9600 baud is 3 MHz / 312.5 (the half is code 0x4000) or, on chips with the fast clock, 12 MHz / 1250 (index bit 2).
/// Chips of several channels or with the fast clock carry the index bits in the upper byte, above the port.
constexpr std::array<VendorOut, 4> OpeningRequests(bool fastClock, std::uint16_t port) {
  const std::uint16_t divisor = fastClock ? 1250 : 312 | 0x4000;
  const auto index = static_cast<std::uint16_t>((fastClock ? 2 << 8 : 0) | port);
  return {{{kRequestReset, kResetDevice, 0},
           {kRequestBaudRate, divisor, index},
           {kRequestLineData, 8, port},
           {kRequestFlowControl, 0, port}}};
}

}  // namespace corvane
