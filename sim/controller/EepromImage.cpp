#include "controller/EepromImage.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <string_view>

namespace corvane::sim {
namespace {

struct FieldSize {
  Field field;
  int upTo2;
  int from3;
};

constexpr FieldSize kFieldSizes[] = {
    {Field::kId, 20, 20},
    {Field::kStructureVersion, 10, 10},
    {Field::kSerial, kSerialLength, kSerialLength},
    {Field::kManufactured, 11, 11},
    {Field::kModified, 11, 11},
    {Field::kFocalLength, 4, 4},
    {Field::kAngularDeviation, 4, 4},
    {Field::kTilt, 4, 4},
    {Field::kReserved1, 181, 181},
    {Field::kCoefficients, 20, 20},
    {Field::kSinePhase, 4, 4},
    {Field::kSineFrequency, 4, 4},
    {Field::kSineAmplitude, 4, 4},
    {Field::kWaveToStepsEnabled, 1, 1},
    {Field::kCurrentWavelength, 4, 4},
    {Field::kTurret1Offsets, 12, 12},
    {Field::kTurret1Starts, 12, 12},
    {Field::kDetectorOffsets, 8, 16},
    {Field::kTurret1Lines, 12, 12},
    {Field::kTurret1Blazes, 12, 18},
    {Field::kTurret1Gratings, 1, 1},
    {Field::kTurrets, 1, 1},
    {Field::kReserved2, 33, 19},
    {Field::kFilterLabels, 60, 60},
    {Field::kTurret2Offsets, 12, 12},
    {Field::kTurret2Starts, 12, 12},
    {Field::kTurret2Lines, 12, 12},
    {Field::kTurret2Blazes, 12, 18},
    {Field::kTurret2Gratings, 1, 1},
    {Field::kTurret3Offsets, 12, 12},
    {Field::kTurret3Starts, 12, 12},
    {Field::kTurret3Lines, 12, 12},
    {Field::kTurret3Blazes, 12, 18},
    {Field::kTurret3Gratings, 1, 1},
    {Field::kActiveTurret, 1, 1},
};
static_assert(std::size(kFieldSizes) == static_cast<std::size_t>(Field::kCount));

struct TurretFields {
  Field offsets;
  Field starts;
  Field lines;
  Field blazes;
  Field gratings;
};

constexpr TurretFields kTurretFields[kMaxTurrets] = {
    {Field::kTurret1Offsets, Field::kTurret1Starts, Field::kTurret1Lines, Field::kTurret1Blazes,
     Field::kTurret1Gratings},
    {Field::kTurret2Offsets, Field::kTurret2Starts, Field::kTurret2Lines, Field::kTurret2Blazes,
     Field::kTurret2Gratings},
    {Field::kTurret3Offsets, Field::kTurret3Starts, Field::kTurret3Lines, Field::kTurret3Blazes,
     Field::kTurret3Gratings},
};

/// Older records have neither lines nor blaze texts.
bool HasLines(StructureVersion version) {
  return version.AtLeast(1, 1);
}
/// Writes values one behind the other, from a field's address on.
class FieldWriter {
 public:
  FieldWriter(EepromImage& image, Field field, StructureVersion version)
      : mImage(image), mAddress(EepromImage::AddressOf(field, version)) {}

  void Put(std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8) {
      mImage.SetByte(mAddress++, static_cast<std::uint8_t>(word >> shift));
    }
  }
  void Put(float value) { Put(std::bit_cast<std::uint32_t>(value)); }
  void Put(int value) { Put(static_cast<std::uint32_t>(value)); }
  void Put(std::string_view text, int width) {
    for (int i = 0; i < width; ++i) {
      const auto index = static_cast<std::size_t>(i);
      mImage.SetByte(mAddress++, index < text.size() ? static_cast<std::uint8_t>(text[index]) : std::uint8_t{0});
    }
  }

 private:
  EepromImage& mImage;
  int mAddress;
};

/// Reads them.
class FieldReader {
 public:
  FieldReader(const EepromImage& image, Field field, StructureVersion version)
      : mImage(image), mAddress(EepromImage::AddressOf(field, version)) {}

  std::uint8_t Byte() { return mImage.Byte(mAddress++); }
  std::uint32_t Word() {
    std::uint32_t word = 0;
    for (int shift = 0; shift < 32; shift += 8) {
      word |= std::uint32_t{Byte()} << shift;
    }
    return word;
  }
  float Float() { return std::bit_cast<float>(Word()); }
  int Int() { return static_cast<int>(Word()); }
  std::string Text(int width) {
    std::string text;
    for (int i = 0; i < width; ++i) {
      text.push_back(static_cast<char>(Byte()));
    }
    return text.substr(0, text.find('\0'));
  }

 private:
  const EepromImage& mImage;
  int mAddress;
};

void PutTurret(EepromImage& image, const Turret& turret, const TurretFields& fields, StructureVersion version) {
  FieldWriter offsets(image, fields.offsets, version);
  FieldWriter starts(image, fields.starts, version);
  FieldWriter lines(image, fields.lines, version);
  FieldWriter blazes(image, fields.blazes, version);
  for (std::size_t g = 0; g < EepromImage::kGratings; ++g) {
    const bool mounted = g < turret.gratings.size();
    const Grating grating = mounted ? turret.gratings[g] : Grating{0.0F, "", 0, 0};
    offsets.Put(grating.offset);
    starts.Put(grating.start);
    if (HasLines(version)) {
      lines.Put(grating.lines);
      blazes.Put(grating.blaze, EepromImage::BlazeWidth(version));
    }
  }
  if (EepromImage::HasGratingCounts(version)) {
    image.SetByte(EepromImage::AddressOf(fields.gratings, version), static_cast<std::uint8_t>(turret.gratings.size()));
  }
}

Turret ReadTurret(const EepromImage& image, Turret base, const TurretFields& fields, StructureVersion version) {
  if (EepromImage::HasGratingCounts(version)) {
    const int count = image.Byte(EepromImage::AddressOf(fields.gratings, version));
    base.gratings.resize(static_cast<std::size_t>(std::min(count, EepromImage::kGratings)));
  }
  FieldReader offsets(image, fields.offsets, version);
  FieldReader starts(image, fields.starts, version);
  FieldReader lines(image, fields.lines, version);
  FieldReader blazes(image, fields.blazes, version);
  for (Grating& grating : base.gratings) {
    grating.offset = offsets.Int();
    grating.start = starts.Int();
    if (HasLines(version)) {
      grating.lines = lines.Float();
      grating.blaze = blazes.Text(EepromImage::BlazeWidth(version));
    }
  }
  return base;
}

}  // namespace

int EepromImage::SizeOf(Field field, StructureVersion version) {
  const FieldSize& entry = kFieldSizes[static_cast<std::size_t>(field)];
  return version.major >= 3 ? entry.from3 : entry.upTo2;
}

int EepromImage::AddressOf(Field field, StructureVersion version) {
  int address = 1;
  for (const FieldSize& entry : kFieldSizes) {
    if (entry.field == field) {
      break;
    }
    address += SizeOf(entry.field, version);
  }
  return address;
}

EepromImage::EepromImage(const Record& record, StructureVersion version, unsigned char fill) {
  mBytes.fill(fill);
  const auto text = [&](Field field, std::string_view value) {
    FieldWriter(*this, field, version).Put(value, SizeOf(field, version));
  };
  text(Field::kId, record.id);
  text(Field::kStructureVersion, std::to_string(version.major) + "." + std::to_string(version.minor));
  text(Field::kSerial, record.serial);
  text(Field::kManufactured, record.manufactured);
  text(Field::kModified, record.modified);
  FieldWriter(*this, Field::kFocalLength, version).Put(record.focalLength);
  FieldWriter(*this, Field::kAngularDeviation, version).Put(record.angularDeviation);
  FieldWriter(*this, Field::kTilt, version).Put(record.tilt);
  FieldWriter coefficients(*this, Field::kCoefficients, version);
  for (const float coefficient : record.coefficients) {
    coefficients.Put(coefficient);
  }
  FieldWriter(*this, Field::kSinePhase, version).Put(record.sinePhase);
  FieldWriter(*this, Field::kSineFrequency, version).Put(record.sineFrequency);
  FieldWriter(*this, Field::kSineAmplitude, version).Put(record.sineAmplitude);
  SetByte(AddressOf(Field::kWaveToStepsEnabled, version), record.waveToStepsEnabled ? 1 : 0);
  FieldWriter(*this, Field::kCurrentWavelength, version).Put(record.currentWavelength);
  FieldWriter detectorOffsets(*this, Field::kDetectorOffsets, version);
  for (int i = 0; i < DetectorOffsets(version); ++i) {
    detectorOffsets.Put(record.detectorOffsets[static_cast<std::size_t>(i)]);
  }
  FieldWriter filters(*this, Field::kFilterLabels, version);
  for (const std::string& filter : record.filters) {
    filters.Put(filter, FilterLabelWidth(version));
  }
  const auto turrets = static_cast<std::size_t>(Turrets(version));
  for (std::size_t t = 0; t < turrets; ++t) {
    PutTurret(*this, t < record.turrets.size() ? record.turrets[t] : Turret{}, kTurretFields[t], version);
  }
  if (Turrets(version) > 1) {
    SetByte(AddressOf(Field::kTurrets, version), static_cast<std::uint8_t>(record.turrets.size()));
    SetByte(AddressOf(Field::kActiveTurret, version), static_cast<std::uint8_t>(record.activeTurret));
  }
}

StructureVersion EepromImage::Version() const {
  constexpr Field kField = Field::kStructureVersion;
  constexpr StructureVersion kAny;  // the field stands in one place in all
  const std::string text = FieldReader(*this, kField, kAny).Text(SizeOf(kField, kAny));
  StructureVersion version{0, 0};
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, version.major);
  if (error == std::errc{} && next != end && *next == '.') {
    std::from_chars(next + 1, end, version.minor);
  }
  return version;
}

Record EepromImage::Decode(const Record& base) const {
  const StructureVersion version = Version();
  Record record = base;
  const auto text = [&](Field field) { return FieldReader(*this, field, version).Text(SizeOf(field, version)); };
  record.id = text(Field::kId);
  record.serial = text(Field::kSerial);
  record.manufactured = text(Field::kManufactured);
  record.modified = text(Field::kModified);
  record.focalLength = FieldReader(*this, Field::kFocalLength, version).Float();
  record.angularDeviation = FieldReader(*this, Field::kAngularDeviation, version).Float();
  record.tilt = FieldReader(*this, Field::kTilt, version).Float();
  FieldReader coefficients(*this, Field::kCoefficients, version);
  for (float& coefficient : record.coefficients) {
    coefficient = coefficients.Float();
  }
  record.sinePhase = FieldReader(*this, Field::kSinePhase, version).Float();
  record.sineFrequency = FieldReader(*this, Field::kSineFrequency, version).Float();
  record.sineAmplitude = FieldReader(*this, Field::kSineAmplitude, version).Float();
  record.waveToStepsEnabled = Byte(AddressOf(Field::kWaveToStepsEnabled, version)) != 0;
  record.currentWavelength = FieldReader(*this, Field::kCurrentWavelength, version).Float();
  record.detectorOffsets = {};
  FieldReader detectorOffsets(*this, Field::kDetectorOffsets, version);
  for (int i = 0; i < DetectorOffsets(version); ++i) {
    record.detectorOffsets[static_cast<std::size_t>(i)] = detectorOffsets.Int();
  }
  FieldReader filters(*this, Field::kFilterLabels, version);
  for (std::string& filter : record.filters) {
    filter = filters.Text(FilterLabelWidth(version));
  }
  record.turrets.resize(static_cast<std::size_t>(Turrets(version)));
  for (std::size_t t = 0; t < record.turrets.size(); ++t) {
    record.turrets[t] = ReadTurret(*this, record.turrets[t], kTurretFields[t], version);
  }
  record.activeTurret = 0;
  if (Turrets(version) > 1) {
    record.activeTurret = std::min<int>(Byte(AddressOf(Field::kActiveTurret, version)), kMaxTurrets - 1);
  }
  return record;
}

std::string EepromImage::ToHex() const {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(2 * mBytes.size());
  for (const std::uint8_t byte : mBytes) {
    text.push_back(kDigits[byte >> 4U]);
    text.push_back(kDigits[byte & 15U]);
  }
  return text;
}

bool EepromImage::FromHex(const std::string& text) {
  if (text.size() != 2 * mBytes.size()) {
    return false;
  }
  std::array<std::uint8_t, kSize> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* const digits = text.data() + 2 * i;
    const auto [end, error] = std::from_chars(digits, digits + 2, bytes[i], 16);
    if (error != std::errc{} || end != digits + 2) {
      return false;
    }
  }
  mBytes = bytes;
  return true;
}

}  // namespace corvane::sim
