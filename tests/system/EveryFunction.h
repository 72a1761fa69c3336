// Every exported function on a device, with good arguments for an ordinary instrument. For tests that hold for all of
// them: the frame's checks, a failing instrument, functions of parts that are not fitted.
#pragma once

#include <CorvaneCIF.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

/// Result places that start with a recognisable pattern.
struct Outputs {
  static constexpr int kInt = 0x5A5A5A5A;
  static constexpr float kFloat = -12345.5F;

  std::array<int, 4> ints{kInt, kInt, kInt, kInt};
  std::array<float, 4> floats{kFloat, kFloat, kFloat, kFloat};
  std::array<char, 256> text = Filled();

  bool Untouched() const {
    return ints == std::array<int, 4>{kInt, kInt, kInt, kInt} &&
           floats == std::array<float, 4>{kFloat, kFloat, kFloat, kFloat} && text == Filled();
  }

  static std::array<char, 256> Filled() {
    std::array<char, 256> filled{};
    filled.fill('#');
    return filled;
  }
};

enum class Part { kCore, kCalibration, kSlit, kCoefficients, kFlipper, kFilter, kShutter, kFocus, kAccessory };

struct ExportedFunction {
  std::string name;
  Part part;
  std::function<unsigned int(int device, Outputs& out)> call;
  /// Clears its output before anything else.
  bool clearsFirst = false;
};

inline const std::vector<ExportedFunction>& EveryDeviceFunction() {
  using O = Outputs;
  static const std::vector<ExportedFunction> functions = {
      {"GetSerialNumber", Part::kCore, [](int d, O& o) { return CorvaneGetSerialNumber(d, o.text.data()); }},
      {"SetWavelength", Part::kCore, [](int d, O&) { return CorvaneSetWavelength(d, 500.0F); }},
      {"GetWavelength", Part::kCore, [](int d, O& o) { return CorvaneGetWavelength(d, &o.floats[0]); }},
      {"GotoZeroOrder", Part::kCore, [](int d, O&) { return CorvaneGotoZeroOrder(d); }},
      {"AtZeroOrder", Part::kCore, [](int d, O& o) { return CorvaneAtZeroOrder(d, &o.ints[0]); }, true},
      {"GetDispersion", Part::kCore, [](int d, O& o) { return CorvaneGetDispersion(d, &o.floats[0], &o.floats[1]); }},
      {"GetDispersionFor", Part::kCore,
       [](int d, O& o) { return CorvaneGetDispersionFor(d, 500.0F, &o.floats[0], &o.floats[1], 1); }},
      {"GetWavelengthLimits", Part::kCore,
       [](int d, O& o) { return CorvaneGetWavelengthLimits(d, 1, &o.floats[0], &o.floats[1]); }},
      {"WavelengthIsPresent", Part::kCore, [](int d, O& o) { return CorvaneWavelengthIsPresent(d, &o.ints[0]); }, true},
      {"SetGrating", Part::kCore, [](int d, O&) { return CorvaneSetGrating(d, 1); }},
      {"GetGrating", Part::kCore, [](int d, O& o) { return CorvaneGetGrating(d, &o.ints[0]); }},
      {"GetNumberGratings", Part::kCore, [](int d, O& o) { return CorvaneGetNumberGratings(d, &o.ints[0]); }},
      {"GetGratingInfo", Part::kCore,
       [](int d, O& o) { return CorvaneGetGratingInfo(d, 1, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1]); }},
      {"WavelengthReset", Part::kCore, [](int d, O&) { return CorvaneWavelengthReset(d); }},
      {"WavelengthUnsafeReset", Part::kCore, [](int d, O&) { return CorvaneWavelengthUnsafeReset(d); }},
      {"SetTurret", Part::kCore, [](int d, O&) { return CorvaneSetTurret(d, 1); }},
      {"GetTurret", Part::kCore, [](int d, O& o) { return CorvaneGetTurret(d, &o.ints[0]); }},
      {"SetGratingOffset", Part::kCore, [](int d, O&) { return CorvaneSetGratingOffset(d, 1, 5); }},
      {"GetGratingOffset", Part::kCore, [](int d, O& o) { return CorvaneGetGratingOffset(d, 1, &o.ints[0]); }},
      {"GratingIsPresent", Part::kCore, [](int d, O& o) { return CorvaneGratingIsPresent(d, &o.ints[0]); }},
      {"SetDetectorOffset", Part::kCore, [](int d, O&) { return CorvaneSetDetectorOffset(d, 7); }},
      {"GetDetectorOffset", Part::kCore, [](int d, O& o) { return CorvaneGetDetectorOffset(d, &o.ints[0]); }},
      {"SetDetectorOffsetPort2", Part::kCore, [](int d, O&) { return CorvaneSetDetectorOffsetPort2(d, 7); }},
      {"GetDetectorOffsetPort2", Part::kCore, [](int d, O& o) { return CorvaneGetDetectorOffsetPort2(d, &o.ints[0]); }},
      {"SetDetectorOffsetEx", Part::kCore, [](int d, O&) { return CorvaneSetDetectorOffsetEx(d, 1, 1, 7); }},
      {"GetDetectorOffsetEx", Part::kCore, [](int d, O& o) { return CorvaneGetDetectorOffsetEx(d, 1, 1, &o.ints[0]); }},
      {"EepromGetOpticalParams", Part::kCore,
       [](int d, O& o) { return CorvaneEepromGetOpticalParams(d, &o.floats[0], &o.floats[1], &o.floats[2]); }},
      {"SetPixelWidth", Part::kCalibration, [](int d, O&) { return CorvaneSetPixelWidth(d, 13.5F); }},
      {"GetPixelWidth", Part::kCalibration, [](int d, O& o) { return CorvaneGetPixelWidth(d, &o.floats[0]); }},
      {"SetNumberPixels", Part::kCalibration, [](int d, O&) { return CorvaneSetNumberPixels(d, 2048); }},
      {"GetNumberPixels", Part::kCalibration, [](int d, O& o) { return CorvaneGetNumberPixels(d, &o.ints[0]); }},
      {"GetCalibration", Part::kCalibration, [](int d, O& o) { return CorvaneGetCalibration(d, o.floats.data(), 4); }},
      {"GetPixelCalibrationCoefficients", Part::kCalibration,
       [](int d, O& o) {
         return CorvaneGetPixelCalibrationCoefficients(d, &o.floats[0], &o.floats[1], &o.floats[2], &o.floats[3]);
       }},
      {"SetAutoSlitWidth", Part::kSlit, [](int d, O&) { return CorvaneSetAutoSlitWidth(d, 1, 100.0F); }},
      {"GetAutoSlitWidth", Part::kSlit, [](int d, O& o) { return CorvaneGetAutoSlitWidth(d, 1, &o.floats[0]); }},
      {"AutoSlitReset", Part::kSlit, [](int d, O&) { return CorvaneAutoSlitReset(d, 1); }},
      {"AutoSlitIsPresent", Part::kSlit, [](int d, O& o) { return CorvaneAutoSlitIsPresent(d, 1, &o.ints[0]); }},
      {"SetSlit", Part::kSlit, [](int d, O&) { return CorvaneSetSlit(d, 100.0F); }},
      {"GetSlit", Part::kSlit, [](int d, O& o) { return CorvaneGetSlit(d, &o.floats[0]); }},
      {"SlitReset", Part::kSlit, [](int d, O&) { return CorvaneSlitReset(d); }},
      {"SlitIsPresent", Part::kSlit, [](int d, O& o) { return CorvaneSlitIsPresent(d, &o.ints[0]); }},
      {"SetOutputSlit", Part::kSlit, [](int d, O&) { return CorvaneSetOutputSlit(d, 100.0F); }},
      {"GetOutputSlit", Part::kSlit, [](int d, O& o) { return CorvaneGetOutputSlit(d, &o.floats[0]); }},
      {"OutputSlitReset", Part::kSlit, [](int d, O&) { return CorvaneOutputSlitReset(d); }},
      {"OutputSlitIsPresent", Part::kSlit, [](int d, O& o) { return CorvaneOutputSlitIsPresent(d, &o.ints[0]); }},
      {"SetAutoSlitCoefficients", Part::kCoefficients,
       [](int d, O&) { return CorvaneSetAutoSlitCoefficients(d, 1, 1, 2, 3, 4); }},
      {"GetAutoSlitCoefficients", Part::kCoefficients,
       [](int d, O& o) {
         return CorvaneGetAutoSlitCoefficients(d, 1, &o.ints[0], &o.ints[1], &o.ints[2], &o.ints[3]);
       }},
      {"SetSlitCoefficients", Part::kCoefficients, [](int d, O&) { return CorvaneSetSlitCoefficients(d, 1, 2, 3, 4); }},
      {"GetSlitCoefficients", Part::kCoefficients,
       [](int d, O& o) { return CorvaneGetSlitCoefficients(d, &o.ints[0], &o.ints[1], &o.ints[2], &o.ints[3]); }},
      {"SetFlipperMirror", Part::kFlipper, [](int d, O&) { return CorvaneSetFlipperMirror(d, 2, 1); }},
      {"GetFlipperMirror", Part::kFlipper, [](int d, O& o) { return CorvaneGetFlipperMirror(d, 2, &o.ints[0]); }},
      {"FlipperMirrorReset", Part::kFlipper, [](int d, O&) { return CorvaneFlipperMirrorReset(d, 2); }},
      {"FlipperMirrorIsPresent", Part::kFlipper,
       [](int d, O& o) { return CorvaneFlipperMirrorIsPresent(d, 2, &o.ints[0]); }},
      {"GetCCDLimits", Part::kFlipper,
       [](int d, O& o) { return CorvaneGetCCDLimits(d, 0, &o.floats[0], &o.floats[1]); }},
      {"SetPort", Part::kFlipper, [](int d, O&) { return CorvaneSetPort(d, 1); }},
      {"GetPort", Part::kFlipper, [](int d, O& o) { return CorvaneGetPort(d, &o.ints[0]); }},
      {"FlipperReset", Part::kFlipper, [](int d, O&) { return CorvaneFlipperReset(d); }},
      {"FlipperIsPresent", Part::kFlipper, [](int d, O& o) { return CorvaneFlipperIsPresent(d, &o.ints[0]); }},
      {"SetFilter", Part::kFilter, [](int d, O&) { return CorvaneSetFilter(d, 1); }},
      {"GetFilter", Part::kFilter, [](int d, O& o) { return CorvaneGetFilter(d, &o.ints[0]); }},
      {"FilterReset", Part::kFilter, [](int d, O&) { return CorvaneFilterReset(d); }},
      {"GetFilterInfo", Part::kFilter, [](int d, O& o) { return CorvaneGetFilterInfo(d, 1, o.text.data()); }},
      {"SetFilterInfo", Part::kFilter, [](int d, O&) { return CorvaneSetFilterInfo(d, 1, "OG570"); }},
      {"FilterIsPresent", Part::kFilter, [](int d, O& o) { return CorvaneFilterIsPresent(d, &o.ints[0]); }},
      {"SetShutter", Part::kShutter, [](int d, O&) { return CorvaneSetShutter(d, 1); }},
      {"GetShutter", Part::kShutter, [](int d, O& o) { return CorvaneGetShutter(d, &o.ints[0]); }},
      {"IsModePossible", Part::kShutter, [](int d, O& o) { return CorvaneIsModePossible(d, 1, &o.ints[0]); }},
      {"LoadShutterValues", Part::kShutter, [](int d, O&) { return CorvaneLoadShutterValues(d); }},
      {"ExternalChange", Part::kShutter, [](int d, O&) { return CorvaneExternalChange(d); }},
      {"ShutterIsPresent", Part::kShutter, [](int d, O& o) { return CorvaneShutterIsPresent(d, &o.ints[0]); }},
      {"SetFocusMirror", Part::kFocus, [](int d, O&) { return CorvaneSetFocusMirror(d, 1); }},
      {"GetFocusMirror", Part::kFocus, [](int d, O& o) { return CorvaneGetFocusMirror(d, &o.ints[0]); }},
      {"GetFocusMirrorMaxSteps", Part::kFocus,
       [](int d, O& o) { return CorvaneGetFocusMirrorMaxSteps(d, &o.ints[0]); }},
      {"FocusMirrorReset", Part::kFocus, [](int d, O&) { return CorvaneFocusMirrorReset(d); }},
      {"FocusMirrorIsPresent", Part::kFocus, [](int d, O& o) { return CorvaneFocusMirrorIsPresent(d, &o.ints[0]); }},
      {"SetAccessory", Part::kAccessory, [](int d, O&) { return CorvaneSetAccessory(d, 1, 1); }},
      {"GetAccessoryState", Part::kAccessory, [](int d, O& o) { return CorvaneGetAccessoryState(d, 1, &o.ints[0]); }},
      {"AccessoryIsPresent", Part::kAccessory, [](int d, O& o) { return CorvaneAccessoryIsPresent(d, &o.ints[0]); }},
  };
  return functions;
}
