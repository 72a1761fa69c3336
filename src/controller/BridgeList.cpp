#include "controller/BridgeList.h"

#include <algorithm>

namespace corvane {

UsbProduct ProductOf(const FT_DEVICE_LIST_INFO_NODE& node) {
  return {node.ID >> 16, node.ID & 0xFFFFU};
}

void SetControllerProducts() {
  for (const UsbProduct& product : {kLxMxBridgeA, kLxMxBridgeB, kMakersBridge}) {
    FT_SetVIDPID(product.vid, product.pid);
  }
}

ListReading ReadBridgeList(std::vector<FT_DEVICE_LIST_INFO_NODE>& nodes) {
  nodes.clear();
  DWORD count = 0;
  if (FT_CreateDeviceInfoList(&count) != FT_OK) {
    return ListReading::kNoList;
  }
  nodes.resize(count);
  if (FT_GetDeviceInfoList(nodes.data(), &count) != FT_OK) {
    nodes.clear();
    return ListReading::kNoNodes;
  }
  nodes.resize(std::min<std::size_t>(count, nodes.size()));
  return ListReading::kRead;
}

}  // namespace corvane
