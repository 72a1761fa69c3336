// The USB serial bridges of this computer as the controller layer sees them: which products carry a controller, and
// the bridge's own device list. Used by the USB transport and by TTivanOnly_MerakOrbis.
#pragma once

#include <vector>

#include "usbserial/ftd2xx.h"

namespace corvane {

struct UsbProduct {
  unsigned int vid;
  unsigned int pid;
  bool operator==(const UsbProduct&) const = default;
};

/// Bridges of the LX and MX controllers, and the maker's own product of the SX.
inline constexpr UsbProduct kLxMxBridgeA{0x0403, 0xD493};
inline constexpr UsbProduct kLxMxBridgeB{0x0403, 0xD491};
inline constexpr UsbProduct kMakersBridge{0x136E, 0x0017};

UsbProduct ProductOf(const FT_DEVICE_LIST_INFO_NODE& node);

/// Names the three products above to the bridge. Its table has room for one pair beside its own, so only the last,
/// kMakersBridge, stays in force; the two calls before it are made all the same.
void SetControllerProducts();

/// How a reading of the list ended. kNoList: the bridge could not make its list. kNoNodes: it made one but did not hand
/// it out; nodes is empty then.
enum class ListReading { kRead, kNoList, kNoNodes };
/// Reads the list. This opens and closes every bridge that is free.
ListReading ReadBridgeList(std::vector<FT_DEVICE_LIST_INFO_NODE>& nodes);

}  // namespace corvane
