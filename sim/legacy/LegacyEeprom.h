// The EEPROM of an older instrument: six pages of 256 bytes, written only in write mode and not answering while a byte
// is being stored; and the image of a record in them by structure version. Used by LegacyInstrument.
#pragma once

#include <array>
#include <cstdint>

#include "model/LegacyDescription.h"
#include "model/SimulationClock.h"

namespace corvane::sim {

class LegacyEeprom {
 public:
  LegacyEeprom(const LegacyDescription& description, SimulationClock clock);

  /// What the bus gets; false: no answer, since a byte is being stored. page and offset are valid.
  bool Read(int page, int offset, std::uint8_t& value) const;
  /// Outside write mode the byte is taken and lost.
  bool Write(int page, int offset, std::uint8_t value);

  void SetWriteMode(bool on) { mWriteMode = on; }
  bool IsWriteMode() const { return mWriteMode; }

  /// The byte itself, for a look from outside.
  std::uint8_t Byte(int page, int offset) const {
    return mPages[static_cast<std::size_t>(page)][static_cast<std::size_t>(offset)];
  }
  unsigned long long Writes() const { return mWrites; }
  unsigned long long LostWrites() const { return mLostWrites; }

 private:
  void Store(const LegacyDescription& description);
  bool IsBusy() const;

  std::array<std::array<std::uint8_t, kLegacyPageSize>, kLegacyPages> mPages{};
  SimulationClock mClock;
  std::chrono::microseconds mWriteTime;
  std::chrono::microseconds mBusyUntil{0};
  bool mWriteMode = false;
  unsigned long long mWrites = 0;
  unsigned long long mLostWrites = 0;
};

}  // namespace corvane::sim
