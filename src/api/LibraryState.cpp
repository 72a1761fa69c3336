#include "api/LibraryState.h"

TSpectrographSDK* pSpectrographSDK = nullptr;
TSpectrographList* pCorvaneList = nullptr;
std::int32_t giNumberCorvanes = 0;
std::uint8_t gbCorvInitialized = 0;

bool validDeviceNumber(int device) {
  return device >= 0 && device < giNumberCorvanes;
}
