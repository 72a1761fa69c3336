// The accessory lines of a controller instrument: output bits in the upper four bits of the controller's port state,
// input bits in the lower four.
//
// Failures throw TCorvaneException with the controller's code, merak::kIoError for a reply without a number.
#pragma once

#include "core/ISpectrographAccessory.h"
#include "core/TCVNAcquisitionAborter.h"

class TMerakOrbis;

class TCorvaneMerakAccessory final : public ISpectrographAccessory {
 public:
  /// The controller is borrowed and outlives the component.
  explicit TCorvaneMerakAccessory(TMerakOrbis& controller) : mController(controller) {}

  /// False when the model code in the controller's system information is "SX", which has no accessory port. True when
  /// the system information cannot be had.
  bool IsPresent() override;
  /// Sets or clears the output bit of a line, 0 to 2; nothing for other lines. "PORT_INPUT?", then "PORT_OUTPUT" with
  /// the output bits alone. The other bits are what was read, so after a failed read nothing is written. The clients
  /// are told in any case.
  void SetAccessory(int line, bool state) override;
  /// Lines 0 to 2: output bit. From 3 on: bit line - 2 of the port state, false beyond its 32 bits. "PORT_INPUT?".
  bool GetAccessoryState(int line) override;

 private:
  TMerakOrbis& mController;
  TCVNAcquisitionAborter mAborter{false};
};
