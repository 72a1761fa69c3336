// Opening, closing and enumerating: CorvaneInitialize, CorvaneClose, CorvaneGetNumberDevices, CorvaneGetSerialNumber,
// CorvaneGetFunctionReturnDescription.
#include <algorithm>
#include <string_view>

#include "api/ApiFrame.h"
#include "api/CorvaneCIF.h"
#include "api/LibraryState.h"
#include "api/TSpectrographSDK.h"
#include "platform/CancellationBlock.h"

using corvane::ApiCall;
using corvane::Argument;
using corvane::CancellationBlock;

namespace {

struct StatusText {
  int status;
  std::string_view text;
};

// Deliberately incomplete: CORVANE_P4_INVALID, CORVANE_P5_INVALID and CORVANE_NO_LEGACY_DRIVER have no text of their
// own.
constexpr StatusText kStatusTexts[] = {
    {CORVANE_COMMUNICATION_ERROR, "COMMUNICATION ERROR"}, {CORVANE_SUCCESS, "SUCCESS"},
    {CORVANE_P1_INVALID, "PARAMETER 1 INVALID"},          {CORVANE_P2_INVALID, "PARAMETER 2 INVALID"},
    {CORVANE_P3_INVALID, "PARAMETER 3 INVALID"},          {CORVANE_NOT_INITIALIZED, "CORVANE NOT INITIALIZED"},
};
constexpr std::string_view kNoStatusText = "ERROR CODE NOT AVAILABLE";

std::string_view TextOf(int status) {
  const auto* found = std::find_if(std::begin(kStatusTexts), std::end(kStatusTexts),
                                   [status](const StatusText& row) { return row.status == status; });
  return found != std::end(kStatusTexts) ? found->text : kNoStatusText;
}

/// False when the search for instruments failed; there is no list then.
bool FindInstruments(char* directory) {
  try {
    pCorvaneList = nullptr;  // the earlier list goes before the new search starts
    pSpectrographSDK = TSpectrographSDK::Instance();
    pSpectrographSDK->CreateSpectrographList(directory);
    pCorvaneList = pSpectrographSDK->GetSpectrographList();
    return true;
  } catch (...) {
    return false;
  }
}

/// False when a device could not be brought to its working state; the later ones are not tried.
bool InitialiseInstruments() {
  try {
    giNumberCorvanes = pCorvaneList->GetNumberDevices();
    for (int device = 0; device < giNumberCorvanes; ++device) {
      pCorvaneList->GetDevice(device)->Initialise();
    }
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

unsigned int CorvaneInitialize(char* directory) {
  const CancellationBlock block;
  if (!FindInstruments(directory)) {
    return CORVANE_NOT_INITIALIZED;
  }
  gbCorvInitialized = 1;
  return InitialiseInstruments() ? CORVANE_SUCCESS : CORVANE_COMMUNICATION_ERROR;
}

unsigned int CorvaneClose() {
  const CancellationBlock block;
  TSpectrographSDK::Kill();
  pSpectrographSDK = nullptr;
  pCorvaneList = nullptr;
  giNumberCorvanes = 0;
  gbCorvInitialized = 0;
  return CORVANE_SUCCESS;
}

unsigned int CorvaneGetNumberDevices(int* count) {
  if (gbCorvInitialized != 1) {
    return CORVANE_NOT_INITIALIZED;
  }
  if (count == nullptr) {
    return CORVANE_P1_INVALID;
  }
  *count = giNumberCorvanes;
  return CORVANE_SUCCESS;
}

unsigned int CorvaneGetSerialNumber(int device, char* serial) {
  return ApiCall(device)
      .Require(serial != nullptr, Argument::kSecond)
      .OnHardware([&](TSpectrographHardware& hardware) { hardware.GetSerialNumber(serial, CORVANE_SERIAL_LENGTH); })
      .Status();
}

unsigned int CorvaneGetFunctionReturnDescription(int code, char* text, int length) {
  if (length < 1) {
    return CORVANE_P3_INVALID;
  }
  if (text == nullptr) {
    return CORVANE_P2_INVALID;
  }
  const auto room = static_cast<std::size_t>(std::min<int>(length, CORVANE_DESCRIPTION_LENGTH));
  const std::string_view description = TextOf(code);
  const std::size_t copied = std::min(description.size(), room - 1);
  std::copy_n(description.begin(), copied, text);
  std::fill(text + copied, text + room, '\0');
  return description.size() < room ? CORVANE_SUCCESS : CORVANE_P3_INVALID;
}
