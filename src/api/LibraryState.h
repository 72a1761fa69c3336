// The library's state: four plain globals without a lock. Callers serialise their calls.
#pragma once

#include <cstdint>

class TSpectrographList;
class TSpectrographSDK;

/// Null until CorvaneInitialize; owned by TSpectrographSDK itself.
extern TSpectrographSDK* pSpectrographSDK;
/// Borrowed from the singleton.
extern TSpectrographList* pCorvaneList;
/// Devices in the list, copied once at initialisation.
extern std::int32_t giNumberCorvanes;
/// 1 between CorvaneInitialize and CorvaneClose.
extern std::uint8_t gbCorvInitialized;

/// True for an index from 0 to giNumberCorvanes - 1.
bool validDeviceNumber(int device);
