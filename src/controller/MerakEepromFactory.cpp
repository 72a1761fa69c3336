#include "controller/MerakEepromFactory.h"

#include "controller/TMerakOrbis.h"
#include "eeprom/TTivanMerakCorvaneEeprom.h"

namespace corvane {

std::unique_ptr<TTivanMerakEeprom> CreateMerakEeprom(int systemType, IMerakEepromAccess& access) {
  switch (systemType) {
    case TMerakOrbis::kTypeLxMx:
    case TMerakOrbis::kTypeOther:
      return std::make_unique<TTivanMerakCorvaneEeprom>(access);
    default:
      // Type 2 keeps its record as numbered texts, which has no class of its own yet.
      return nullptr;
  }
}

}  // namespace corvane
