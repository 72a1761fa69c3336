// The table of vendor and product numbers that count as a bridge. Used by the enumeration; the custom row belongs to
// FT_SetVIDPID. It knows nothing of USB itself and has no lock of its own.
#pragma once

#include <array>
#include <cstddef>

#include "usbserial/ftd2xx.h"

namespace corvane {

struct UsbId {
  DWORD vid = 0;
  DWORD pid = 0;

  bool operator==(const UsbId&) const = default;
};

class SupportedDevices {
 public:
  static constexpr std::size_t kRows = 16;

  SupportedDevices();

  bool Contains(UsbId id) const;

  /// Non-zero members replace those of the custom row. Values beyond 16 bits are kept; no device matches them.
  void SetCustom(UsbId id);
  UsbId Custom() const { return mRows.back(); }

 private:
  std::array<UsbId, kRows> mRows;
};

}  // namespace corvane
