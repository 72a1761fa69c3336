#include "components/TCorvaneMerakAccessory.h"

#include "components/MerakOperation.h"
#include "controller/TMerakOrbis.h"

namespace {

constexpr int kOutputShift = 4;
constexpr int kLastOutput = 2;
constexpr int kPortBits = 32;

unsigned int BitOf(int place) {
  return place >= 0 && place < kPortBits ? 1U << static_cast<unsigned int>(place) : 0U;
}

MerakResult ReadPort(TMerakOrbis& controller, int& state) {
  return corvane::RequireNumber(state, [&](int& given) { return controller.GetPortState(given); });
}

}  // namespace

bool TCorvaneMerakAccessory::IsPresent() {
  const corvane::AcquisitionPause pause(mAborter);
  TMerakOrbis::SystemInfo info;
  mController.GetSystemInfoEx(info);
  return info.model.find("SX") == std::string::npos;
}

void TCorvaneMerakAccessory::SetAccessory(int line, bool state) {
  if (line < 0 || line > kLastOutput) {
    return;
  }
  corvane::RunPaused(mAborter, [&] {
    int port = 0;
    MerakResult result = ReadPort(mController, port);
    if (result == merak::kSuccess) {
      const auto outputs = static_cast<unsigned int>(port >> kOutputShift);
      result = mController.SetPortState(static_cast<int>(state ? outputs | BitOf(line) : outputs & ~BitOf(line)));
    }
    StateChanged();
    return result;
  });
}

bool TCorvaneMerakAccessory::GetAccessoryState(int line) {
  int port = 0;
  corvane::ThrowOnFailure(ReadPort(mController, port));
  const bool output = line <= kLastOutput;
  const auto bits = static_cast<unsigned int>(output ? port >> kOutputShift : port);
  return (bits & BitOf(output ? line : line - kLastOutput)) != 0;
}
