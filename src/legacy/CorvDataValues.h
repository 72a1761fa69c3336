// The stored parameters of one older instrument, with what they are before anything was loaded. EECorvData holds them;
// CorvDataPages and CorvDataKeys say where each lies in the EEPROM and in the data file. Nothing here talks to a bus.
//
// Arrays count from 0: motors in the order of CorvMotor, slits 0 and 1, turrets, gratings and filters 0 for the first.
// Values that say which one is current count from 1, as the instrument stores them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/TextLengths.h"
#include "legacy/RampedMoveFormat.h"

namespace corvane {

/// Motor numbers of the instrument.
enum CorvMotor : int { kWaveMotor = 0, kSlitMotor = 1, kFilterMotor = 2, kFlipperMotor = 3, kSecondSlitMotor = 4 };

struct CorvDataValues {
  static constexpr std::size_t kMotors = 5;
  static constexpr std::size_t kSlits = 2;
  static constexpr std::size_t kFilters = 6;
  static constexpr std::size_t kTurrets = 3;
  static constexpr std::size_t kGratings = 3;
  static constexpr std::size_t kHoles = 2;
  static constexpr std::size_t kPolynomial = 5;
  /// The only communication address there is.
  static constexpr std::uint8_t kCommAdd = 16;
  /// Lines per mm of a grating of which nothing is known.
  static constexpr float kFreshLines = 300.0F;
  /// Longest text of the record and of a filter label.
  static constexpr std::size_t kMaxText = kMaxTextLength;
  static constexpr std::size_t kMaxLabel = kMaxOlderLabelLength;

  /// MINDUM, MAXDUM, DELDUM; and the positions a motor may be sent to.
  struct Motion {
    StepRamp ramp;
    std::int32_t minSteps = 0;
    std::int32_t maxSteps = 0;
  };
  /// One stage of the search for the wave drive's reference.
  struct Hole {
    std::int32_t findDist = 0;
    StepRamp find;
    std::int32_t intoDist = 0;
    std::int32_t edgeDist = 0;
    StepRamp edge;
  };
  struct SlitPoint {
    std::int32_t steps = 0;
    std::int32_t width = 0;
  };
  /// steps = c0 + c1 * width + c2 * width^2, derived from the two points.
  struct Slit {
    std::array<SlitPoint, 2> points{};
    float c2 = 0.0F;
    float c1 = 0.0F;
    float c0 = 0.0F;
  };
  struct Grating {
    float lines = kFreshLines;  // per mm
    std::string blaze = "600";
    std::int32_t offset = 0;  // steps
    std::int32_t start = 0;   // steps
  };
  struct Turret {
    /// 1 to 3.
    std::int32_t numberOfGratings = 3;
    std::array<Grating, kGratings> gratings;
  };

  CorvDataValues();

  /// Where the values came from last; at most one of the two.
  bool loadedFromEeprom = false;
  bool loadedFromFile = false;
  /// Full path of the last file read; empty when there is none.
  std::string sourcePath;

  std::string idString = "Tivan Technology";
  std::string instrumentVersion = "PP001";       // IVERNO
  std::string dateOfManufacture = "01/01/2001";  // DOM
  std::string date = "02/02/2002";
  std::string structureVersion = "3.0";  // SVERNO
  std::int32_t structureMajor = 3;
  std::int32_t structureMinor = 0;
  std::uint8_t commAdd = kCommAdd;

  float focalLength = 0.25736F;
  float angularDeviation = 11.83F;  // degrees
  float focalTilt = 6.7F;           // degrees
  std::int32_t currentFilter = 1;   // 1 to 6, but whatever was stored
  std::int32_t currentMirror = 0;   // 0 or 1, but whatever was stored
  float currentWave = 703.241F;     // lines * nm / kReferenceLines
  /// CURRSLIT and CURRSLIT2, um.
  std::array<float, kSlits> currentSlit{25.0F, 25.0F};
  std::int32_t turret = 1;  // 1 to 3
  /// DETOFFSET and DETOFFSET2, steps.
  std::array<std::int32_t, 2> detectorOffset{192, 0};

  std::array<Motion, kMotors> motors;

  std::array<float, kPolynomial> polynomial{};  // POLY1 (of x^4) to POLY5
  std::array<float, 2> linear{0.0F, 1.0F};
  std::array<float, 9> quadratic{};  // Quadratic1 to Quadratic3, three each
  float sinPhase = 0.812F;           // radians
  float sinFrequency = 2000.0F;      // steps per period
  float sinAmplitude = 0.0F;         // steps
  std::array<Hole, kHoles> holes;

  std::array<Slit, kSlits> slits;

  /// NOFILTS, whatever was stored: FilterCount() is what there is.
  std::int32_t numberOfFilters = 6;
  std::array<std::string, kFilters> filterLabels;
  std::int32_t filterResetOffset = 160;  // steps
  std::array<std::uint8_t, kFilters> filterSensorBits{4, 12, 8, 10, 2, 6};
  std::array<std::int32_t, kFilters> filterDelta{0, 800, 1600, 2400, 3200, 4000};  // steps

  std::int8_t shutterType = 1;
  std::int8_t shutterMode = 0;
  std::int8_t shutterCustomBgMode = 3;
  std::int8_t shutterCustomAqMode = 0;
  float shutterOpenTime = 20.0F;   // ms
  float shutterCloseTime = 20.0F;  // ms
  float shutterFreqLimit = 10.0F;  // Hz

  /// NOTURRETS, whatever was stored.
  std::int32_t numberOfTurrets = 1;
  std::array<Turret, kTurrets> turrets;

  /// 0 to 6.
  std::size_t FilterCount() const;
  /// The turret in use, and its index.
  std::size_t ActiveTurretIndex() const;
  const Turret& ActiveTurret() const { return turrets[ActiveTurretIndex()]; }
};

/// A turret in use other than 1 to 3 becomes 1; a number of gratings other than 1 to 3 becomes 3.
void ClampTurret(CorvDataValues& values);
void ClampGratings(CorvDataValues::Turret& turret);

/// Derives c2, c1 and c0 of a slit from its points: all 0, which converts nothing, when both have the same width.
void DeriveSlitCoefficients(CorvDataValues::Slit& slit);

}  // namespace corvane

/// Splits "major.minor": digits, ".", digits, which a letter ends. A leading 0 makes a number octal (and 0x does not
/// make it hexadecimal, x being a letter). 1, or 0 with the outputs untouched when the text has another form.
int SplitVersionString(const char* text, std::int32_t* majorNumber, std::int32_t* minorNumber);
