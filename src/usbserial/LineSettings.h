// The line settings of one open channel as the host last set them, and the requests that set them. Used by
// BridgeDevice, whose callers may come from any thread: one setting at a time. It does not ask the chip what it is set
// to.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "usbserial/ControlPath.h"

namespace corvane {

/// What a channel is set to.
struct LineState {
  ULONG baud = 9600;
  UCHAR wordLength = FT_BITS_8;
  UCHAR stopBits = FT_STOP_BITS_1;
  UCHAR parity = FT_PARITY_NONE;
  USHORT flow = FT_FLOW_NONE;
  UCHAR xon = 0;
  UCHAR xoff = 0;
  UCHAR eventCharacter = 0;
  bool eventEnabled = false;
  UCHAR errorCharacter = 0;
  bool errorEnabled = false;
  bool dtr = false;
  bool rts = false;
};

class LineSettings {
 public:
  /// Borrows the control path, which outlives the object.
  explicit LineSettings(const ControlPath& control) : mControl(control) {}

  /// Sends what an opened channel is set to: a reset of the chip, or for a channel that this does not reach the
  /// emptying of its buffers, then the state as a LineState begins. Failures are ignored, and the time for them is
  /// bounded.
  void Open();

  /// 0; 4 the request failed; 6 a value that no chip has; 7 a baud rate that the chip cannot make within 3 per cent.
  FT_STATUS SetBaudRate(ULONG baud);
  FT_STATUS SetDivisor(USHORT divisor);
  FT_STATUS SetDataCharacteristics(UCHAR wordLength, UCHAR stopBits, UCHAR parity);
  FT_STATUS SetBreak(bool on);
  FT_STATUS SetFlowControl(USHORT mode, UCHAR xon, UCHAR xoff);
  FT_STATUS SetChars(UCHAR event, bool eventEnabled, UCHAR error, bool errorEnabled);
  FT_STATUS SetDtr(bool on);
  FT_STATUS SetRts(bool on);

  LineState State() const;
  /// The chip is as after power-on: a later break must not bring an older format back.
  void Forget();

 private:
  struct BaudWords {
    std::uint16_t value = 0;
    unsigned index = 0;
  };

  std::optional<BaudWords> WordsFor(ULONG baud) const;
  unsigned IndexWord(std::uint16_t bits) const;
  unsigned LineValue() const;
  FT_STATUS SwitchDtr(bool on);
  FT_STATUS SwitchRts(bool on);

  const ControlPath& mControl;
  mutable std::mutex mMutex;
  LineState mState;
};

}  // namespace corvane
