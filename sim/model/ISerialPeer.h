// What sits behind a serial line: the simulated motion controller, seen by whatever carries its bytes (a simulated
// I2C address, a virtual bridge chip). Calls come from one thread at a time; the carrier serialises them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

class ISerialPeer {
 public:
  virtual ~ISerialPeer() = default;

  /// Bytes that the host sent, in any split.
  virtual void FromHost(std::span<const std::uint8_t> bytes) = 0;

  /// Moves output that is due now into the buffer and answers how many bytes it moved. A motion still running keeps
  /// its answer back, so 0 does not mean that nothing will come.
  virtual std::size_t ToHost(std::span<std::uint8_t> buffer) = 0;
};
