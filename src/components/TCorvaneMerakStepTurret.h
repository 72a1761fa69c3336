// Drives the grating turret by motor steps computed from the EEPROM record, for instruments whose record says so. It
// is both strategies at once. The device owns it; the grating, the wavelength and the flippers borrow it.
//
// Two ways to count: library steps may be negative or exceed a revolution; controller steps lie in [0, N), N being the
// motor's steps per revolution, asked for at every operation. No step is computed without N and, where it counts, the
// present step: an answer that fails or cannot be one (kIoError) ends the operation before anything moves. Ports are
// not so: those last known stand in.
#pragma once

#include <cstdint>

#include "components/TMCorvaneGratingStrategy.h"
#include "components/TMCorvaneWaveStrategy.h"

class TMerakOrbis;

class TCorvaneMerakStepTurret final : public TMCorvaneWaveStrategy, public TMCorvaneGratingStrategy {
 public:
  /// The controller is borrowed.
  explicit TCorvaneMerakStepTurret(TMerakOrbis& controller) : mController(controller) {}

  /// Moves the current grating; on success the EEPROM takes the wavelength as the current one. A wavelength out of
  /// reach goes to the grating's zero order, without a word.
  MerakResult SetWavelength(float nm) override;
  /// The EEPROM's current wavelength; nothing is asked.
  MerakResult GetWavelength(float& nm) override;

  /// Moves a grating to the current wavelength or to its zero order. kUnknownError for a grating other than 1 to 3.
  MerakResult SetGrating(int grating, eWavelengthOption option) override;
  /// The last grating (1 to 3) whose zero position lies at or below the turret's position; 3 when none does.
  MerakResult GetGrating(int& grating) override;
  /// When the grating is the current one the turret follows the change. kDeviceNotOpen while there is no record. After
  /// a failure to follow the offset is stored all the same, and the next wavelength takes it in.
  MerakResult SetGratingOffset(int grating, int offset) override;
  MerakResult GetGratingOffset(int grating, int& offset) override;
  MerakResult GratingOffsetAutoAdjust() override { return merak::kSuccess; }
  MerakResult GratingOffsetCancelAutoAdjust() override { return merak::kSuccess; }
  /// When the ports are the current ones the turret follows the change, as above. kInvalidParameter for ports other
  /// than 0 and 1, kDeviceNotOpen while there is no record.
  MerakResult SetDetectorOffset(int entrance, int exit, int offset) override;
  MerakResult GetDetectorOffset(int entrance, int exit, int& offset) override;

  /// The ports whose detector offset counts, until they are next asked for. kInvalidParameter for a port other
  /// than 0 and 1, which changes nothing.
  MerakResult SetCurrentExitPort(int port);
  MerakResult SetCurrentEntrancePort(int port);

 private:
  static constexpr int kGratings = 3;

  /// Steps per revolution, at least 1. kIoError when the reply holds no such number.
  MerakResult ReadTotal(std::int64_t& total);
  /// Controller steps. kIoError when the reply holds no number.
  MerakResult ReadPosition(int& step);
  /// A port that cannot be had stays as it is held. kIoError only when the controller fell silent: each further
  /// question would cost another time-out.
  MerakResult RefreshPorts();
  /// Zero position of a 0-based grating, in library steps.
  std::int64_t ZeroPosition(int grating);
  static std::int64_t tivanStepsToMerakSteps(std::int64_t steps, std::int64_t total);
  std::int64_t merakStepsToTivanSteps(std::int64_t steps, std::int64_t total);
  MerakResult StepShift(std::int64_t delta);
  /// Moves a 1-based grating to a wavelength.
  MerakResult MoveTo(int grating, float nm, std::int64_t total);

  TMerakOrbis& mController;
  int mExitPort = 0;
  int mEntrancePort = 0;
};
