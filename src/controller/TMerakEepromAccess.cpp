#include "controller/TMerakEepromAccess.h"

#include "controller/TMerakOrbis.h"

unsigned int TMerakEepromAccess::ReadEepromByte(int address, unsigned char& value) {
  return mController.ReadEepromByte(address, value);
}

unsigned int TMerakEepromAccess::WriteEepromByte(int address, unsigned char value) {
  return mController.WriteEepromByte(address, value);
}

unsigned int TMerakEepromAccess::GetConfigSystemData(int index, std::string& value) {
  return mController.GetConfigSystemData(index, value);
}

unsigned int TMerakEepromAccess::SetConfigSystemData(int index, const std::string& value) {
  return mController.SetConfigSystemData(index, value);
}

unsigned int TMerakEepromAccess::Position(float& wavelength) {
  return mController.Position(wavelength);
}

unsigned int TMerakEepromAccess::ResetPosition() {
  return mController.ResetPosition();
}

unsigned int TMerakEepromAccess::GetTurret(int& turret) {
  return mController.GetTurret(turret);
}

unsigned int TMerakEepromAccess::SetTurret(int turret) {
  return mController.SetTurret(turret);
}

unsigned int TMerakEepromAccess::GetRawGratings(std::string& text) {
  return mController.GetRawGratings(text);
}

unsigned int TMerakEepromAccess::GetGratings(std::vector<float>& lines, std::vector<std::string>& blazes) {
  return mController.GetGratings(lines, blazes);
}

bool TMerakEepromAccess::IsSilent() const {
  return mController.IsSilent();
}
