// Rulings, blaze and greatest wavelength of the active turret's gratings (0-based), from the EEPROM record.
#pragma once

#include <string>

class TMerakOrbis;

class TCorvaneMerakGratingInfo {
 public:
  /// The controller is borrowed.
  explicit TCorvaneMerakGratingInfo(TMerakOrbis& controller) : mController(controller) {}

  /// Per mm.
  float GetLines(int grating) const;
  std::string GetBlaze(int grating) const;
  /// nm; 0 for a grating without rulings.
  float GetMaxWave(int grating) const;

 private:
  TMerakOrbis& mController;
};
