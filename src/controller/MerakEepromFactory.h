// Which EEPROM record an instrument has. TMerakOrbis asks once it knows the model; a new family of records is added
// here and nowhere else.
#pragma once

#include <memory>

class TTivanMerakEeprom;

namespace corvane {

class IMerakEepromAccess;

/// A record for a model of this TMerakOrbis::SystemType; null for a type without one. The access is borrowed and must
/// outlive the record. Nothing is read yet.
std::unique_ptr<TTivanMerakEeprom> CreateMerakEeprom(int systemType, IMerakEepromAccess& access);

}  // namespace corvane
