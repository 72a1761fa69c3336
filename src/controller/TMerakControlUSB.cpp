#include "controller/TMerakControlUSB.h"

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "controller/BridgeList.h"

namespace {

constexpr const char* kLatencyVariable = "CORVANE_USB_LATENCY_MS";

// 1 to 255, and nothing else in the text.
std::optional<UCHAR> LatencyOf(std::string_view text) {
  UCHAR latency = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), latency);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && latency != 0 ? std::optional(latency) : std::nullopt;
}

}  // namespace

TMerakControlUSB::TMerakControlUSB() {
  corvane::SetControllerProducts();
}

TMerakControlUSB::~TMerakControlUSB() {
  TMerakControlUSB::Close();
}

TMerakControl::Status TMerakControlUSB::ListDevices(void* arg1, void* arg2, unsigned int flags) {
  return FT_ListDevices(arg1, arg2, flags);
}

TMerakControl::Status TMerakControlUSB::Open(int index) {
  Close();
  const Status status = FT_Open(index, &mHandle);
  if (mHandle != nullptr) {
    SetLatency();
  }
  return mHandle == nullptr ? static_cast<Status>(FT_INVALID_HANDLE) : status;
}

TMerakControl::Status TMerakControlUSB::Close() {
  if (mHandle != nullptr) {
    FT_Close(mHandle);
    mHandle = nullptr;
  }
  return FT_OK;
}

TMerakControl::Status TMerakControlUSB::Read(void* buffer, unsigned int count, unsigned int* received) {
  const Status status = FT_Read(mHandle, buffer, count, received);
  return received == nullptr ? static_cast<Status>(FT_IO_ERROR) : status;
}

TMerakControl::Status TMerakControlUSB::Write(const void* buffer, unsigned int count, unsigned int* written) {
  // The bridge's interface takes a plain pointer; it only reads from it.
  return FT_Write(mHandle, const_cast<void*>(buffer), count, written);
}

TMerakControl::Status TMerakControlUSB::SetTimeouts(unsigned int readTimeoutMs, unsigned int writeTimeoutMs) {
  return FT_SetTimeouts(mHandle, readTimeoutMs, writeTimeoutMs);
}

TMerakControl::Status TMerakControlUSB::Purge(unsigned int mask) {
  return FT_Purge(mHandle, mask);
}

void TMerakControlUSB::SetLatency() {
  mRemark.clear();
  const char* const text = std::getenv(kLatencyVariable);
  if (text == nullptr) {
    return;
  }
  const auto latency = LatencyOf(text);
  if (!latency) {
    mRemark = std::string("LAT- Ignored : ") + text;
  } else if (const Status status = FT_SetLatencyTimer(mHandle, *latency); status != FT_OK) {
    mRemark = "LAT- Err : " + std::to_string(status);
  }
}

int TMerakControlUSB::GetDeviceIndex() {
  std::vector<FT_DEVICE_LIST_INFO_NODE> nodes;
  if (corvane::ReadBridgeList(nodes) == corvane::ListReading::kNoList) {
    return -2;
  }
  int found = -1;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (IsValidProduct(nodes[i])) {
      found = static_cast<int>(i);
    }
  }
  return found;
}

bool TMerakControlUSB::IsValidProduct(const FT_DEVICE_LIST_INFO_NODE& node) {
  return corvane::ProductOf(node) == corvane::kMakersBridge;
}
