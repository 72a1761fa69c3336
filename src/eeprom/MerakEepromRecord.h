// The values of an instrument's EEPROM record with what they are before a record was read. Held by TTivanMerakEeprom;
// the layout tables say where each value lies on an instrument.
#pragma once

#include <array>
#include <string>

namespace corvane {

struct MerakEepromRecord {
  static constexpr int kTurrets = 3;
  static constexpr int kGratings = 4;
  static constexpr int kFilters = 6;
  static constexpr int kCoefficients = 5;
  /// Entrance and exit ports of the detector offsets; index of an offset = exit + kPorts * entrance.
  static constexpr int kPorts = 2;
  static constexpr int kDetectorOffsets = 4;

  template <typename T>
  using PerGrating = std::array<std::array<T, kGratings>, kTurrets>;

  MerakEepromRecord();

  // Texts that came from an instrument keep the bytes behind their terminator, so that an unchanged text is written
  // back as it was.
  std::string idString = "None";
  std::string serialNumber = "CVXXXX";
  std::string structureVersion = "1.0";
  std::string manufactureDate = "10/07/2007";
  std::string modifiedDate = "10/07/2007";
  float focalLength = 0.75F;
  float angularDeviation = 11.83F;
  float planeTilt = 6.7F;
  std::array<float, kCoefficients> coefficients{};
  float sinAmplitude = 1.0F;
  float sinPhase = 0.0F;
  float sinFrequency = 1000.0F;
  PerGrating<int> gratingStart{};
  PerGrating<int> gratingOffset{};
  PerGrating<float> gratingLines{};
  PerGrating<std::string> gratingBlaze;
  std::array<int, kTurrets> noOfGratings{};
  std::array<std::string, kFilters> filterLabels;
  std::array<int, kDetectorOffsets> detectorOffsets{};
  int noOfTurrets = 0;
  int activeTurret = 0;
  /// A turret number that SX models keep beside the active one.
  int heldTurret = -1;
  int waveToStepsEnable = 0;
  float currentWavelength = 0.0F;
};

}  // namespace corvane
