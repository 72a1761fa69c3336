#include "controller/InstrumentMemory.h"

namespace corvane::sim {

InstrumentMemory::InstrumentMemory(const InstrumentDescription& description) {
  if (description.KeepsTexts()) {
    parameters = ParameterMemory(description.record, description.structure);
    for (const ParameterPatch& patch : description.parameterPatches) {
      if (ParameterMemory::IsValid(patch.number)) {
        parameters.SetText(patch.number, patch.text);
      }
    }
    return;
  }
  bytes = EepromImage(description.record, description.structure, description.memoryFill);
  for (const MemoryPatch& patch : description.memoryPatches) {
    int address = patch.address;
    for (const unsigned char byte : patch.bytes) {
      if (EepromImage::IsValid(address)) {
        bytes.SetByte(address, byte);
      }
      ++address;
    }
  }
}

Record InstrumentMemory::Decode(const InstrumentDescription& description) const {
  if (!description.KeepsTexts()) {
    return bytes.Decode(description.record);
  }
  Record record = parameters.Decode(description.record);
  record.activeTurret = 0;
  return record;
}

}  // namespace corvane::sim
