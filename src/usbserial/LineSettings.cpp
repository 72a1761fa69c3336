#include "usbserial/LineSettings.h"

#include <algorithm>
#include <array>
#include <vector>

#include "usbserial/BaudDivisor.h"

namespace corvane {
namespace {

constexpr DWORD kImpatientTimeout = 500;
constexpr int kParityShift = 8;
constexpr int kStopBitsShift = 11;
constexpr unsigned kBreakBit = 0x4000;
constexpr unsigned kEnabledBit = 0x0100;
constexpr std::array<USHORT, 4> kFlowModes{FT_FLOW_NONE, FT_FLOW_RTS_CTS, FT_FLOW_DTR_DSR, FT_FLOW_XON_XOFF};

unsigned CharacterValue(UCHAR character, bool enabled) {
  return character | (enabled ? kEnabledBit : 0U);
}

}  // namespace

void LineSettings::Open() {
  struct Step {
    BridgeRequest name;
    unsigned value;
    unsigned index;
  };
  const std::lock_guard lock(mMutex);
  const BaudWords baud = WordsFor(mState.baud).value_or(BaudWords{});
  DWORD timeout = ControlPath::kDefaultTimeout;
  std::vector<Step> steps{{BridgeRequest::kResetDevice, 0, 0}};
  if (!mControl.HasReset()) {
    steps = {{BridgeRequest::kPurgeReceive, 0, 0}, {BridgeRequest::kPurgeTransmit, 0, 0}};
  }
  steps.insert(steps.end(), {{BridgeRequest::kBaudRate, baud.value, baud.index},
                             {BridgeRequest::kLineValue, LineValue(), 0},
                             {BridgeRequest::kFlowControl, 0, mState.flow}});
  for (const Step& step : steps) {
    const int result = mControl.TrySend(step.name, step.value, step.index, timeout);
    if (result == LIBUSB_ERROR_NO_DEVICE) {
      return;
    }
    if (result == LIBUSB_ERROR_TIMEOUT) {
      timeout = kImpatientTimeout;  // the line is still to be set, but opening must come to an end
    }
  }
}

FT_STATUS LineSettings::SetBaudRate(ULONG baud) {
  const auto words = WordsFor(baud);
  if (!words) {
    return FT_INVALID_BAUD_RATE;
  }
  const std::lock_guard lock(mMutex);
  const FT_STATUS status = mControl.Send(BridgeRequest::kBaudRate, words->value, words->index);
  if (status == FT_OK) {
    mState.baud = baud;
  }
  return status;
}

FT_STATUS LineSettings::SetDivisor(USHORT divisor) {
  const std::lock_guard lock(mMutex);
  const FT_STATUS status = mControl.Send(BridgeRequest::kBaudRate, divisor, IndexWord(kBaudClock.index));
  if (status == FT_OK) {
    mState.baud = CalcBaudRate(kBaudClock, {divisor, kBaudClock.index});
  }
  return status;
}

FT_STATUS LineSettings::SetDataCharacteristics(UCHAR wordLength, UCHAR stopBits, UCHAR parity) {
  if ((wordLength != FT_BITS_7 && wordLength != FT_BITS_8) || stopBits > FT_STOP_BITS_2 || parity > FT_PARITY_SPACE) {
    return FT_INVALID_PARAMETER;
  }
  const std::lock_guard lock(mMutex);
  const LineState before = mState;
  mState.wordLength = wordLength;
  mState.stopBits = stopBits;
  mState.parity = parity;
  const FT_STATUS status = mControl.Send(BridgeRequest::kLineValue, LineValue());
  if (status != FT_OK) {
    mState = before;
  }
  return status;
}

FT_STATUS LineSettings::SetBreak(bool on) {
  const std::lock_guard lock(mMutex);
  return mControl.Send(BridgeRequest::kLineValue, LineValue() | (on ? kBreakBit : 0U));
}

// A handshake needs its line up from the start: the partner would wait for it otherwise.
FT_STATUS LineSettings::SetFlowControl(USHORT mode, UCHAR xon, UCHAR xoff) {
  if (std::find(kFlowModes.begin(), kFlowModes.end(), mode) == kFlowModes.end()) {
    return FT_INVALID_PARAMETER;
  }
  const std::lock_guard lock(mMutex);
  const unsigned characters = mode == FT_FLOW_XON_XOFF ? static_cast<unsigned>(xoff) << 8 | xon : 0U;
  const FT_STATUS status = mControl.Send(BridgeRequest::kFlowControl, characters, mode);
  if (status != FT_OK) {
    return status;
  }
  mState.flow = mode;
  mState.xon = xon;
  mState.xoff = xoff;
  switch (mode) {
    case FT_FLOW_RTS_CTS:
      return SwitchRts(true);
    case FT_FLOW_DTR_DSR:
      return SwitchDtr(true);
    default:
      return FT_OK;
  }
}

FT_STATUS LineSettings::SetChars(UCHAR event, bool eventEnabled, UCHAR error, bool errorEnabled) {
  const std::lock_guard lock(mMutex);
  FT_STATUS status = mControl.Send(BridgeRequest::kEventCharacter, CharacterValue(event, eventEnabled));
  if (status != FT_OK) {
    return status;
  }
  mState.eventCharacter = event;
  mState.eventEnabled = eventEnabled;
  status = mControl.Send(BridgeRequest::kErrorCharacter, CharacterValue(error, errorEnabled));
  if (status == FT_OK) {
    mState.errorCharacter = error;
    mState.errorEnabled = errorEnabled;
  }
  return status;
}

FT_STATUS LineSettings::SetDtr(bool on) {
  const std::lock_guard lock(mMutex);
  return SwitchDtr(on);
}

FT_STATUS LineSettings::SetRts(bool on) {
  const std::lock_guard lock(mMutex);
  return SwitchRts(on);
}

LineState LineSettings::State() const {
  const std::lock_guard lock(mMutex);
  return mState;
}

void LineSettings::Forget() {
  const std::lock_guard lock(mMutex);
  mState = {};
}

// A fast chip also divides 3 MHz, for the rates below the reach of 12.
std::optional<LineSettings::BaudWords> LineSettings::WordsFor(ULONG baud) const {
  BaudFit fit;
  int result = kDivisorOutOfRange;
  if (mControl.HasFastClock()) {
    result = FitDivisor(kFastBaudClock, baud, fit);
  }
  if (result == kDivisorOutOfRange) {
    result = FitDivisor(mControl.DividesByEveryEighth() ? kBaudClock : kOlderBaudClock, baud, fit);
  }
  if (result != kDivisorGood) {
    return std::nullopt;
  }
  return BaudWords{fit.divisor.word, IndexWord(fit.divisor.index)};
}

unsigned LineSettings::IndexWord(std::uint16_t bits) const {
  return mControl.HasWideIndex() ? static_cast<unsigned>(bits) << 8 : bits;
}

unsigned LineSettings::LineValue() const {
  return mState.wordLength | static_cast<unsigned>(mState.parity) << kParityShift |
         static_cast<unsigned>(mState.stopBits) << kStopBitsShift;
}

FT_STATUS LineSettings::SwitchDtr(bool on) {
  const FT_STATUS status = mControl.Send(on ? BridgeRequest::kSetDtr : BridgeRequest::kClearDtr);
  mState.dtr = status == FT_OK ? on : mState.dtr;
  return status;
}

FT_STATUS LineSettings::SwitchRts(bool on) {
  const FT_STATUS status = mControl.Send(on ? BridgeRequest::kSetRts : BridgeRequest::kClearRts);
  mState.rts = status == FT_OK ? on : mState.rts;
  return status;
}

}  // namespace corvane
