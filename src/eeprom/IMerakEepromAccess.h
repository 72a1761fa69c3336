// What an instrument's EEPROM record needs of its controller, and no more. TMerakOrbis owns the record and implements
// this, so that the record does not know the controller. Results are controller codes.
#pragma once

#include <string>
#include <vector>

#include "core/MerakResult.h"

namespace corvane {

class IMerakEepromAccess {
 public:
  virtual ~IMerakEepromAccess() = default;

  /// One byte of the byte-addressed record ("SAVEINFO"); addresses start at 1. On failure value is left alone.
  virtual MerakResult ReadEepromByte(int address, unsigned char& value) = 0;
  virtual MerakResult WriteEepromByte(int address, unsigned char value) = 0;

  /// One numbered text parameter ("CONFIG_SYSTEM_DATA").
  virtual MerakResult GetConfigSystemData(int index, std::string& value) = 0;
  virtual MerakResult SetConfigSystemData(int index, const std::string& value) = 0;

  /// Centre wavelength in nm ("POSITION"), and a move to the wavelength just read ("POSITION", then "MOVETO").
  virtual MerakResult Position(float& wavelength) = 0;
  virtual MerakResult ResetPosition() = 0;

  /// Active turret, 1-based ("TURRET").
  virtual MerakResult GetTurret(int& turret) = 0;
  virtual MerakResult SetTurret(int turret) = 0;

  /// Grating list as the controller prints it ("GRATINGS", cached where the cache is on).
  virtual MerakResult GetRawGratings(std::string& text) = 0;
  /// The same list as lines per mm and blaze text of each grating the record has room for.
  virtual MerakResult GetGratings(std::vector<float>& lines, std::vector<std::string>& blazes) = 0;

  /// True while the latest exchange is one that ended in silence rather than in a reply; the next reply makes it false.
  /// A record transfer stops at the first: each further field would only cost another time-out.
  virtual bool IsSilent() const = 0;
};

}  // namespace corvane
