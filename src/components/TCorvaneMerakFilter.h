// The filter wheel of a controller instrument; filters count from 0 here and from 1 at the controller. A wheel that is
// not fitted is deliberately not an error: there is nothing to turn. The labels belong to the EEPROM record and can be
// had without a wheel.
//
// Failures throw TCorvaneException with the controller's code: merak::kDeviceNotOpen without a record, merak::kIoError
// for a reply without a number.
#pragma once

#include "core/ISpectrographFilter.h"
#include "core/TCVNAcquisitionAborter.h"

class TMerakOrbis;

class TCorvaneMerakFilter final : public ISpectrographFilter {
 public:
  /// The controller is borrowed and outlives the component.
  explicit TCorvaneMerakFilter(TMerakOrbis& controller) : mController(controller) {}

  /// A name in the controller's peripheral list contains "FIL"; false when the list cannot be had.
  bool IsPresent() override;
  /// "FILTER". Busy meanwhile. Nothing without a wheel.
  void SetFilter(int filter) override;
  /// "FILTER?"; 0 without a wheel.
  int GetFilter() override;
  /// "FILTERHOME". Busy meanwhile. Nothing without a wheel.
  void Reset() override;
  /// The whole label, at most 239 characters and a terminator; maxLength is deliberately not consulted, so the buffer
  /// holds 240 bytes. "" for a filter that the record does not know.
  void GetFilterInfo(int filter, char* text, int maxLength) override;
  /// Kept in the record, which reaches the instrument when it is closed; the clients are told in any case.
  /// TTivanMerakEeprom::kOutOfRange for a filter that the record does not know.
  void SetFilterInfo(int filter, const char* text) override;

 private:
  TMerakOrbis& mController;
  TCVNAcquisitionAborter mAborter{false};
};
