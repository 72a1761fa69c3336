#include "eeprom/MerakEepromRecord.h"

#include <cstddef>

namespace corvane {

MerakEepromRecord::MerakEepromRecord() {
  for (auto& turret : gratingLines) {
    turret.fill(100.0F);
  }
  for (auto& turret : gratingBlaze) {
    turret.fill("300");
  }
  for (std::size_t i = 0; i < filterLabels.size(); ++i) {
    filterLabels[i] = "Filter " + std::to_string(i + 1);
  }
}

}  // namespace corvane
