#include "eeprom/TTivanMerakCorvaneEeprom.h"

#include <bit>
#include <cstdint>
#include <iterator>
#include <string>
#include <variant>

using corvane::IdentityOf;
using corvane::RecordValue;
using corvane::StructureVersion;

namespace {

constexpr int kBytesOfNumber = 4;
/// Has every value that any structure has.
constexpr StructureVersion kLargestStructure{3, 0};

constexpr unsigned ShiftOf(int byte) {
  return 8U * static_cast<unsigned>(byte);
}

/// The bytes of one value as the instrument keeps them.
std::string Encode(RecordValue value, int width) {
  const auto size = static_cast<std::size_t>(width);
  if (const auto* text = std::get_if<std::string*>(&value)) {
    std::string bytes = (*text)->substr(0, size);
    bytes.resize(size, '\0');
    return bytes;
  }
  const auto* const real = std::get_if<float*>(&value);
  const std::uint32_t image =
      real != nullptr ? std::bit_cast<std::uint32_t>(**real) : static_cast<std::uint32_t>(*std::get<int*>(value));
  std::string bytes;
  for (int i = 0; i < width; ++i) {
    bytes += static_cast<char>((image >> ShiftOf(i)) & 0xFFU);
  }
  return bytes;
}

/// Takes over what was read of a value: all of its bytes, or those before a failing one.
void Decode(RecordValue value, int width, const std::string& bytes, unsigned char last) {
  const auto read = static_cast<int>(bytes.size());
  if (auto* const text = std::get_if<std::string*>(&value)) {
    **text = bytes;
    return;
  }
  auto* const whole = std::get_if<int*>(&value);
  std::uint32_t image = whole != nullptr && width == kBytesOfNumber ? static_cast<std::uint32_t>(**whole) : 0U;
  for (int i = 0; i < width && i <= read; ++i) {
    const std::uint32_t byte = i < read ? static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]) : last;
    image = (image & ~(0xFFU << ShiftOf(i))) | (byte << ShiftOf(i));
  }
  const bool complete = read == width;
  if (whole != nullptr && (complete || width == kBytesOfNumber)) {
    **whole = static_cast<int>(image);
  } else if (whole == nullptr && complete) {
    **std::get_if<float*>(&value) = std::bit_cast<float>(image);
  }
}

}  // namespace

TTivanMerakCorvaneEeprom::TTivanMerakCorvaneEeprom(corvane::IMerakEepromAccess& controller)
    : TTivanMerakEeprom(controller), mVersion(StructureVersion::Parse(GetStructureVersion())) {
  SetUnread(&Values().structureVersion);
  SetFieldsUnread(kLargestStructure);
}

void TTivanMerakCorvaneEeprom::SetFieldsUnread(StructureVersion version) {
  corvane::WalkEepromFields(version, Values(), [this](RecordValue value, int /*address*/, int /*width*/) {
    SetUnread(IdentityOf(value));
    return true;
  });
}

bool TTivanMerakCorvaneEeprom::IsVersionKnown() const {
  return !IsUnread(&Values().structureVersion);
}

bool TTivanMerakCorvaneEeprom::ReadVersion() {
  const bool heard = corvane::WalkEepromField(
      corvane::kFieldStructureVersion, mVersion, Values(),
      [this](RecordValue value, int address, int width) { return ReadValue(value, address, width); });
  mVersion = StructureVersion::Parse(GetStructureVersion());
  return heard;
}

MerakResult TTivanMerakCorvaneEeprom::Read() {
  BeginTransfer();
  SetAllKnown();
  mUnsaved.clear();
  const bool heard = ReadVersion();
  corvane::SetAbsentFields(mVersion, Values());
  // All of them until they arrive: a silence leaves the values behind it unread as well. Without the version it is not
  // known either which ones there are.
  SetFieldsUnread(IsVersionKnown() ? mVersion : kLargestStructure);
  if (heard) {
    corvane::WalkEepromFields(mVersion, Values(), [this](RecordValue value, int address, int width) {
      return ReadValue(value, address, width);
    });
  }
  SetDirty(false);
  return merak::kSuccess;
}

MerakResult TTivanMerakCorvaneEeprom::Write() {
  const auto write = [this](RecordValue value, int address, int width) {
    return IsUnread(IdentityOf(value)) || Note(WriteValue(value, address, width));
  };
  BeginTransfer();
  if (!IsVersionKnown()) {
    ReadVersion();
  }
  if (!IsVersionKnown()) {
    return merak::kSuccess;
  }
  UpdateModifiedTime();
  mVersion = StructureVersion::Parse(GetStructureVersion());
  if (corvane::WalkEepromField(corvane::kFieldStructureVersion, mVersion, Values(), write)) {
    corvane::WalkEepromFields(mVersion, Values(), write);
  }
  if (FirstFailure() == merak::kSuccess) {
    SetDirty(false);
    mUnsaved.clear();
  }
  return merak::kSuccess;
}

bool TTivanMerakCorvaneEeprom::ReadValue(RecordValue value, int address, int width) {
  std::string bytes;
  MerakResult result = merak::kSuccess;
  // One variable for all bytes of the value, which a failure leaves alone: a failing byte is the one before it, and 0
  // at the start.
  unsigned char byte = 0;
  while (static_cast<int>(bytes.size()) < width) {
    result = Controller().ReadEepromByte(address + static_cast<int>(bytes.size()), byte);
    if (result != merak::kSuccess) {
      break;
    }
    bytes += static_cast<char>(byte);
  }
  Decode(value, width, bytes, byte);
  if (result == merak::kSuccess) {
    SetKnown(IdentityOf(value));
  } else {
    SetUnread(IdentityOf(value));
  }
  return Note(result);
}

MerakResult TTivanMerakCorvaneEeprom::WriteValue(RecordValue value, int address, int width) {
  for (const char byte : Encode(value, width)) {
    const MerakResult result = Controller().WriteEepromByte(address, static_cast<unsigned char>(byte));
    if (result != merak::kSuccess) {
      return result;
    }
    ++address;
  }
  return merak::kSuccess;
}

MerakResult TTivanMerakCorvaneEeprom::WriteField(std::size_t number) {
  MerakResult result = merak::kSuccess;
  corvane::WalkEepromField(number, mVersion, Values(), [&](RecordValue value, int address, int width) {
    result = WriteValue(value, address, width);
    return true;
  });
  return result;
}

MerakResult TTivanMerakCorvaneEeprom::Save(std::initializer_list<std::size_t> numbers) {
  mUnsaved.insert(numbers);
  BeginTransfer();
  bool heard = true;
  for (auto field = mUnsaved.begin(); heard && field != mUnsaved.end();) {
    const MerakResult result = WriteField(*field);
    field = result == merak::kSuccess ? mUnsaved.erase(field) : std::next(field);
    heard = Note(result);
  }
  return FirstFailure();
}

MerakResult TTivanMerakCorvaneEeprom::WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation,
                                                                 float focalTilt) {
  Values().focalLength = focalLength;
  Values().angularDeviation = angularDeviation;
  Values().planeTilt = focalTilt;
  SetKnown(&Values().focalLength);
  SetKnown(&Values().angularDeviation);
  SetKnown(&Values().planeTilt);
  return Save({corvane::kFieldFocalLength, corvane::kFieldAngularDeviation, corvane::kFieldPlaneTilt});
}

MerakResult TTivanMerakCorvaneEeprom::WriteIfDirty() {
  return IsDirty() ? Write() : Save({});
}

float TTivanMerakCorvaneEeprom::GetCurrentWavelength() {
  return Values().currentWavelength;
}

MerakResult TTivanMerakCorvaneEeprom::SetCurrentWavelength(float wavelength) {
  const bool wasUnread = SetKnown(&Values().currentWavelength);
  if (!wasUnread && BinaryFloatCompare(wavelength, Values().currentWavelength) &&
      mUnsaved.count(corvane::kFieldCurrentWavelength) == 0) {
    return merak::kSuccess;
  }
  Values().currentWavelength = wavelength;
  return Save({corvane::kFieldCurrentWavelength});
}

MerakResult TTivanMerakCorvaneEeprom::WriteOffsets() {
  return merak::kSuccess;
}

void TTivanMerakCorvaneEeprom::GetAdjustedDetectorIndex(int* entrance) {
  if (StructureVersion::Parse(GetStructureVersion()).IsUpToMajor2() && *entrance >= 1) {
    *entrance = 0;
  }
}

MerakResult TTivanMerakCorvaneEeprom::StoreActiveTurret() {
  BeginTransfer();
  if (!IsVersionKnown()) {
    ReadVersion();
  }
  return IsVersionKnown() ? WriteField(corvane::kFieldActiveTurret) : merak::kEepromError;
}
