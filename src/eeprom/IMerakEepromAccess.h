// What an instrument's EEPROM record needs of its controller, and no more. TMerakOrbis owns the record and implements
// this in a small adapter, so that the record does not know the controller. Results are controller codes, 0 success.
#pragma once

#include <string>
#include <vector>

class IMerakEepromAccess {
 public:
  virtual ~IMerakEepromAccess() = default;

  /// One byte of the byte-addressed record ("SAVEINFO"); addresses start at 1. On failure value is left alone.
  virtual unsigned int ReadEepromByte(int address, unsigned char& value) = 0;
  virtual unsigned int WriteEepromByte(int address, unsigned char value) = 0;

  /// One numbered text parameter ("CONFIG_SYSTEM_DATA").
  virtual unsigned int GetConfigSystemData(int index, std::string& value) = 0;
  virtual unsigned int SetConfigSystemData(int index, const std::string& value) = 0;

  /// Centre wavelength in nm ("POSITION"), and a move to the wavelength just read ("POSITION", then "MOVETO").
  virtual unsigned int Position(float& wavelength) = 0;
  virtual unsigned int ResetPosition() = 0;

  /// Active turret, 1-based ("TURRET").
  virtual unsigned int GetTurret(int& turret) = 0;
  virtual unsigned int SetTurret(int turret) = 0;

  /// Grating list as the controller prints it ("GRATINGS", cached where the cache is on).
  virtual unsigned int GetRawGratings(std::string& text) = 0;
  /// The same list as lines per mm and blaze text of each grating the record has room for.
  virtual unsigned int GetGratings(std::vector<float>& lines, std::vector<std::string>& blazes) = 0;

  /// True while the latest exchange is one that ended in silence rather than in a reply; the next reply makes it false.
  /// A record transfer stops at the first: each further field would only cost another time-out.
  virtual bool IsSilent() const = 0;
};
