// Gives an EEPROM record the few operations it needs of its controller. TMerakOrbis makes one for the record it owns.
#pragma once

#include "eeprom/IMerakEepromAccess.h"

class TMerakOrbis;

class TMerakEepromAccess final : public IMerakEepromAccess {
 public:
  /// The controller is borrowed; it owns this object.
  explicit TMerakEepromAccess(TMerakOrbis& controller) : mController(controller) {}

  unsigned int ReadEepromByte(int address, unsigned char& value) override;
  unsigned int WriteEepromByte(int address, unsigned char value) override;
  unsigned int GetConfigSystemData(int index, std::string& value) override;
  unsigned int SetConfigSystemData(int index, const std::string& value) override;
  unsigned int Position(float& wavelength) override;
  unsigned int ResetPosition() override;
  unsigned int GetTurret(int& turret) override;
  unsigned int SetTurret(int turret) override;
  unsigned int GetRawGratings(std::string& text) override;
  unsigned int GetGratings(std::vector<float>& lines, std::vector<std::string>& blazes) override;
  bool IsSilent() const override;

 private:
  TMerakOrbis& mController;
};
