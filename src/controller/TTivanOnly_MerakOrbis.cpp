#include "controller/TTivanOnly_MerakOrbis.h"

#include <vector>

#include "controller/BridgeList.h"
#include "controller/TMerakOrbisCom.h"

namespace {

corvane::UsbProduct Product(int vid, int pid) {
  return {static_cast<unsigned int>(vid), static_cast<unsigned int>(pid)};
}

bool IsLxMxBridge(const corvane::UsbProduct& product) {
  return product == corvane::kLxMxBridgeA || product == corvane::kLxMxBridgeB;
}

bool IsCandidate(const FT_DEVICE_LIST_INFO_NODE& node, bool haveI2C) {
  const corvane::UsbProduct product = corvane::ProductOf(node);
  // An SX that is reachable over the camera's bus is not looked for a second time on USB.
  return IsLxMxBridge(product) || (product == corvane::kMakersBridge && !haveI2C);
}

}  // namespace

TTivanOnly_MerakOrbis::TTivanOnly_MerakOrbis(TI2CInterface* i2c) : TMerakOrbis(i2c) {
  corvane::SetControllerProducts();
}

MerakResult TTivanOnly_MerakOrbis::GetDeviceCount(int& count) {
  count = 0;
  if (!mReady) {
    return merak::kUnknownError;
  }
  TMerakOrbis probe(I2CInterface());
  const bool haveI2C = probe.ProbeI2C();
  if (haveI2C) {
    ++count;
  }
  std::vector<FT_DEVICE_LIST_INFO_NODE> nodes;
  if (corvane::ReadBridgeList(nodes) == corvane::ListReading::kNoList) {
    return merak::kUnknownError;
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (!IsCandidate(nodes[i], haveI2C) || probe.OpenShortTimeouts(static_cast<int>(i)) != merak::kSuccess) {
      continue;
    }
    if (IsTivanCamera(probe)) {
      ++count;
    }
    probe.Close();
  }
  if (IsOpen()) {
    ++count;
  }
  return merak::kSuccess;
}

MerakResult TTivanOnly_MerakOrbis::Open(int index) {
  if (!mReady) {
    return merak::kUnknownError;
  }
  // Before the list is made: a bridge of our own must not be taken for one that another object holds.
  DropConnection();
  const bool haveI2C = ProbeI2C();
  if (haveI2C) {
    if (index == 0) {
      return TMerakOrbis::Open(0);
    }
    --index;
  }
  std::vector<FT_DEVICE_LIST_INFO_NODE> nodes;
  if (corvane::ReadBridgeList(nodes) == corvane::ListReading::kNoList) {
    return merak::kUnknownError;
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (!IsCandidate(nodes[i], haveI2C)) {
      continue;
    }
    if (nodes[i].ftHandle != nullptr) {
      // Held by an earlier item of this process and not to be opened again: it has taken its place in the count.
      if (index > 0) {
        --index;
      }
      continue;
    }
    if (OpenShortTimeouts(static_cast<int>(i)) == merak::kSuccess && IsTivanCamera(*this)) {
      if (index == 0) {
        RestoreLongTimeouts();
        return merak::kSuccess;
      }
      --index;
    }
    // Also what a failed open left behind, so that this object never ends up on a foreign bridge.
    Close();
  }
  return merak::kDeviceNotFound;
}

bool TTivanOnly_MerakOrbis::IsTivanCamera(TMerakOrbis& device) {
  SystemInfo info;
  device.GetSystemInfoEx(info);
  return ToUpper(info.manufacturer) == TIVAN_STRING;
}

bool TTivanOnly_MerakOrbis::IsLXorMX(int vid, int pid) {
  return IsLxMxBridge(Product(vid, pid));
}

bool TTivanOnly_MerakOrbis::IsSX(int vid, int pid) {
  return Product(vid, pid) == corvane::kMakersBridge;
}

std::string TTivanOnly_MerakOrbis::ToUpper(const std::string& text) {
  return TMerakOrbisCom::ToUpper(text);
}
