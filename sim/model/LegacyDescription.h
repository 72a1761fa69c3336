// What a simulated older instrument is: the record in its EEPROM, its mechanics, its parts and the faults it shall
// show. A scenario file fills this structure; tests may fill it directly. No behaviour here.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "model/InstrumentDescription.h"

namespace corvane::sim {

inline constexpr int kLegacyGratings = 3;
inline constexpr int kLegacyPages = 6;
inline constexpr int kLegacyPageSize = 256;

enum LegacyMotor { kWaveMotor, kSlitMotor, kFilterMotor, kFlipperMotor, kOutputSlitMotor, kLegacyMotors };

/// What the EEPROM says of a motor.
struct MotorProfile {
  int minimum;    ///< steps per second at start
  int maximum;    ///< steps per second at most
  int increment;  ///< steps per second gained every millisecond
  int lowest;
  int highest;
};

inline constexpr std::array<MotorProfile, kLegacyMotors> kMotorProfiles{{
    {5000, 80000, 1000, 0, 480000},
    {40000, 80000, 1000, 0, 4800},
    {20000, 30000, 1000, 0, 4800},
    {100000, 100000, 1000, 0, 80},
    {40000, 80000, 1000, 0, 4800},
}};

/// The calibration of both slits: two points of motor steps and width in micrometres. The first is the closed stop.
struct SlitPoint {
  int steps;
  int width;
};
inline constexpr std::array<SlitPoint, 2> kSlitPoints{{{-80, 10}, {800, 2200}}};

/// The filter wheel: what its sensor shows at each filter, and where the filters are.
inline constexpr std::array<int, kFilters> kFilterPatterns{4, 12, 8, 10, 2, 6};
inline constexpr std::array<int, kFilters> kFilterPositions{0, 800, 1600, 2400, 3200, 4000};
/// From where the sensor is looked for to where the filter stands in the beam.
inline constexpr int kFilterResetOffset = 160;

/// A motor that takes a move, does not turn, and says for some time that it is running.
struct MotorFault {
  int motor = kWaveMotor;
  int occurrence = 1;  ///< the motor's first move that is hit, from 1
  bool fromThenOn = false;
  double milliseconds = -1;  ///< negative: for ever
};

struct PagePatch {
  int page = 0;
  int offset = 0;
  std::vector<unsigned char> bytes;
};

struct LegacyParts {
  bool slit = true;
  bool outputSlit = true;
  bool filterWheel = true;
  bool flipper = true;
  bool shutter = true;
  bool accessory = true;
};

struct LegacyDescription {
  StructureVersion structure;
  /// serial is the record's version text, which hosts show as the serial number. The first two detector offsets count.
  Record record;
  int fpga = 25;              ///< below 23 the instrument takes bursts, from 23 register transfers
  bool usbCamera = true;      ///< behind a camera on USB, which below 23 finds the motors' status elsewhere
  float wavelength = 500.0F;  ///< where it stands on the first grating, nm
  /// Where the drive stands instead, in steps from the fine hole's edge, whatever the record believes.
  std::optional<int> drivePosition;
  int backlash = 40;  ///< steps that the drive loses when it turns back
  std::array<int, kLegacyGratings> zeroErrors{};
  LegacyParts parts;
  std::array<float, 2> slitWidths{25.0F, 25.0F};  ///< entrance and output, micrometres
  int filter = 1;                                 ///< in the beam, from 1
  int port = 0;
  double motion = 1;      ///< on the time that a ramp takes; 0: instantaneous
  double writeTime = 10;  ///< milliseconds in which the EEPROM does not answer after a byte was written
  unsigned char memoryFill = 0;
  std::vector<PagePatch> memoryPatches;  ///< over the finished image; they change neither mechanics nor optics
  std::vector<MotorFault> faults;
};

}  // namespace corvane::sim
