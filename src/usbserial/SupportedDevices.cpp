#include "usbserial/SupportedDevices.h"

#include <algorithm>

namespace corvane {

SupportedDevices::SupportedDevices()
    : mRows{{{0x0403, 0x6015},
             {0x0403, 0x6014},
             {0x0403, 0x6011},
             {0x0403, 0x6010},
             {0x0403, 0x6001},
             {0x0403, 0x6006},
             {0x0403, 0xFAC1},
             {0x0403, 0xFAC2},
             {0x0403, 0xFAC3},
             {0x0403, 0xFAC4},
             {0x0403, 0xFAC5},
             {0x0403, 0xFAC6},
             {0x0403, 0x6012},
             {0x08AC, 0x1025},
             {0x15D6, 0x0001},
             {0x0403, 0x6017}}} {
}

bool SupportedDevices::Contains(UsbId id) const {
  return std::find(mRows.begin(), mRows.end(), id) != mRows.end();
}

void SupportedDevices::SetCustom(UsbId id) {
  if (id.vid != 0) {
    mRows.back().vid = id.vid;
  }
  if (id.pid != 0) {
    mRows.back().pid = id.pid;
  }
}

}  // namespace corvane
