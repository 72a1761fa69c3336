// One simulated instrument, attached one way: the same checks run on every attachment. Each test program links one
// implementation (I2cLaboratory.cpp, UsbLaboratory.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

class Laboratory {
 public:
  virtual ~Laboratory() = default;

  /// What CorvaneInitialize gets.
  virtual std::string Directory() const = 0;
  /// Protocol lines that the instrument received so far, without carriage returns.
  virtual std::vector<std::string> Lines() const = 0;
  /// One byte of the instrument's memory, from 1. Also after CorvaneClose.
  virtual std::uint8_t Peek(int address) const = 0;
  /// Wavelength (nm) that truly falls on a pixel of the scenario's detector (from 1), and on its centre.
  virtual double TrueWavelength(double pixel) const = 0;
  virtual double TrueCentre() const = 0;
  /// A reply fault as in a scenario's "faults" list.
  virtual void ArmReplyFault(const nlohmann::json& fault) = 0;
  /// Lines that opening costs beyond the record and the hardware's own question.
  virtual std::size_t OpeningLines() const = 0;
  /// Whether the library can ask a camera for the detector's geometry.
  virtual bool HasDetector() const = 0;
};

/// scenario: as in corvane-sim.json, save that the instrument stands under "instrument".
std::unique_ptr<Laboratory> MakeLaboratory(nlohmann::json scenario);
