// A simulated older instrument as the devices that it puts on a camera's I2C bus: the EEPROM pages at 0x68 to 0x6D with
// their write mode at 0x6F, the motor controller at 0x10, and status and output lines at 0x11. Also its truth: where
// light really falls. The simulated camera SDK carries it; it knows no host.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "legacy/LegacyEeprom.h"
#include "legacy/LegacyMotors.h"
#include "model/LegacyDescription.h"
#include "model/OpticalModel.h"
#include "model/SimulationClock.h"

namespace corvane::sim {

/// The optics of a grating of the instrument whose zero order lies at that step of the drive.
OpticalModel LegacyOptics(const LegacyDescription& description, const Grating& grating, long double zero);

class LegacyInstrument {
 public:
  explicit LegacyInstrument(const LegacyDescription& description, SimulationClock clock = SystemClock());

  // Transfers. False: nobody answers.

  bool Write(std::uint8_t device, std::uint8_t reg, std::uint8_t value);
  bool Read(std::uint8_t device, std::uint8_t reg, std::uint8_t& value);
  bool BurstWrite(std::uint8_t device, std::span<const std::uint8_t> bytes);

  // Looks from outside.

  const LegacyDescription& Description() const { return mDescription; }
  const LegacyEeprom& Memory() const { return mEeprom; }
  /// Wavelength in nm that truly falls on the detector's centre, or on a pixel (from 1) of it; none while the drive
  /// turns and where the grating diffracts nothing.
  std::optional<double> TrueCentre() const;
  std::optional<double> TrueWavelength(double pixel, const DetectorGeometry& detector) const;
  /// Everything that moves, as a JSON object; docs/simulation.md has its keys.
  std::string State() const;

 private:
  static constexpr std::size_t kLines = 5;

  /// The grating that stands in the beam.
  struct Beam {
    int grating = 0;
    long double fromZero = 0;
    OpticalModel model;
  };

  const Turret& MountedTurret() const;
  int Port() const;
  long double Zero(const Grating& grating, std::size_t index) const;
  Beam InBeam() const;
  int FilterInBeam() const;
  std::uint8_t SensorPattern() const;
  std::uint8_t PartStatus(std::uint8_t reg) const;
  bool ReadStatus(std::uint8_t reg, std::uint8_t& value) const;
  bool SetOutput(std::uint8_t value);
  bool TakesBursts() const;

  LegacyDescription mDescription;
  LegacyEeprom mEeprom;
  LegacyMotors mMotors;
  std::array<std::uint8_t, kLines> mLines{};
  std::optional<std::uint8_t> mSelected;
};

}  // namespace corvane::sim
