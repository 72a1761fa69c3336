// The simulated instrument behind a motion controller: its memory, where its parts stand, and its optical truth. Knows
// no protocol; CommandSet drives it. The firmware positions by what the memory holds now, while light follows the
// mechanics that the description gave at the start, so wrong offsets in the memory show as wrong wavelengths.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "controller/InstrumentMemory.h"
#include "model/InstrumentDescription.h"
#include "model/Positions.h"

namespace corvane::sim {

class OpticalModel;
struct Limits;

class ControllerInstrument {
 public:
  /// Takes memory and positions from the description's state file where that exists. Throws std::runtime_error when
  /// the file is not one of this instrument.
  explicit ControllerInstrument(const InstrumentDescription& description);

  const InstrumentDescription& Description() const { return mDescription; }
  const EepromImage& Memory() const { return mMemory.bytes; }
  const ParameterMemory& Parameters() const { return mMemory.parameters; }
  /// Whether the record is in Parameters() rather than in Memory().
  bool KeepsTexts() const { return mDescription.KeepsTexts(); }
  const Positions& Stands() const { return mPositions; }

  /// Wavelength in nm that truly falls on a pixel (from 1, fractions allowed) of a detector; none when no grating
  /// stands in the beam or the grating diffracts nothing there.
  std::optional<double> TrueWavelength(double pixel, const DetectorGeometry& detector) const;
  /// Wavelength in nm that truly falls on the detector's centre.
  std::optional<double> TrueCentre() const;

  /// The record as the firmware sees it: what the memory holds, and the description for what its layout lacks.
  Record FirmwareRecord() const;

  // What the firmware does. The setters answer false and change nothing when the argument is out of range.

  /// What the firmware takes to be the centre wavelength, nm; none where its data make no sense.
  std::optional<double> Wavelength() const;
  bool MoveTo(double wavelength);
  /// Keeps the wavelength; goes to zero order where the grating does not reach it. grating from 1.
  bool SelectGrating(int grating);
  /// False: no grating to home.
  bool GratingHome();
  /// Whole motor steps, in [0, TotalSteps()).
  int Step() const;
  bool StepTo(int step);
  int TotalSteps() const { return mDescription.drive.totalSteps; }

  /// The address is valid; value 0 to 255.
  bool WriteMemory(int address, int value);
  /// number is valid.
  void WriteParameter(int number, std::string_view text);
  /// From 1. On an SX also kUnlistedTurret.
  int MountedTurret() const;
  /// turret as MountedTurret gives it; 1 only on layouts without several turrets.
  bool SetMountedTurret(int turret);

  bool SetEntrancePort(int port);
  bool SetExitPort(int port);
  bool SetFilter(int filter);
  void SetFilterMode(const std::string& mode);
  /// A relative move; the target must lie in 0 to the focus axis' total steps.
  bool MoveFocus(long long steps);
  void FocusHome();
  bool SetSlitWidth(SlitIndex slit, int width);
  void SlitHome(SlitIndex slit);
  void SetSlitMode(SlitIndex slit, const std::string& mode);
  bool SetPortOutputs(int lines);
  bool SetShutterMode(int mode);

 private:
  /// The gratings of the mounted turret; empty when the record has no such turret.
  static const std::vector<Grating>& Gratings(const Record& record);
  OpticalModel ModelOf(const Record& record, const Grating& grating) const;
  /// Steps of a grating's zero order for the present ports. grating from 1.
  long double Zero(const Record& record, int grating) const;
  /// Steps from that zero order to where the turret stands, within half a turn.
  long double FromZero(long double zero) const;
  /// The grating whose sector of the turret is in the beam, from 1; 0 for none.
  int GratingInBeam(const Record& record) const;
  std::optional<OpticalModel> RealModel() const;
  std::optional<long double> RealCentre() const;
  Record RealRecord() const;
  bool TurnTo(const Record& record, int grating, double wavelength);
  bool Set(int& position, int value, Limits limits);
  void Changed() const;

  InstrumentDescription mDescription;
  InstrumentMemory mMemory;
  Positions mPositions;
};

}  // namespace corvane::sim
