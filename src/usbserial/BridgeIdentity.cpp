#include "usbserial/BridgeIdentity.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace corvane {
namespace {

struct ChipRelease {
  int major;  ///< upper byte of the release number
  DWORD type;
};

constexpr std::array<ChipRelease, 7> kReleases{{{0x04, FT_DEVICE_BM},
                                                {0x05, FT_DEVICE_2232C},
                                                {0x06, FT_DEVICE_232R},
                                                {0x07, FT_DEVICE_2232H},
                                                {0x08, FT_DEVICE_4232H},
                                                {0x09, FT_DEVICE_232H},
                                                {0x10, FT_DEVICE_X_SERIES}}};
constexpr int kFirstRelease = 0x02;

}  // namespace

DWORD ChipTypeOf(std::uint16_t release, std::uint8_t serialIndex) {
  const int major = release >> 8;
  if (major == kFirstRelease) {
    return serialIndex == 0 ? FT_DEVICE_BM : FT_DEVICE_AM;
  }
  const auto* const row =
      std::find_if(kReleases.begin(), kReleases.end(), [&](const ChipRelease& r) { return r.major == major; });
  return row == kReleases.end() ? FT_DEVICE_UNKNOWN : row->type;
}

bool HasFastBaudClock(const BridgeIdentity& identity) {
  return identity.highSpeed || identity.type == FT_DEVICE_2232H || identity.type == FT_DEVICE_4232H ||
         identity.type == FT_DEVICE_232H;
}

bool IsLaterChip(DWORD type) {
  return type != FT_DEVICE_AM && type != FT_DEVICE_UNKNOWN;
}

DWORD LocationOf(std::uint8_t bus, std::uint8_t address, int channel) {
  const DWORD device = static_cast<DWORD>(bus) << 8 | address;
  return channel == 0 ? device : device << 4 | static_cast<DWORD>(channel);
}

std::string ChannelText(std::string_view text, int channel, std::string_view separator, std::size_t size) {
  const std::string suffix =
      channel == 0 ? std::string() : std::string(separator) + static_cast<char>('A' + (channel - 1) % 26);
  const std::size_t room = size - 1 - suffix.size();
  return std::string(text.substr(0, std::min(text.find('\0'), room))) + suffix;
}

void CopyText(const std::string& text, void* buffer, std::size_t size) {
  const std::size_t length = std::min(text.size(), size - 1);
  auto* const out = static_cast<char*>(buffer);
  std::memcpy(out, text.data(), length);
  out[length] = '\0';
}

FT_DEVICE_LIST_INFO_NODE NodeOf(const BridgeIdentity& identity, DWORD flags) {
  FT_DEVICE_LIST_INFO_NODE node{};
  node.Flags = flags | (identity.highSpeed ? FT_FLAGS_HISPEED : 0U);
  node.Type = identity.type;
  node.ID = identity.id;
  node.LocId = identity.location;
  CopyText(identity.serial, node.SerialNumber, sizeof node.SerialNumber);
  CopyText(identity.description, node.Description, sizeof node.Description);
  return node;
}

}  // namespace corvane
