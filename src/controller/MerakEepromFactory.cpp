#include "controller/MerakEepromFactory.h"

#include "controller/TMerakOrbis.h"
#include "eeprom/TTivanMerakCorvaneEeprom.h"
#include "eeprom/TTivanMerakHaldenEeprom.h"

namespace corvane {

std::unique_ptr<TTivanMerakEeprom> CreateMerakEeprom(int systemType, IMerakEepromAccess& access) {
  switch (systemType) {
    case TMerakOrbis::kTypeLxMx:
    case TMerakOrbis::kTypeOther:
      return std::make_unique<TTivanMerakCorvaneEeprom>(access);
    case TMerakOrbis::kTypeSx:
      return std::make_unique<TTivanMerakHaldenEeprom>(access);
    default:
      return nullptr;
  }
}

}  // namespace corvane
