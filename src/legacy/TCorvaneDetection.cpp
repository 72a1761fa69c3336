#include "legacy/TCorvaneDetection.h"

#include <cstddef>
#include <string>

#include "legacy/LegacyBus.h"
#include "legacy/LegacyResult.h"
#include "platform/TivanStrings.h"

namespace {

constexpr unsigned char kFirstRegister = 1;
constexpr const char* kSignature = "tivan";

// A bus answers 0, or the SDK's own success where an adapter passes that through.
bool Succeeded(unsigned int status) {
  return status == 0 || status == corvane::legacy::kBusSuccess;
}

}  // namespace

bool TCorvaneDetection::Detect(TI2CInterface* bus) {
  if (bus == nullptr) {
    return false;
  }
  std::string text = "XXXXX";
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char byte = 0;
    if (!Succeeded(bus->Read(corvane::LegacyBus::kEepromBase, static_cast<unsigned char>(kFirstRegister + i), &byte))) {
      return false;
    }
    text[i] = static_cast<char>(byte);
  }
  return stricmp(text.c_str(), kSignature) == 0;
}
