// Every exported function on a device, with good arguments for an ordinary instrument. For tests that hold for all of
// them: the frame's checks, hostile contents, failing transfers.
#pragma once

#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <vector>

/// Result places that start with a recognisable pattern.
struct Outputs {
  static constexpr int kInt = 0x5A5A5A5A;
  static constexpr float kFloat = -12345.5F;

  std::array<int, 4> ints{kInt, kInt, kInt, kInt};
  std::array<float, 4> floats{kFloat, kFloat, kFloat, kFloat};
  std::array<char, 256> text = Filled();

  bool operator==(const Outputs&) const = default;
  bool Untouched() const { return *this == Outputs{}; }
  /// What was written, separated by commas: numbers with a point, whole numbers, the text.
  std::string Report() const {
    std::ostringstream report;
    const auto add = [&report](const auto& value) { report << (report.tellp() > 0 ? "," : "") << value; };
    const auto addWritten = [&add](const auto& values, auto untouched) {
      for (const auto value : values) {
        if (value != untouched) {
          add(value);
        }
      }
    };
    addWritten(floats, kFloat);
    addWritten(ints, kInt);
    if (text != Filled()) {
      add(text.data());
    }
    return report.str();
  }
  static std::array<char, 256> Filled() {
    std::array<char, 256> filled{};
    filled.fill('#');
    return filled;
  }
};

enum class Part { kCore, kCalibration, kSlit, kCoefficients, kFlipper, kFilter, kShutter, kFocus, kAccessory };

/// A call with its text: CALL(CorvaneGetFilter(d, &o.ints[0])), with the device d and the outputs o.
struct ExportedCall {
  const char* text;
  unsigned int (*run)(int d, Outputs& o);
};
// clang-format off
#define CALL(...) \
  {#__VA_ARGS__, []([[maybe_unused]] int d, [[maybe_unused]] Outputs& o) -> unsigned int { return __VA_ARGS__; }}
// clang-format on

/// Calls that succeed, and what they report.
struct Expectation {
  ExportedCall call;
  std::string report;
};

inline void ExpectReports(const std::vector<Expectation>& expectations) {
  for (const auto& [call, report] : expectations) {
    Outputs out;
    EXPECT_EQ(call.run(0, out), CORVANE_SUCCESS) << call.text;
    EXPECT_EQ(out.Report(), report) << call.text;
  }
}

struct ExportedFunction {
  ExportedCall call;
  Part part = Part::kCore;
  /// Clears its output before anything else.
  bool clearsFirst = false;
};

inline const std::vector<ExportedFunction>& EveryDeviceFunction() {
  static const std::vector<ExportedFunction> functions = {
      {CALL(CorvaneGetSerialNumber(d, o.text.data())), Part::kCore},
      // Offsets are stored whether or not the drive can follow: the wavelength is set behind them.
      {CALL(CorvaneSetTurret(d, 1)), Part::kCore},
      {CALL(CorvaneGetTurret(d, &o.ints[0])), Part::kCore},
      {CALL(CorvaneSetGratingOffset(d, 1, 5)), Part::kCore},
      {CALL(CorvaneGetGratingOffset(d, 1, &o.ints[0])), Part::kCore},
      {CALL(CorvaneGratingIsPresent(d, &o.ints[0])), Part::kCore},
      {CALL(CorvaneSetDetectorOffset(d, 7)), Part::kCore},
      {CALL(CorvaneGetDetectorOffset(d, &o.ints[0])), Part::kCore},
      {CALL(CorvaneSetDetectorOffsetPort2(d, 7)), Part::kCore},
      {CALL(CorvaneGetDetectorOffsetPort2(d, &o.ints[0])), Part::kCore},
      {CALL(CorvaneSetDetectorOffsetEx(d, 1, 1, 7)), Part::kCore},
      {CALL(CorvaneGetDetectorOffsetEx(d, 1, 1, &o.ints[0])), Part::kCore},
      {CALL(CorvaneSetWavelength(d, 500.0F)), Part::kCore},
      {CALL(CorvaneGetWavelength(d, &o.floats[0])), Part::kCore},
      {CALL(CorvaneGetDispersion(d, &o.floats[0], &o.floats[1])), Part::kCore},
      {CALL(CorvaneGetDispersionFor(d, 500.0F, &o.floats[0], &o.floats[1], 1)), Part::kCore},
      {CALL(CorvaneGetWavelengthLimits(d, 1, &o.floats[0], &o.floats[1])), Part::kCore},
      {CALL(CorvaneWavelengthIsPresent(d, &o.ints[0])), Part::kCore, true},
      {CALL(CorvaneSetGrating(d, 1)), Part::kCore},
      {CALL(CorvaneGetGrating(d, &o.ints[0])), Part::kCore},
      {CALL(CorvaneGetNumberGratings(d, &o.ints[0])), Part::kCore},
      {CALL(CorvaneGetGratingInfo(d, 1, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])), Part::kCore},
      {CALL(CorvaneEepromGetOpticalParams(d, &o.floats[0], &o.floats[1], &o.floats[2])), Part::kCore},
      {CALL(CorvaneSetPixelWidth(d, 13.5F)), Part::kCalibration},
      {CALL(CorvaneGetPixelWidth(d, &o.floats[0])), Part::kCalibration},
      {CALL(CorvaneSetNumberPixels(d, 2048)), Part::kCalibration},
      {CALL(CorvaneGetNumberPixels(d, &o.ints[0])), Part::kCalibration},
      {CALL(CorvaneGetCalibration(d, o.floats.data(), 4)), Part::kCalibration},
      {CALL(CorvaneGetPixelCalibrationCoefficients(d, &o.floats[0], &o.floats[1], &o.floats[2], &o.floats[3])),
       Part::kCalibration},
      {CALL(CorvaneSetAutoSlitWidth(d, 1, 100.0F)), Part::kSlit},
      {CALL(CorvaneGetAutoSlitWidth(d, 1, &o.floats[0])), Part::kSlit},
      {CALL(CorvaneAutoSlitReset(d, 1)), Part::kSlit},
      {CALL(CorvaneAutoSlitIsPresent(d, 1, &o.ints[0])), Part::kSlit},
      {CALL(CorvaneSetSlit(d, 100.0F)), Part::kSlit},
      {CALL(CorvaneGetSlit(d, &o.floats[0])), Part::kSlit},
      {CALL(CorvaneSlitReset(d)), Part::kSlit},
      {CALL(CorvaneSlitIsPresent(d, &o.ints[0])), Part::kSlit},
      {CALL(CorvaneSetOutputSlit(d, 100.0F)), Part::kSlit},
      {CALL(CorvaneGetOutputSlit(d, &o.floats[0])), Part::kSlit},
      {CALL(CorvaneOutputSlitReset(d)), Part::kSlit},
      {CALL(CorvaneOutputSlitIsPresent(d, &o.ints[0])), Part::kSlit},
      {CALL(CorvaneSetAutoSlitCoefficients(d, 1, 1, 2, 3, 4)), Part::kCoefficients},
      {CALL(CorvaneGetAutoSlitCoefficients(d, 1, &o.ints[0], &o.ints[1], &o.ints[2], &o.ints[3])), Part::kCoefficients},
      {CALL(CorvaneSetSlitCoefficients(d, 1, 2, 3, 4)), Part::kCoefficients},
      {CALL(CorvaneGetSlitCoefficients(d, &o.ints[0], &o.ints[1], &o.ints[2], &o.ints[3])), Part::kCoefficients},
      {CALL(CorvaneSetFlipperMirror(d, 2, 1)), Part::kFlipper},
      {CALL(CorvaneGetFlipperMirror(d, 2, &o.ints[0])), Part::kFlipper},
      {CALL(CorvaneFlipperMirrorReset(d, 2)), Part::kFlipper},
      {CALL(CorvaneFlipperMirrorIsPresent(d, 2, &o.ints[0])), Part::kFlipper},
      {CALL(CorvaneGetCCDLimits(d, 0, &o.floats[0], &o.floats[1])), Part::kFlipper},
      {CALL(CorvaneSetPort(d, 1)), Part::kFlipper},
      {CALL(CorvaneGetPort(d, &o.ints[0])), Part::kFlipper},
      {CALL(CorvaneFlipperReset(d)), Part::kFlipper},
      {CALL(CorvaneFlipperIsPresent(d, &o.ints[0])), Part::kFlipper},
      {CALL(CorvaneSetFilter(d, 1)), Part::kFilter},
      {CALL(CorvaneGetFilter(d, &o.ints[0])), Part::kFilter},
      {CALL(CorvaneFilterReset(d)), Part::kFilter},
      {CALL(CorvaneGetFilterInfo(d, 1, o.text.data())), Part::kFilter},
      {CALL(CorvaneSetFilterInfo(d, 1, "OG570")), Part::kFilter},
      {CALL(CorvaneFilterIsPresent(d, &o.ints[0])), Part::kFilter},
      {CALL(CorvaneSetShutter(d, 1)), Part::kShutter},
      {CALL(CorvaneGetShutter(d, &o.ints[0])), Part::kShutter},
      {CALL(CorvaneIsModePossible(d, 1, &o.ints[0])), Part::kShutter},
      {CALL(CorvaneLoadShutterValues(d)), Part::kShutter},
      {CALL(CorvaneExternalChange(d)), Part::kShutter},
      {CALL(CorvaneShutterIsPresent(d, &o.ints[0])), Part::kShutter},
      {CALL(CorvaneSetFocusMirror(d, 1)), Part::kFocus},
      {CALL(CorvaneGetFocusMirror(d, &o.ints[0])), Part::kFocus},
      {CALL(CorvaneGetFocusMirrorMaxSteps(d, &o.ints[0])), Part::kFocus},
      {CALL(CorvaneFocusMirrorReset(d)), Part::kFocus},
      {CALL(CorvaneFocusMirrorIsPresent(d, &o.ints[0])), Part::kFocus},
      {CALL(CorvaneSetAccessory(d, 1, 1)), Part::kAccessory},
      {CALL(CorvaneGetAccessoryState(d, 1, &o.ints[0])), Part::kAccessory},
      {CALL(CorvaneAccessoryIsPresent(d, &o.ints[0])), Part::kAccessory},
      // At zero order nothing calibrates: these come last.
      {CALL(CorvaneGotoZeroOrder(d)), Part::kCore},
      {CALL(CorvaneAtZeroOrder(d, &o.ints[0])), Part::kCore, true},
      {CALL(CorvaneWavelengthReset(d)), Part::kCore},
      {CALL(CorvaneWavelengthUnsafeReset(d)), Part::kCore},
  };
  return functions;
}
