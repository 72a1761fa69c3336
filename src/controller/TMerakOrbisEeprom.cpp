// The byte-addressed EEPROM as TMerakOrbis offers it: values of one and of several bytes over "SAVEINFO".
#include <bit>
#include <cstdint>
#include <limits>

#include "controller/ReplyText.h"
#include "controller/TMerakOrbis.h"

namespace {

constexpr int kValueBytes = 4;

/// A byte as the `number`-th of an image, counted from the least significant one.
std::uint32_t ByteOfImage(unsigned char byte, int number) {
  return static_cast<std::uint32_t>(byte) << (8 * number);
}

}  // namespace

MerakResult TMerakOrbis::ReadEepromByte(int address, unsigned char& value) {
  constexpr int kNone = -1;
  int number = kNone;
  if (const MerakResult result = GetSaveInfo(address, number); result != merak::kSuccess) {
    return result;
  }
  // What nobody gave must not be held for the instrument's, or it goes over its own data when the record is written.
  if (number < 0 || number > std::numeric_limits<unsigned char>::max()) {
    return merak::kIoError;
  }
  value = static_cast<unsigned char>(number);
  return merak::kSuccess;
}

MerakResult TMerakOrbis::WriteEepromByte(int address, unsigned char value) {
  return SaveInfo(address, value);
}

MerakResult TMerakOrbis::ReadEepromInt32(int address, int& value) {
  unsigned char byte = 0;
  for (int i = 0; i < kValueBytes; ++i) {
    const MerakResult result = ReadEepromByte(address + i, byte);
    const std::uint32_t others = static_cast<std::uint32_t>(value) & ~ByteOfImage(0xFF, i);
    value = static_cast<int>(others | ByteOfImage(byte, i));
    if (result != merak::kSuccess) {
      return result;
    }
  }
  return merak::kSuccess;
}

MerakResult TMerakOrbis::ReadEepromFloat(int address, float& value) {
  int image = 0;
  const MerakResult result = ReadEepromInt32(address, image);
  if (result == merak::kSuccess) {
    value = std::bit_cast<float>(image);
  }
  return result;
}

MerakResult TMerakOrbis::WriteEepromInt32(int address, int value) {
  const auto image = static_cast<std::uint32_t>(value);
  for (int i = 0; i < kValueBytes; ++i) {
    const auto byte = static_cast<unsigned char>(image >> (8 * i));
    if (const MerakResult result = WriteEepromByte(address + i, byte); result != merak::kSuccess) {
      return result;
    }
  }
  return merak::kSuccess;
}

MerakResult TMerakOrbis::WriteEepromFloat(int address, float value) {
  return WriteEepromInt32(address, std::bit_cast<int>(value));
}

void TMerakOrbis::GetEepromStructureVersion(const std::string& text, int* major, int* minor) {
  std::size_t begin = 0;
  for (int* output : {major, minor}) {
    const std::size_t dot = text.find('.', begin);
    const std::string part = text.substr(begin, dot - begin);
    if (!part.empty() && output != nullptr) {
      *output = corvane::IntOf(part);
    }
    if (dot == std::string::npos) {
      return;
    }
    begin = dot + 1;
  }
}
