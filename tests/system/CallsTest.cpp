// Every exported function on every model, row by row: the status it answers, what it reports, and the lines by which
// the instrument hears of it; with all parts fitted, with none, and with bad arguments.
#include <algorithm>
#include <climits>
#include <cmath>
#include <sstream>

#include "InstrumentFixture.h"
#include "support/EveryFunction.h"

using nlohmann::json;

namespace {

struct Row {
  ExportedCall call;
  /// Separated by semicolons. Those of the reply cache do not count on an SX, which is asked for its peripherals once
  /// per opening and for its gratings every few seconds.
  const char* lines;
  const char* result = "";  ///< outputs that were written, separated by commas
  unsigned int status = CORVANE_SUCCESS;
};

class Calls : public EveryModel {
 protected:
  template <std::size_t Count>
  void Run(const Row (&rows)[Count]) {
    for (const Row& row : rows) {
      const std::size_t before = Lab().Lines().size();
      Outputs out;
      EXPECT_EQ(row.call.run(0, out), row.status) << row.call.text;
      EXPECT_EQ(out.Report(), row.result) << row.call.text;
      EXPECT_EQ(Uncached(LinesSince(before)), Uncached(Split(row.lines))) << row.call.text;
    }
  }

  void ExpectPeripheralsAskedOnce() {
    if (GetParam().keepsTexts) {
      const std::vector<std::string> lines = Lab().Lines();
      EXPECT_EQ(std::count(lines.begin(), lines.end(), "PERIPHERAL?"), 1);
    }
  }

  void OpenFull() {
    json parts = {{"slits",
                   {{"SI1", {{"width", 50}}},
                    {"SI2", {{"mode", "SLIT-I24"}}},
                    {"SO1", {{"width", 60}}},
                    {"SO2", {{"mode", "SLIT-X"}}}}},
                  {"focusMirror", {{"totalSteps", 1000}}},
                  {"portInputs", 5}};
    OpenModel({{"firmware", "2.70"}, {"parts", parts}});
  }

 private:
  std::string Uncached(std::vector<std::string> lines) const {
    if (GetParam().keepsTexts) {
      std::erase_if(lines, [](const std::string& line) { return line == "PERIPHERAL?" || line == "GRATINGS?"; });
    }
    return Joined(lines);
  }

  static std::vector<std::string> Split(const std::string& lines) {
    std::vector<std::string> split;
    std::istringstream text(lines);
    for (std::string line; std::getline(text, line, ';');) {
      split.push_back(line);
    }
    return split;
  }
};

INSTANTIATE_FOR_EVERY_MODEL(Calls);

constexpr unsigned int kFailure = CORVANE_COMMUNICATION_ERROR;

TEST_P(Calls, ToWavelengthGratingsAndTurret) {
  ASSERT_NO_FATAL_FAILURE(OpenFull());
  constexpr Row kRows[] = {
      {CALL(CorvaneSetWavelength(d, 612.125F)), "GRATING?;MOVETO 612.1250"},
      {CALL(CorvaneSetWavelength(d, 550.0F)), "MOVETO 550.0000"},  // the grating is remembered
      {CALL(CorvaneSetWavelength(d, -0.001F)), "", "", CORVANE_P2_INVALID},
      {CALL(CorvaneSetWavelength(d, std::nanf(""))), "", "", CORVANE_P2_INVALID},
      {CALL(CorvaneGetWavelength(d, &o.floats[0])), "POSITION?", "550"},
      {CALL(CorvaneWavelengthIsPresent(d, &o.ints[0])), "", "1"},
      {CALL(CorvaneGetDispersion(d, &o.floats[0], &o.floats[1])), "POSITION?", "500,600"},
      {CALL(CorvaneGetDispersionFor(d, 600.0F, &o.floats[0], &o.floats[1], INT_MIN)), "", "550,650"},
      {CALL(CorvaneSetGrating(d, 2)), "GRATING 2"},
      {CALL(CorvaneGetGrating(d, &o.ints[0])), "", "2"},
      {CALL(CorvaneGratingIsPresent(d, &o.ints[0])), "", "1"},
      {CALL(CorvaneGotoZeroOrder(d)), "MOVETO 0.0000"},
      {CALL(CorvaneAtZeroOrder(d, &o.ints[0])), "POSITION?", "1"},
      {CALL(CorvaneWavelengthReset(d)), "GRATING 1;GRATINGHOME"},
      {CALL(CorvaneWavelengthUnsafeReset(d)), "GRATING 1;GRATINGHOME"},
      {CALL(CorvaneGetTurret(d, &o.ints[0])), "", "1"},
      {CALL(CorvaneSetDetectorOffsetEx(d, 2, -1, -240000)), "POSITION?;MOVETO 0.0000"},  // ports are not checked
      {CALL(CorvaneGetDetectorOffsetEx(d, 0, 0, &o.ints[0])), "", ""},                   // never written
      {CALL(CorvaneGetDetectorOffset(d, &o.ints[0])), "", "0"},
      // Where nothing is asked for, nothing is written.
      {CALL(CorvaneGetWavelength(d, nullptr)), "POSITION?"},
      {CALL(CorvaneAtZeroOrder(d, nullptr)), "POSITION?"},
      {CALL(CorvaneGetFilter(d, nullptr)), "PERIPHERAL?;FILTER?"},
      {CALL(CorvaneEepromGetOpticalParams(d, nullptr, nullptr, &o.floats[0])), "", "6.7"},
  };
  Run(kRows);
}

TEST_P(Calls, ToPartsThatEveryModelCanHave) {
  ASSERT_NO_FATAL_FAILURE(OpenFull());
  constexpr Row kRows[] = {
      {CALL(CorvaneSetAutoSlitWidth(d, 1, 99.9F)), "SLIT_MODE? 1;SLIT_WIDTH 1, 99"},
      {CALL(CorvaneSetAutoSlitWidth(d, 1, 2500.1F)), "SLIT_MODE? 1", "", CORVANE_P3_INVALID},
      {CALL(CorvaneSetAutoSlitWidth(d, 2, 24000.0F)), "SLIT_MODE? 4;SLIT_WIDTH 4, 24000"},
      {CALL(CorvaneGetAutoSlitWidth(d, 2, &o.floats[0])), "SLIT_WIDTH? 4", "24000"},
      {CALL(CorvaneAutoSlitReset(d, 4)), "SLITHOME 2"},
      {CALL(CorvaneAutoSlitIsPresent(d, 4, &o.ints[0])), "PERIPHERAL?", "1"},
      {CALL(CorvaneSetSlit(d, 10.0F)), "SLIT_MODE? 1;SLIT_WIDTH 1, 10"},
      {CALL(CorvaneGetSlit(d, &o.floats[0])), "SLIT_WIDTH? 1", "10"},
      {CALL(CorvaneSlitReset(d)), "SLITHOME 1"},
      {CALL(CorvaneSlitIsPresent(d, &o.ints[0])), "PERIPHERAL?", "1"},
      {CALL(CorvaneSetOutputSlit(d, 2500.0F)), "SLIT_MODE? 3;SLIT_WIDTH 3, 2500"},
      {CALL(CorvaneGetOutputSlit(d, &o.floats[0])), "SLIT_WIDTH? 3", "2500"},
      {CALL(CorvaneOutputSlitReset(d)), "SLITHOME 3"},
      {CALL(CorvaneOutputSlitIsPresent(d, &o.ints[0])), "PERIPHERAL?", "1"},
      {CALL(CorvaneSetAutoSlitCoefficients(d, 1, 1, 2, 3, 4)), "", "", CORVANE_NO_LEGACY_DRIVER},

      {CALL(CorvaneSetFlipperMirror(d, 2, 1)), "PERIPHERAL?;PERIPHERAL?;EXITPORT 1"},
      {CALL(CorvaneGetFlipperMirror(d, 2, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?;EXITPORT?", "1"},
      {CALL(CorvaneSetPort(d, 0)), "PERIPHERAL?;PERIPHERAL?;EXITPORT 0"},
      {CALL(CorvaneGetPort(d, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?;EXITPORT?", "0"},
      {CALL(CorvaneFlipperMirrorReset(d, 2)), "PERIPHERAL?;PERIPHERAL?;EXITPORT 1"},
      {CALL(CorvaneFlipperReset(d)), "PERIPHERAL?;PERIPHERAL?;EXITPORT 1"},
      {CALL(CorvaneFlipperMirrorIsPresent(d, 2, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?", "1"},
      {CALL(CorvaneFlipperIsPresent(d, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?", "1"},
      {CALL(CorvaneGetCCDLimits(d, 0, &o.floats[0], &o.floats[1])), "PERIPHERAL?;PERIPHERAL?", "180,1000"},
      {CALL(CorvaneGetCCDLimits(d, 1, &o.floats[0], &o.floats[1])), "PERIPHERAL?;PERIPHERAL?", "0,2000"},

      {CALL(CorvaneSetFilter(d, 6)), "PERIPHERAL?;FILTER 6"},
      {CALL(CorvaneGetFilter(d, &o.ints[0])), "PERIPHERAL?;FILTER?", "6"},
      {CALL(CorvaneFilterReset(d)), "PERIPHERAL?;FILTERHOME"},
      {CALL(CorvaneFilterIsPresent(d, &o.ints[0])), "PERIPHERAL?", "1"},
      {CALL(CorvaneGetFilterInfo(d, 2, o.text.data())), "", "Filter 2"},
      {CALL(CorvaneSetFilterInfo(d, 2, "OG570")), ""},
      {CALL(CorvaneGetFilterInfo(d, 2, o.text.data())), "", "OG570"},

      {CALL(CorvaneGetFocusMirrorMaxSteps(d, &o.ints[0])), "PERIPHERAL?;FOCUS_TOTALSTEPS?", "1000"},
      {CALL(CorvaneSetFocusMirror(d, 250)),
       "PERIPHERAL?;FOCUS_TOTALSTEPS?;PERIPHERAL?;FOCUS?;PERIPHERAL?;MOVE_FOCUS 0,250"},
      {CALL(CorvaneSetFocusMirror(d, -25)),
       "PERIPHERAL?;FOCUS_TOTALSTEPS?;PERIPHERAL?;FOCUS?;PERIPHERAL?;MOVE_FOCUS 1,25"},
      {CALL(CorvaneGetFocusMirror(d, &o.ints[0])), "PERIPHERAL?;FOCUS?", "225"},
      {CALL(CorvaneSetFocusMirror(d, -226)), "PERIPHERAL?;FOCUS_TOTALSTEPS?;PERIPHERAL?;FOCUS?", "",
       CORVANE_P2_INVALID},
      {CALL(CorvaneSetFocusMirror(d, INT_MIN)), "PERIPHERAL?;FOCUS_TOTALSTEPS?;PERIPHERAL?;FOCUS?", "",
       CORVANE_P2_INVALID},
      {CALL(CorvaneSetFocusMirror(d, 775)),
       "PERIPHERAL?;FOCUS_TOTALSTEPS?;PERIPHERAL?;FOCUS?;PERIPHERAL?;MOVE_FOCUS 0,775"},
      {CALL(CorvaneSetFocusMirror(d, 0)), "PERIPHERAL?;FOCUS_TOTALSTEPS?;PERIPHERAL?;FOCUS?;PERIPHERAL?"},
      {CALL(CorvaneFocusMirrorReset(d)), "PERIPHERAL?;FOCUS_HOME"},
      {CALL(CorvaneFocusMirrorIsPresent(d, &o.ints[0])), "PERIPHERAL?", "1"},

      // A controller has no shutter to offer, whatever it knows of shutter modes.
      {CALL(CorvaneShutterIsPresent(d, &o.ints[0])), "", "0"},
      {CALL(CorvaneSetShutter(d, 1)), "", "", kFailure},
      {CALL(CorvaneGetShutter(d, &o.ints[0])), "", "", kFailure},
      {CALL(CorvaneIsModePossible(d, 1, &o.ints[0])), "", "", kFailure},
      {CALL(CorvaneLoadShutterValues(d)), "", "", kFailure},
      {CALL(CorvaneExternalChange(d)), "", "", kFailure},
  };
  Run(kRows);
  ExpectPeripheralsAskedOnce();
}

TEST_P(Calls, ToTheSecondInputPortAndTheAccessoryLines) {
  ASSERT_NO_FATAL_FAILURE(OpenFull());
  constexpr Row kWith[] = {
      {CALL(CorvaneSetFlipperMirror(d, 1, 1)), "PERIPHERAL?;PERIPHERAL?;ENTRANCEPORT 1"},
      {CALL(CorvaneGetFlipperMirror(d, 1, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?;ENTRANCEPORT?", "1"},
      {CALL(CorvaneFlipperMirrorReset(d, 1)), "PERIPHERAL?;PERIPHERAL?;ENTRANCEPORT 1"},
      {CALL(CorvaneFlipperMirrorIsPresent(d, 1, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?", "1"},
      {CALL(CorvaneAccessoryIsPresent(d, &o.ints[0])), "SYSTEMINFO?", "1"},
      {CALL(CorvaneSetAccessory(d, 1, 1)), "PORT_INPUT?;PORT_OUTPUT 2"},
      {CALL(CorvaneSetAccessory(d, 2, 7)), "PORT_INPUT?;PORT_OUTPUT 6"},  // the inputs never reach the outputs
      {CALL(CorvaneSetAccessory(d, 1, -1)), "PORT_INPUT?;PORT_OUTPUT 4"},
      {CALL(CorvaneGetAccessoryState(d, 1, &o.ints[0])), "PORT_INPUT?", "0"},
      {CALL(CorvaneGetAccessoryState(d, 2, &o.ints[0])), "PORT_INPUT?", "1"},
  };
  constexpr Row kWithout[] = {
      {CALL(CorvaneSetFlipperMirror(d, 1, 1)), "", "", kFailure},
      {CALL(CorvaneGetFlipperMirror(d, 1, &o.ints[0])), "", "", kFailure},
      {CALL(CorvaneFlipperMirrorReset(d, 1)), "", "", kFailure},
      {CALL(CorvaneFlipperMirrorIsPresent(d, 1, &o.ints[0])), "", "0"},
      {CALL(CorvaneAccessoryIsPresent(d, &o.ints[0])), "SYSTEMINFO?", "0"},
      {CALL(CorvaneSetAccessory(d, 1, 1)), "PORT_INPUT?", "", kFailure},
      {CALL(CorvaneGetAccessoryState(d, 1, &o.ints[0])), "PORT_INPUT?", "", kFailure},
  };
  if (GetParam().keepsTexts) {
    Run(kWithout);
  } else {
    Run(kWith);
  }
}

TEST_P(Calls, ToPartsThatAreNotFitted) {
  ASSERT_NO_FATAL_FAILURE(OpenModel({{"parts",
                                      {{"slits", json::object()},
                                       {"filterWheel", false},
                                       {"focusMirror", nullptr},
                                       {"entranceFlipper", false},
                                       {"exitFlipper", false}}}}));
  constexpr Row kRows[] = {
      {CALL(CorvaneSetAutoSlitWidth(d, 2, 100.0F)), "SLIT_MODE? 4;SLIT_WIDTH 4, 100", "", kFailure},
      {CALL(CorvaneGetAutoSlitWidth(d, 1, &o.floats[0])), "SLIT_WIDTH? 1", "", kFailure},
      {CALL(CorvaneAutoSlitIsPresent(d, 1, &o.ints[0])), "PERIPHERAL?", "0"},
      {CALL(CorvaneSetFlipperMirror(d, 2, 1)), "PERIPHERAL?;PERIPHERAL?", "", kFailure},
      {CALL(CorvaneGetPort(d, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?", "", kFailure},
      {CALL(CorvaneGetCCDLimits(d, 0, &o.floats[0], &o.floats[1])), "PERIPHERAL?;PERIPHERAL?", "", kFailure},
      {CALL(CorvaneFlipperIsPresent(d, &o.ints[0])), "PERIPHERAL?;PERIPHERAL?", "0"},
      {CALL(CorvaneSetFilter(d, 3)), "PERIPHERAL?"},  // silent
      {CALL(CorvaneGetFilter(d, &o.ints[0])), "PERIPHERAL?", "1"},
      {CALL(CorvaneFilterReset(d)), "PERIPHERAL?"},
      {CALL(CorvaneFilterIsPresent(d, &o.ints[0])), "PERIPHERAL?", "0"},
      {CALL(CorvaneSetFocusMirror(d, 0)), "PERIPHERAL?;PERIPHERAL?;PERIPHERAL?"},
      {CALL(CorvaneSetFocusMirror(d, 1)), "PERIPHERAL?;PERIPHERAL?", "", CORVANE_P2_INVALID},
      {CALL(CorvaneGetFocusMirror(d, &o.ints[0])), "PERIPHERAL?", "0"},
      {CALL(CorvaneGetFocusMirrorMaxSteps(d, &o.ints[0])), "PERIPHERAL?", "0"},
      {CALL(CorvaneFocusMirrorReset(d)), "PERIPHERAL?"},
      {CALL(CorvaneFocusMirrorIsPresent(d, &o.ints[0])), "PERIPHERAL?", "0"},
  };
  Run(kRows);
  ExpectPeripheralsAskedOnce();
}

TEST_P(Calls, WithoutSlitModesOnlyTheWidthIsSentAndNoSlitIsWide) {
  ASSERT_NO_FATAL_FAILURE(OpenModel({{"firmware", "2.69"}, {"parts", {{"slits", {{"SI1", {{"mode", "SLIT-I24"}}}}}}}}));
  constexpr Row kRows[] = {
      {CALL(CorvaneSetAutoSlitWidth(d, 1, 2500.0F)), "SLIT_WIDTH 1, 2500"},
      {CALL(CorvaneSetAutoSlitWidth(d, 1, 2501.0F)), "", "", CORVANE_P3_INVALID},
      {CALL(CorvaneGetAutoSlitWidth(d, 1, &o.floats[0])), "SLIT_WIDTH? 1", "2500"},
  };
  Run(kRows);
}

TEST_P(Calls, BadArgumentsAreRefusedBeforeAnythingIsSent) {
  ASSERT_NO_FATAL_FAILURE(OpenFull());
  constexpr unsigned int kSecond = CORVANE_P2_INVALID;
  constexpr unsigned int kThird = CORVANE_P3_INVALID;
  constexpr unsigned int kFourth = CORVANE_P4_INVALID;
  constexpr unsigned int kFifth = CORVANE_P5_INVALID;
  constexpr Row kRows[] = {
      {CALL(CorvaneGetSerialNumber(d, nullptr)), "", "", kSecond},
      {CALL(CorvaneSetGrating(d, 0)), "", "", kSecond},
      {CALL(CorvaneSetGrating(d, 4)), "", "", kSecond},
      {CALL(CorvaneGetGratingInfo(d, INT_MAX, &o.floats[0], o.text.data(), &o.ints[0], &o.ints[1])), "", "", kSecond},
      {CALL(CorvaneGetGratingOffset(d, INT_MIN, &o.ints[0])), "", "", kSecond},
      {CALL(CorvaneGetWavelengthLimits(d, 4, &o.floats[0], &o.floats[1])), "", "", kSecond},
      {CALL(CorvaneSetGratingOffset(d, -1, 99999)), "", "", kSecond},  // the first bad argument counts
      {CALL(CorvaneSetGratingOffset(d, 1, -20001)), "", "", kThird},
      {CALL(CorvaneSetGratingOffset(d, 1, 20001)), "", "", kThird},
      {CALL(CorvaneSetTurret(d, 0)), "", "", kSecond},
      {CALL(CorvaneSetTurret(d, 4)), "", "", kSecond},
      {CALL(CorvaneSetDetectorOffset(d, -240001)), "", "", kSecond},
      {CALL(CorvaneSetDetectorOffsetEx(d, 0, 0, 240001)), "", "", kFourth},
      {CALL(CorvaneSetAutoSlitWidth(d, 0, 9.0F)), "", "", kSecond},
      {CALL(CorvaneGetAutoSlitWidth(d, 1, nullptr)), "", "", kThird},
      {CALL(CorvaneAutoSlitReset(d, 5)), "", "", kSecond},
      {CALL(CorvaneSetAutoSlitWidth(d, 2, 24000.1F)), "", "", kThird},
      {CALL(CorvaneSetSlit(d, 9.9F)), "", "", kSecond},  // the short form counts its own arguments
      {CALL(CorvaneSetOutputSlit(d, std::nanf(""))), "", "", kSecond},
      {CALL(CorvaneSetAutoSlitCoefficients(d, 0, 1, 2, 3, 4)), "", "", kSecond},
      {CALL(CorvaneSetAutoSlitCoefficients(d, 2, 1, 2, 3, 4)), "", "", kSecond},
      {CALL(CorvaneFlipperMirrorIsPresent(d, 3, &o.ints[0])), "", "", kSecond},
      {CALL(CorvaneFlipperMirrorReset(d, 0)), "", "", kSecond},
      {CALL(CorvaneSetFlipperMirror(d, 1, -1)), "", "", kThird},
      {CALL(CorvaneSetFlipperMirror(d, 1, 2)), "", "", kThird},
      {CALL(CorvaneGetCCDLimits(d, 2, nullptr, nullptr)), "", "", kSecond},
      {CALL(CorvaneGetCCDLimits(d, 0, &o.floats[0], nullptr)), "", "", kFourth},
      {CALL(CorvaneSetPort(d, -1)), "", "", kSecond},
      {CALL(CorvaneSetPort(d, 2)), "", "", kSecond},
      {CALL(CorvaneSetFilter(d, 0)), "", "", kSecond},
      {CALL(CorvaneSetFilter(d, 7)), "", "", kSecond},
      {CALL(CorvaneGetFilterInfo(d, 0, o.text.data())), "", "", kSecond},
      {CALL(CorvaneSetFilterInfo(d, 1, nullptr)), "", "", kThird},
      {CALL(CorvaneSetShutter(d, -1)), "", "", kSecond},
      {CALL(CorvaneSetShutter(d, 2)), "", "", kSecond},
      {CALL(CorvaneIsModePossible(d, -1, &o.ints[0])), "", "", kSecond},
      {CALL(CorvaneSetAccessory(d, 0, 1)), "", "", kSecond},
      {CALL(CorvaneGetAccessoryState(d, 3, &o.ints[0])), "", "", kSecond},
      {CALL(CorvaneSetPixelWidth(d, 0.99F)), "", "", kSecond},
      {CALL(CorvaneSetPixelWidth(d, std::nanf(""))), "", "", kSecond},
      {CALL(CorvaneSetNumberPixels(d, 0)), "", "", kSecond},
      {CALL(CorvaneGetCalibration(d, o.floats.data(), 0)), "", "", kThird},
      {CALL(CorvaneGetPixelCalibrationCoefficients(d, nullptr, &o.floats[0], &o.floats[1], &o.floats[2])), "", "",
       kSecond},
      {CALL(CorvaneGetPixelCalibrationCoefficients(d, &o.floats[0], &o.floats[1], &o.floats[2], nullptr)), "", "",
       kFifth},
  };
  Run(kRows);
}

}  // namespace
