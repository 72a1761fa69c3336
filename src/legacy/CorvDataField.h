// The fields of an older instrument's record by name: how the tables of the EEPROM and of the data file, and whoever
// stores a single value, say which value they mean. Also finds a value in memory; knows no page and no key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

#include "legacy/CorvDataValues.h"
#include "legacy/LegacyResult.h"

namespace corvane {

/// A field is one value, or a row of elements that count from 0.
enum class CorvField : std::uint8_t {
  kCommAdd,
  kIdString,
  kStructureVersion,
  kInstrumentVersion,
  kDateOfManufacture,
  kDate,
  kFocalLength,
  kAngularDeviation,
  kFocalTilt,
  kCurrentWave,
  kCurrentSlit,  // slits
  kCurrentFilter,
  kCurrentMirror,
  kTurret,
  kDetectorOffset,  // ports
  kMotion,          // motors, five each: MINDUM, MAXDUM, DELDUM, MINSTEPS, MAXSTEPS
  kPolynomial,
  kLinear,
  kQuadratic,
  kSinPhase,
  kSinFrequency,
  kSinAmplitude,
  kHole,       // holes, nine each: FINDDIST, MINDUM, MAXDUM and DELTA of FIND, INTODIST, EDGEDIST, the same of EDGE
  kSlitPoint,  // slits, four each: steps and width of the first point, then of the second
  kNumberOfFilters,
  kFilterLabel,
  kFilterResetOffset,
  kFilterSensorBits,
  kFilterDelta,
  kShutterType,
  kShutterMode,
  kShutterCustomBgMode,
  kShutterCustomAqMode,
  kShutterOpenTime,
  kShutterCloseTime,
  kShutterFreqLimit,
  kNumberOfTurrets,
  kNumberOfGratings,  // turrets
  kGratingLines,      // turrets, one for each grating; so are the next three
  kGratingBlaze,
  kGratingOffset,
  kGratingStart
};

/// One value of the record.
struct CorvValueId {
  CorvField field = CorvField::kCommAdd;
  std::size_t element = 0;

  bool operator==(const CorvValueId&) const = default;
};

/// Elements of a field that lie together.
struct CorvElements {
  CorvField field = CorvField::kCommAdd;
  std::size_t first = 0;
  std::size_t count = 1;

  constexpr CorvValueId operator[](std::size_t index) const { return {field, first + index}; }
};

inline constexpr std::size_t kMotionValues = 5;
inline constexpr std::size_t kHoleValues = 9;
inline constexpr std::size_t kSlitPointValues = 4;

/// Motors, holes, slits, turrets and gratings count from 0.
constexpr CorvElements MotionOf(std::size_t motor) {
  return {CorvField::kMotion, motor * kMotionValues, kMotionValues};
}

constexpr CorvElements HoleOf(std::size_t hole) {
  return {CorvField::kHole, hole * kHoleValues, kHoleValues};
}

constexpr CorvElements SlitPointsOf(std::size_t slit) {
  return {CorvField::kSlitPoint, slit * kSlitPointValues, kSlitPointValues};
}

constexpr CorvElements OfTurret(std::size_t turret, CorvField field) {
  return {field, turret * CorvDataValues::kGratings, CorvDataValues::kGratings};
}

using CorvValue = std::variant<std::string*, float*, std::int32_t*, std::uint8_t*, std::int8_t*>;

/// Where the value is in memory. An element that the field does not have is not asked for.
CorvValue ValueOf(CorvDataValues& values, CorvValueId id);

/// What becomes of values once a table has brought them; its result ends a transfer unless it is kSuccess.
using CorvDataSettle = int (*)(CorvDataValues& values);

inline int SettleTurret(CorvDataValues& values) {
  ClampTurret(values);
  return legacy::kSuccess;
}

template <std::size_t Turret>
int SettleGratings(CorvDataValues& values) {
  ClampGratings(values.turrets[Turret]);
  return legacy::kSuccess;
}

template <std::size_t Slit>
int SettleSlit(CorvDataValues& values) {
  DeriveSlitCoefficients(values.slits[Slit]);
  return legacy::kSuccess;
}

}  // namespace corvane
