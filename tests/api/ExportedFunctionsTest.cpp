// What the exported functions ask of the components, and what they make of answers and failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <stdexcept>

#include "RecordingHardware.h"
#include "api/CorvaneCIF.h"
#include "api/IndexMapping.h"
#include "api/LibraryState.h"

namespace {

using testing::ElementsAre;

class ExportedFunctions : public testing::Test {
 protected:
  void SetUp() override {
    SetSearch([this] {
      auto hardware = std::make_unique<RecordingHardware>(mRecord);
      mHardware = hardware.get();
      std::vector<std::unique_ptr<TSpectrographHardware>> found;
      found.push_back(std::move(hardware));
      return found;
    });
    ASSERT_EQ(CorvaneInitialize(nullptr), CORVANE_SUCCESS);
    mRecord.calls.clear();
  }
  void TearDown() override { CorvaneClose(); }

  /// The calls since the last time.
  std::vector<std::string> Calls() { return std::exchange(mRecord.calls, {}); }

  Record mRecord;
  RecordingHardware* mHardware = nullptr;
};

// ---- Slits ---------------------------------------------------------------------------------------------------------

TEST_F(ExportedFunctions, SlitNumbersReachTheirPositions) {
  for (int slit = 1; slit <= 4; ++slit) {
    const std::string name = "slit" + std::to_string(slit - 1);
    EXPECT_EQ(CorvaneSetAutoSlitWidth(0, slit, 99.5F), CORVANE_SUCCESS);
    EXPECT_THAT(Calls(), ElementsAre(name + ".GetSlitMode", name + ".SetSlit 99.5"));
    float width = 0;
    EXPECT_EQ(CorvaneGetAutoSlitWidth(0, slit, &width), CORVANE_SUCCESS);
    EXPECT_EQ(width, 125.0F);
    EXPECT_EQ(CorvaneAutoSlitReset(0, slit), CORVANE_SUCCESS);
    EXPECT_THAT(Calls(), ElementsAre(name + ".GetSlit", name + ".Reset"));
    int present = 0;
    EXPECT_EQ(CorvaneAutoSlitIsPresent(0, slit, &present), CORVANE_SUCCESS);
    EXPECT_EQ(present, 1);
  }
  float width = 0;
  EXPECT_EQ(CorvaneSetSlit(0, 50.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetSlit(0, &width), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSlitReset(0), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("slit0.GetSlitMode", "slit0.SetSlit 50", "slit0.GetSlit", "slit0.Reset"));
  EXPECT_EQ(CorvaneSetOutputSlit(0, 50.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetOutputSlit(0, &width), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneOutputSlitReset(0), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("slit2.GetSlitMode", "slit2.SetSlit 50", "slit2.GetSlit", "slit2.Reset"));
}

TEST_F(ExportedFunctions, OnlyTheWideSlitOpensBeyondTheCommonRange) {
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 10.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 2500.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 2500.1F), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetSlit(0, 2500.1F), CORVANE_P2_INVALID);
  mHardware->Slit(0).mode = "slit-i24";
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 24000.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 24000.1F), CORVANE_P3_INVALID);
  EXPECT_EQ(CorvaneSetAutoSlitWidth(0, 1, 9.9F), CORVANE_P3_INVALID);
  Calls();

  mRecord.failing = {"slit0.GetSlitMode"};
  EXPECT_EQ(CorvaneSetSlit(0, 2500.0F), CORVANE_SUCCESS) << "no mode is the common mode";
  EXPECT_EQ(CorvaneSetSlit(0, 2500.1F), CORVANE_P2_INVALID);
  EXPECT_THAT(Calls(), ElementsAre("slit0.GetSlitMode", "slit0.SetSlit 2500", "slit0.GetSlitMode"));
}

// ---- Flipper mirrors -----------------------------------------------------------------------------------------------

TEST_F(ExportedFunctions, FlipperAndPortNumbersReachTheirPositions) {
  for (int flipper = 1; flipper <= 2; ++flipper) {
    const std::string name = "flipper" + std::to_string(flipper - 1);
    int port = 0;
    EXPECT_EQ(CorvaneSetFlipperMirror(0, flipper, 0), CORVANE_SUCCESS);
    EXPECT_EQ(CorvaneSetFlipperMirror(0, flipper, 1), CORVANE_SUCCESS);
    EXPECT_EQ(CorvaneGetFlipperMirror(0, flipper, &port), CORVANE_SUCCESS);
    EXPECT_EQ(CorvaneFlipperMirrorReset(0, flipper), CORVANE_SUCCESS);
    EXPECT_EQ(port, 1);
    EXPECT_THAT(Calls(), ElementsAre(name + ".SetFlipperPort 0", name + ".SetFlipperPort 1", name + ".GetPort",
                                     name + ".Reset"));
  }
  int port = 0;
  float low = 0;
  float high = 0;
  EXPECT_EQ(CorvaneSetPort(0, 1), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetPort(0, &port), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneFlipperReset(0), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetCCDLimits(0, 1, &low, &high), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("flipper1.SetFlipperPort 1", "flipper1.GetPort", "flipper1.Reset",
                                   "flipper1.GetCCDLimits 1"));
  EXPECT_EQ(low, 180.0F);
  EXPECT_EQ(high, 1000.0F);
}

TEST(IndexMapping, ThrowsForNumbersThatItDoesNotKnow) {
  EXPECT_EQ(SDKSlitIndexToSlitPosition(1), 0);
  EXPECT_EQ(SDKSlitIndexToSlitPosition(4), 3);
  EXPECT_EQ(SDKFlipperIndexToFlipperPosition(2), 1);
  EXPECT_EQ(SDKPortIndexToPortPosition(0), 0);
  for (const auto& map : std::initializer_list<std::function<void()>>{
           [] { SDKSlitIndexToSlitPosition(0); }, [] { SDKSlitIndexToSlitPosition(5); },
           [] { SDKFlipperIndexToFlipperPosition(0); }, [] { SDKFlipperIndexToFlipperPosition(3); },
           [] { SDKPortIndexToPortPosition(2); }, [] { SDKPortIndexToPortPosition(-1); }}) {
    try {
      map();
      ADD_FAILURE() << "no exception";
    } catch (const TCorvaneException& exception) {
      EXPECT_EQ(exception.Code(), 1);
    }
  }
}

// ---- Filter, shutter, accessory ------------------------------------------------------------------------------------

TEST_F(ExportedFunctions, FilterShutterAndAccessoryGetTheirNumbers) {
  int value = 0;
  EXPECT_EQ(CorvaneSetFilter(0, 6), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetFilter(0, &value), CORVANE_SUCCESS);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(CorvaneSetFilterInfo(0, 2, "OG570"), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("filter.SetFilter 5", "filter.GetFilter", "filter.SetFilterInfo 1 OG570"));
  std::string info(260, '#');
  EXPECT_EQ(CorvaneGetFilterInfo(0, 1, info.data()), CORVANE_SUCCESS);
  EXPECT_EQ(info, std::string(239, 'x') + '\0' + std::string(20, '#')) << "at most 239 characters and a terminator";
  EXPECT_THAT(Calls(), ElementsAre("filter.GetFilterInfo 0 239"));

  EXPECT_EQ(CorvaneSetShutter(0, 1), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneIsModePossible(0, 1, &value), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneExternalChange(0), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneLoadShutterValues(0), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("shutter.SetExternalShutter 1", "shutter.IsExternalModePossible 1",
                                   "shutter.ExternalChange", "shutter.LoadShutterValues"));
  EXPECT_EQ(CorvaneSetAccessory(0, 2, 5), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetAccessory(0, 1, -1), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetAccessoryState(0, 1, &value), CORVANE_SUCCESS);
  EXPECT_EQ(value, 1);
  EXPECT_THAT(Calls(),
              ElementsAre("accessory.SetAccessory 2 1", "accessory.SetAccessory 1 0", "accessory.GetAccessoryState 1"));
}

// ---- Focus mirror --------------------------------------------------------------------------------------------------

TEST_F(ExportedFunctions, FocusMovesStayWithinTheTravel) {
  EXPECT_EQ(CorvaneSetFocusMirror(0, -300), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 700), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), testing::Contains("focus.SetMirrorFocus 700"));
  for (const int steps : {-301, 701, INT_MIN, INT_MAX}) {
    EXPECT_EQ(CorvaneSetFocusMirror(0, steps), CORVANE_P2_INVALID);
  }
  EXPECT_THAT(Calls(), testing::Not(testing::Contains(testing::StartsWith("focus.SetMirrorFocus"))));
  // The ends of what an instrument can answer.
  mHardware->FocusMirror().position = INT_MIN;
  mHardware->FocusMirror().maximum = INT_MAX;
  EXPECT_EQ(CorvaneSetFocusMirror(0, 0), CORVANE_P2_INVALID) << "below the lower end";
  mHardware->FocusMirror().position = INT_MAX;
  mHardware->FocusMirror().maximum = INT_MIN;
  EXPECT_EQ(CorvaneSetFocusMirror(0, 0), CORVANE_P2_INVALID) << "above the upper end";
}

TEST_F(ExportedFunctions, AFailingReadOfTheFocusTravelReachesTheCaller) {
  for (const char* operation : {"focus.GetFocusMirrorMaxSteps", "focus.GetMirrorFocus"}) {
    mRecord.failing = {operation};
    EXPECT_THROW(CorvaneSetFocusMirror(0, 1), std::exception) << operation;
  }
  mRecord.failing = {"focus.SetMirrorFocus"};
  EXPECT_EQ(CorvaneSetFocusMirror(0, 1), CORVANE_COMMUNICATION_ERROR) << "the move itself is guarded";
}

// ---- Gratings ------------------------------------------------------------------------------------------------------

TEST_F(ExportedFunctions, BothResetsAreTheOrdinaryOne) {
  EXPECT_EQ(CorvaneWavelengthReset(0), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneWavelengthUnsafeReset(0), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("grating.Reset", "grating.Reset"));
}

TEST_F(ExportedFunctions, GratingInfoIsCutAndBounded) {
  int home = 0;
  int offset = 0;
  std::string blaze(40, '#');
  EXPECT_EQ(CorvaneGetGratingInfo(0, 3, nullptr, blaze.data(), &home, &offset), CORVANE_SUCCESS);
  EXPECT_EQ(home, 7);
  EXPECT_EQ(offset, -2) << "toward zero";
  EXPECT_STREQ(blaze.c_str(), "500");

  const std::string tooLong(100, 'b');
  mHardware->Grating().blazeText = tooLong.c_str();
  for (const auto& [steps, expected] : std::initializer_list<std::pair<float, int>>{
           {3e9F, INT_MAX}, {-3e9F, INT_MIN}, {std::numeric_limits<float>::quiet_NaN(), 0}}) {
    mHardware->Grating().homeSteps = steps;
    blaze.assign(40, '#');
    EXPECT_EQ(CorvaneGetGratingInfo(0, 1, nullptr, blaze.data(), &home, nullptr), CORVANE_SUCCESS);
    EXPECT_EQ(home, expected);
    EXPECT_EQ(blaze, std::string(31, 'b') + '\0' + std::string(8, '#'));
  }
  mHardware->Grating().blazeText = nullptr;
  EXPECT_EQ(CorvaneGetGratingInfo(0, 1, nullptr, blaze.data(), nullptr, nullptr), CORVANE_SUCCESS);
  EXPECT_STREQ(blaze.c_str(), "");
}

TEST_F(ExportedFunctions, TheExFunctionsAnswerSuccessEvenWhenTheInstrumentFails) {
  mRecord.failing = {"grating.SetDetectorOffset", "grating.GetDetectorOffset"};
  int offset = 77;
  EXPECT_EQ(CorvaneSetDetectorOffsetEx(0, 5, -6, 240000), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetDetectorOffsetEx(0, 1, 0, &offset), CORVANE_SUCCESS);
  EXPECT_THAT(Calls(), ElementsAre("grating.SetDetectorOffset 5 -6 240000", "grating.GetDetectorOffset 1 0"));
  EXPECT_EQ(CorvaneSetDetectorOffset(0, 1), CORVANE_COMMUNICATION_ERROR);
  mRecord.failing.clear();
  EXPECT_EQ(CorvaneGetDetectorOffsetEx(0, 1, 0, &offset), CORVANE_SUCCESS);
  EXPECT_EQ(offset, 77) << "the value read is dropped";
}

TEST_F(ExportedFunctions, AFailingCountOfGratingsComesBeforeEveryOtherArgument) {
  mRecord.failing = {"grating.GetNumberGratings"};
  EXPECT_EQ(CorvaneSetGrating(0, 99), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneSetGratingOffset(0, 1, 99999), CORVANE_COMMUNICATION_ERROR);
}

// ---- Failing searches and instruments ------------------------------------------------------------------------------

TEST_F(ExportedFunctions, AFailedSearchLeavesTheEarlierStateWithoutItsDevices) {
  SetSearch([]() -> std::vector<std::unique_ptr<TSpectrographHardware>> { throw std::bad_alloc(); });
  EXPECT_EQ(CorvaneInitialize(nullptr), CORVANE_NOT_INITIALIZED);
  int count = 0;
  EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS) << "the flag stays";
  EXPECT_EQ(count, 1);
  EXPECT_EQ(CorvaneWavelengthReset(0), CORVANE_COMMUNICATION_ERROR) << "the earlier device is gone";
  EXPECT_EQ(CorvaneSetSlitCoefficients(0, 1, 2, 3, 4), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 1), CORVANE_COMMUNICATION_ERROR);
  CorvaneClose();
  EXPECT_EQ(CorvaneInitialize(nullptr), CORVANE_NOT_INITIALIZED);
  EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_NOT_INITIALIZED) << "it was not set before either";
}

TEST_F(ExportedFunctions, AnInstrumentThatDoesNotInitialiseLeavesTheLibraryInitialised) {
  SetSearch([this] {
    std::vector<std::unique_ptr<TSpectrographHardware>> found;
    for (int i = 0; i < 3; ++i) {
      found.push_back(std::make_unique<RecordingHardware>(mRecord));
    }
    return found;
  });
  mRecord.failing = {"Initialise"};
  EXPECT_EQ(CorvaneInitialize(nullptr), CORVANE_COMMUNICATION_ERROR);
  EXPECT_THAT(Calls(), ElementsAre("Initialise")) << "the later ones are not tried";
  int count = 0;
  EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(CorvaneWavelengthReset(2), CORVANE_SUCCESS);
}

TEST_F(ExportedFunctions, AnExceptionOfAnyTypeIsACommunicationError) {
  EXPECT_EQ(CorvaneGetPixelWidth(0, nullptr), CORVANE_COMMUNICATION_ERROR) << "no calibration";
  EXPECT_EQ(CorvaneGetWavelength(0, nullptr), CORVANE_COMMUNICATION_ERROR) << "no wavelength drive";
  EXPECT_EQ(CorvaneSetSlitCoefficients(0, 1, 2, 3, 4), CORVANE_NO_LEGACY_DRIVER);
}

}  // namespace
