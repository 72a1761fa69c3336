// What a simulated instrument is: its identity, the record in its memory, its mechanics, its parts, and the faults it
// shall show. A scenario file fills these structures; tests may fill them directly. No behaviour here.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace corvane::sim {

inline constexpr int kMaxTurrets = 3;
inline constexpr int kMaxGratings = 4;
/// The number that an SX gives to a turret which is none of the three in its record.
inline constexpr int kUnlistedTurret = 99;
inline constexpr int kFilters = 6;
inline constexpr int kSlits = 4;
/// Lines per mm of the grating for which records give their polynomials.
inline constexpr float kReferenceLines = 1200.0F;
/// Characters that an instrument's memory keeps of its serial number.
inline constexpr int kSerialLength = 10;

struct StructureVersion {
  int major = 3;
  int minor = 0;
  /// True from the given version on.
  bool AtLeast(int otherMajor, int otherMinor) const {
    return major != otherMajor ? major > otherMajor : minor >= otherMinor;
  }
};

struct Grating {
  float lines = 100.0F;  ///< per mm
  std::string blaze = "300";
  int start = 0;   ///< zero-order position in motor steps
  int offset = 0;  ///< added to start, in motor steps
};

struct Turret {
  std::vector<Grating> gratings;  ///< 1 to 3, or to kMaxGratings on an SX
};

/// The contents of the instrument's memory, whatever the layout version. Angles in degrees, lengths in metres.
struct Record {
  std::string id = "CORVANE";
  std::string serial = "CV1001";
  std::string manufactured = "10/07/2007";
  std::string modified = "10/07/2007";
  float focalLength = 0.75F;
  float angularDeviation = 11.83F;
  float tilt = 6.7F;
  /// Polynomial from x = wavelength / kReferenceLines * lines to the sine of the motor angle, highest power (4) first.
  /// All zero: the motor turns with the grating.
  std::array<float, 5> coefficients{};
  float sineAmplitude = 1.0F;     ///< steps
  float sinePhase = 0.0F;         ///< radians
  float sineFrequency = 1000.0F;  ///< period, in steps
  bool waveToStepsEnabled = false;
  float currentWavelength = 500.0F;      ///< nm
  std::array<int, 4> detectorOffsets{};  ///< index exit + 2 * entrance; layouts before 3.0 hold the first two
  std::array<std::string, kFilters> filters{"Filter 1", "Filter 2", "Filter 3", "Filter 4", "Filter 5", "Filter 6"};
  std::vector<Turret> turrets;  ///< 1 to kMaxTurrets
  int activeTurret = 0;         ///< from 0
};

struct Drive {
  int totalSteps = 1440000;  ///< motor steps per turret revolution
  int microsteps = 65536;    ///< the firmware positions to this fraction of a step; the host sees whole steps
  /// Where each grating's zero order really lies, less what the record says, in steps.
  std::array<int, kMaxGratings> zeroErrors{};
};

/// Milliseconds that each kind of motion takes.
struct MotionTimes {
  double wavelength = 40;
  double grating = 120;
  double home = 80;
  double filter = 60;
  double slit = 30;
  double focus = 30;
  double flipper = 40;
};

struct Slit {
  bool fitted = false;
  std::string mode = "SLIT";
  int width = 100;  ///< micrometres at start
};

/// Order of the slits below and of every array of slits in the simulation.
enum SlitIndex { kSlitSI1, kSlitSI2, kSlitSO1, kSlitSO2 };

struct Parts {
  std::array<Slit, kSlits> slits{};
  bool filterWheel = true;
  bool focusMirror = true;
  int focusTotalSteps = 2000;
  bool entranceFlipper = true;
  bool exitFlipper = true;
  bool accessoryLines = true;
  int portInputs = 0;               ///< four input lines, bits 0 to 3
  std::vector<std::string> others;  ///< further names in the peripheral list
};

/// A disturbance of replies. Lines are matched by their word: "MOVETO", "POSITION?" (the query), "*" (any).
struct ReplyFault {
  enum class Kind {
    kError,     ///< text is answered as an error word; nothing is done
    kReply,     ///< the line is carried out, but the reply is text, byte for byte
    kSilence,   ///< the line is lost: nothing is done, no answer
    kStale,     ///< text arrives before the reply
    kValue,     ///< a query's value is text; an empty one leaves its line empty
    kEcho,      ///< a query's echo comes, no value
    kCut,       ///< only the first splitAt bytes of the reply arrive
    kPrevious,  ///< the reply of the line before comes once more
    kSplit,     ///< the reply pauses for milliseconds after splitAt bytes
    kSlow       ///< each byte of the reply takes milliseconds
  };
  std::string command = "*";
  int occurrence = 1;       ///< the first matching line that is hit, from 1, counted from arming
  bool fromThenOn = false;  ///< and every later matching line
  Kind kind = Kind::kSilence;
  std::string text;
  std::size_t splitAt = 0;
  double milliseconds = 0;
};

/// Transfer number `operation` (from 1, counted from arming) fails with status; with fromThenOn every later one too.
struct TransportFault {
  unsigned long long operation = 0;
  bool fromThenOn = false;
  unsigned int status = 20067;
};

struct MemoryPatch {
  int address = 1;  ///< from 1
  std::vector<unsigned char> bytes;
};

struct ParameterPatch {
  int number = 0;
  std::string text;
};

struct InstrumentDescription {
  std::string maker = "Tivan";
  std::string model = "LX";  ///< "LX", "MX" or "SX"
  std::string designation = "CV-LX";
  std::string serial = "CV1001";
  std::string board = "MC2";
  std::string firmware = "2.80";
  StructureVersion structure;
  Record record;
  Drive drive;
  float wavelength = 500.0F;  ///< where it stands at start, nm
  int grating = 1;            ///< and on which grating, from 1
  int turretNumber = 1;       ///< mounted on an SX at start: 1 to kMaxTurrets, or kUnlistedTurret
  Parts parts;
  MotionTimes motion;
  double latency = 0;  ///< milliseconds before any reply
  /// Bytes of the memory that the record leaves free; and bytes or, on an SX, texts written over the finished memory.
  /// None changes the optics of the instrument.
  unsigned char memoryFill = 0;
  std::vector<MemoryPatch> memoryPatches;
  std::vector<ParameterPatch> parameterPatches;
  std::vector<ReplyFault> faults;
  std::string stateFile;  ///< absolute; empty: the instrument forgets

  /// An SX keeps its record in numbered texts, the others in bytes.
  bool KeepsTexts() const { return model == "SX"; }
};

/// Pixels along the dispersion and across, sizes in micrometres.
struct DetectorGeometry {
  int pixels = 2048;
  int rows = 512;
  float pixelWidth = 13.5F;
  float pixelHeight = 13.5F;
};

}  // namespace corvane::sim
