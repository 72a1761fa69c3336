// Corvane: what its output lines switch, as this library defines it, and the focus mirror that these instruments do
// not have.
//
// Line 0 carries all three: accessory lines 1 and 2 on bits 0 and 1, the shutter on bit 2, beside their presence bits.
#include "legacy/Corvane.h"

namespace {

constexpr std::uint8_t kShutterBit = 0x04;
constexpr int kLine = 0;

/// 0 for a number that is no accessory line.
std::uint8_t AccessoryBit(int line) {
  return line == 1 || line == 2 ? static_cast<std::uint8_t>(line) : std::uint8_t{0};
}

}  // namespace

unsigned int Corvane::SwitchOutput(std::uint8_t bit, bool on) {
  std::uint8_t& value = mLines[kLine];
  const std::uint8_t before = value;
  value = static_cast<std::uint8_t>(on ? value | bit : value & ~bit);
  const unsigned int result = SendData(kLine);
  if (result != kSuccess) {
    value = before;
  }
  return result;
}

unsigned int Corvane::SetShutter(int mode) {
  return OnRecord(mode == 0 || mode == 1, [&](auto&) { return SwitchOutput(kShutterBit, mode == 1); });
}

unsigned int Corvane::SetAccessoryState(int line, bool state) {
  const std::uint8_t bit = AccessoryBit(line);
  return OnRecord(bit != 0, [&](auto&) { return SwitchOutput(bit, state); });
}

unsigned int Corvane::GetAccessoryState(int line, bool& state) {
  const std::uint8_t bit = AccessoryBit(line);
  return OnRecord(bit != 0, [&](auto&) {
    state = (mLines[kLine] & bit) != 0;
    return kSuccess;
  });
}

unsigned int Corvane::SetMirrorFocus(int /*steps*/) {
  return kFailure;
}

unsigned int Corvane::GetMirrorFocus(int* /*steps*/) {
  return kFailure;
}

unsigned int Corvane::GetFocusMirrorMaxSteps(int* /*steps*/) {
  return kFailure;
}

unsigned int Corvane::ResetFocusMirror() {
  return kFailure;
}
