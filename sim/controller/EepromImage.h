// The byte-addressed memory of an instrument, and the layout of its record by structure version. Used by
// ControllerInstrument (firmware), scenarios and tests; it does not know the library's view of the same bytes.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

/// Fields in the order in which they lie; "Turret1Offsets" is followed by the same fields of turrets 2 and 3 where the
/// table says so.
enum class Field {
  kId,
  kStructureVersion,
  kSerial,
  kManufactured,
  kModified,
  kFocalLength,
  kAngularDeviation,
  kTilt,
  kReserved1,
  kCoefficients,
  kSinePhase,
  kSineFrequency,
  kSineAmplitude,
  kWaveToStepsEnabled,
  kCurrentWavelength,
  kTurret1Offsets,
  kTurret1Starts,
  kDetectorOffsets,
  kTurret1Lines,
  kTurret1Blazes,
  kTurret1Gratings,
  kTurrets,
  kReserved2,
  kFilterLabels,
  kTurret2Offsets,
  kTurret2Starts,
  kTurret2Lines,
  kTurret2Blazes,
  kTurret2Gratings,
  kTurret3Offsets,
  kTurret3Starts,
  kTurret3Lines,
  kTurret3Blazes,
  kTurret3Gratings,
  kActiveTurret,
  kCount
};

class EepromImage {
 public:
  static constexpr int kSize = 1024;

  /// Address (from 1) and size in bytes of a field.
  static int AddressOf(Field field, StructureVersion version);
  static int SizeOf(Field field, StructureVersion version);

  static constexpr int kGratings = 3;  ///< of each turret
  static bool HasGratingCounts(StructureVersion version) { return version.AtLeast(1, 2); }
  static int Turrets(StructureVersion version) { return version.AtLeast(1, 3) ? kMaxTurrets : 1; }
  static int DetectorOffsets(StructureVersion version) { return SizeOf(Field::kDetectorOffsets, version) / 4; }
  /// Bytes of one text.
  static int BlazeWidth(StructureVersion version) { return SizeOf(Field::kTurret1Blazes, version) / kGratings; }
  static int FilterLabelWidth(StructureVersion version) { return SizeOf(Field::kFilterLabels, version) / kFilters; }

  EepromImage() = default;
  /// The image of a record: fields that the version has, fill elsewhere.
  EepromImage(const Record& record, StructureVersion version, unsigned char fill);

  static bool IsValid(int address) { return address >= 1 && address <= kSize; }
  /// address is in 1 to kSize.
  std::uint8_t Byte(int address) const { return mBytes[static_cast<std::size_t>(address) - 1]; }
  void SetByte(int address, std::uint8_t value) { mBytes[static_cast<std::size_t>(address) - 1] = value; }

  /// As the version text in the memory says; 0.0 when it holds none.
  StructureVersion Version() const;
  /// What the memory holds, laid over base for the fields that its version lacks. Counts and indices are brought into
  /// range; floats may be anything.
  Record Decode(const Record& base) const;

  std::string ToHex() const;
  /// False when the text is not an image of kSize bytes.
  bool FromHex(const std::string& text);

 private:
  std::array<std::uint8_t, kSize> mBytes{};
};

}  // namespace corvane::sim
