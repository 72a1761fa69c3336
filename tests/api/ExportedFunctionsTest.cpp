// What the exported functions make of components that fail and of answers that no instrument should give, with a list
// of instruments that stands in for the library's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "api/CorvaneCIF.h"
#include "calibration/TCalibration.h"
#include "core/TCorvaneException.h"
#include "core/TSpectrographHardware.h"
#include "core/discovery/TSpectrographList.h"
#include "legacy/TCorvaneI2CControl.h"

namespace {

using testing::DoAll;
using testing::NiceMock;
using testing::Return;
using testing::SetArgReferee;
using testing::Throw;

class MockFocusMirror : public ISpectrographFocusMirror {
 public:
  MOCK_METHOD(void, SetMirrorFocus, (int), (override));
  MOCK_METHOD(int, GetMirrorFocus, (), (override));
  MOCK_METHOD(int, GetFocusMirrorMaxSteps, (), (override));
  MOCK_METHOD(void, Reset, (), (override));
  MOCK_METHOD(bool, FocusMirrorAutoFocus, (), (override));
  MOCK_METHOD(bool, FocusMirrorCancelAutoFocus, (), (override));
};

class MockGrating : public ISpectrographGrating {
 public:
  MOCK_METHOD(void, SetGrating, (int), (override));
  MOCK_METHOD(int, GetGrating, (), (override));
  MOCK_METHOD(void, Reset, (), (override));
  MOCK_METHOD(void, UnsafeReset, (), (override));
  MOCK_METHOD(int, GetNumberGratings, (), (override));
  MOCK_METHOD(void, GetGratingInfo, (int, float&, const char*&, float&, float&), (override));
  MOCK_METHOD(void, SetDetectorOffset, (int, int, int), (override));
  MOCK_METHOD(int, GetDetectorOffset, (int, int), (override));
  MOCK_METHOD(void, SetDetectorOffset, (int), (override));
  MOCK_METHOD(int, GetDetectorOffset, (), (override));
  MOCK_METHOD(void, SetGratingOffset, (int, int), (override));
  MOCK_METHOD(int, GetGratingOffset, (int), (override));
  MOCK_METHOD(void, GratingOffsetAutoAdjust, (), (override));
  MOCK_METHOD(void, GratingOffsetCancelAutoAdjust, (), (override));
  MOCK_METHOD(void, SetTurret, (int), (override));
  MOCK_METHOD(int, GetTurret, (), (override));
};

class MockHardware : public TSpectrographHardware {
 public:
  MockHardware() {
    mFocusMirror = std::make_unique<NiceMock<MockFocusMirror>>();
    mGrating = std::make_unique<NiceMock<MockGrating>>();
  }
  MOCK_METHOD(void, Initialise, (), (override));
  MockFocusMirror& Focus() { return static_cast<MockFocusMirror&>(*mFocusMirror); }
  MockGrating& Grating() { return static_cast<MockGrating&>(*mGrating); }
};

using Found = std::vector<std::unique_ptr<TSpectrographHardware>>;
/// What the search for instruments finds; what it throws, CorvaneInitialize meets.
std::function<Found()> gSearch;

}  // namespace

struct TSpectrographList::TSpectrographListItem {
  std::unique_ptr<TSpectrographHardware> hardware;
};

TSpectrographList::TSpectrographList(char* /*directory*/) {
  for (auto& hardware : gSearch()) {
    mItems.push_back({std::move(hardware)});
  }
}
TSpectrographList::~TSpectrographList() = default;
int TSpectrographList::GetNumberDevices() const {
  return static_cast<int>(mItems.size());
}
TSpectrographHardware* TSpectrographList::GetDevice(int index) const {
  return mItems.at(static_cast<std::size_t>(index)).hardware.get();
}
TCalibration* TSpectrographList::GetCalibration(int /*index*/) const {
  return nullptr;
}
Corvane* TSpectrographList::GetRawCorvane(int /*index*/) const {
  return nullptr;
}

namespace {

class ExportedFunctions : public testing::Test {
 protected:
  ExportedFunctions() {
    Find(1);
    EXPECT_EQ(CorvaneInitialize(nullptr), CORVANE_SUCCESS);
    ON_CALL(Hardware().Grating(), GetNumberGratings).WillByDefault(Return(3));
  }
  ~ExportedFunctions() override { CorvaneClose(); }

  /// What the next search makes of these: `count` instruments that do nothing, the first of them failing to initialise.
  void Find(int count, bool fails = false) {
    gSearch = [this, count, fails] {
      Found found;
      mHardware.clear();
      for (int i = 0; i < count; ++i) {
        auto hardware = std::make_unique<NiceMock<MockHardware>>();
        if (fails && i == 0) {
          EXPECT_CALL(*hardware, Initialise).WillOnce(Throw(kFailure));
        } else {
          EXPECT_CALL(*hardware, Initialise).Times(fails ? 0 : 1);
        }
        mHardware.push_back(hardware.get());
        found.push_back(std::move(hardware));
      }
      return found;
    };
  }
  MockHardware& Hardware() { return *mHardware.front(); }

  const TCorvaneException kFailure{7};
  std::vector<MockHardware*> mHardware;
};

TEST_F(ExportedFunctions, FocusTravelIsBounded) {
  const struct {
    int position, maximum, steps;
    unsigned int status;
  } moves[] = {{300, 1000, -300, CORVANE_SUCCESS},        {300, 1000, -301, CORVANE_P2_INVALID},
               {300, 1000, 700, CORVANE_SUCCESS},         {300, 1000, 701, CORVANE_P2_INVALID},
               {300, 1000, INT_MIN, CORVANE_P2_INVALID},  {300, 1000, INT_MAX, CORVANE_P2_INVALID},
               {INT_MIN, INT_MAX, 0, CORVANE_P2_INVALID}, {INT_MAX, INT_MIN, 0, CORVANE_P2_INVALID}};
  MockFocusMirror& focus = Hardware().Focus();
  for (const auto& move : moves) {
    EXPECT_CALL(focus, SetMirrorFocus(move.steps)).Times(move.status == CORVANE_SUCCESS ? 1 : 0);
    ON_CALL(focus, GetMirrorFocus).WillByDefault(Return(move.position));
    ON_CALL(focus, GetFocusMirrorMaxSteps).WillByDefault(Return(move.maximum));
    EXPECT_EQ(CorvaneSetFocusMirror(0, move.steps), move.status) << move.position << " " << move.steps;
  }
}

TEST_F(ExportedFunctions, AFailingReadOfTheFocusTravelReachesTheCaller) {
  MockFocusMirror& focus = Hardware().Focus();
  EXPECT_CALL(focus, GetMirrorFocus).WillOnce(Throw(kFailure));
  EXPECT_THROW(CorvaneSetFocusMirror(0, 1), TCorvaneException);
  EXPECT_CALL(focus, GetFocusMirrorMaxSteps).WillOnce(Throw(kFailure));
  EXPECT_THROW(CorvaneSetFocusMirror(0, 1), TCorvaneException);
}

TEST_F(ExportedFunctions, LimitsThemselvesAreAllowed) {
  for (const int sign : {-1, 1}) {
    EXPECT_EQ(CorvaneSetGratingOffset(0, 1, sign * 20000), CORVANE_SUCCESS) << sign;
    EXPECT_EQ(CorvaneSetDetectorOffset(0, sign * 240000), CORVANE_SUCCESS) << sign;
    EXPECT_EQ(CorvaneSetDetectorOffset(0, sign * 240001), CORVANE_P2_INVALID) << sign;
    EXPECT_EQ(CorvaneSetDetectorOffsetEx(0, 0, 0, sign * 240001), CORVANE_P4_INVALID) << sign;
  }
  for (const int end : {1, 3}) {
    EXPECT_EQ(CorvaneSetGrating(0, end), CORVANE_SUCCESS) << end;
    EXPECT_EQ(CorvaneSetTurret(0, end), CORVANE_SUCCESS) << end;
  }
}

TEST_F(ExportedFunctions, GratingInfoIsCutAndBounded) {
  const std::string tooLong(100, 'b');
  const std::string cut = std::string(31, 'b') + '\0' + std::string(8, '#');
  const struct {
    const char* text;
    float steps;
    int number;
    std::string blaze;
  } cases[] = {{"500", -2.9F, -2, "500" + std::string(1, '\0') + std::string(36, '#')},
               {tooLong.c_str(), 3e9F, INT_MAX, cut},
               {tooLong.c_str(), -3e9F, INT_MIN, cut},
               {nullptr, std::numeric_limits<float>::quiet_NaN(), 0, '\0' + std::string(39, '#')}};
  for (const auto& row : cases) {
    ON_CALL(Hardware().Grating(), GetGratingInfo)
        .WillByDefault(DoAll(SetArgReferee<2>(row.text), SetArgReferee<3>(row.steps), SetArgReferee<4>(row.steps)));
    std::string blaze(40, '#');
    int home = 7;
    int offset = 7;
    EXPECT_EQ(CorvaneGetGratingInfo(0, 3, nullptr, blaze.data(), &home, &offset), CORVANE_SUCCESS);
    EXPECT_EQ(home, row.number);
    EXPECT_EQ(offset, row.number);
    EXPECT_EQ(blaze, row.blaze);
  }
}

TEST_F(ExportedFunctions, TheUnsafeResetIsTheOrdinaryOne) {
  EXPECT_CALL(Hardware().Grating(), Reset).Times(1);
  EXPECT_CALL(Hardware().Grating(), UnsafeReset).Times(0);
  EXPECT_EQ(CorvaneWavelengthUnsafeReset(0), CORVANE_SUCCESS);
}

TEST_F(ExportedFunctions, DetectorOffsetsForAnyPortsSucceedWhateverBecomesOfThem) {
  MockGrating& grating = Hardware().Grating();
  EXPECT_CALL(grating, SetDetectorOffset(5, -6, 240000)).WillOnce(Throw(kFailure));
  EXPECT_EQ(CorvaneSetDetectorOffsetEx(0, 5, -6, 240000), CORVANE_SUCCESS);
  EXPECT_CALL(grating, GetDetectorOffset(1, 0)).WillOnce(Throw(kFailure));
  EXPECT_EQ(CorvaneGetDetectorOffsetEx(0, 1, 0, nullptr), CORVANE_SUCCESS);
}

TEST_F(ExportedFunctions, AGratingIsNotJudgedWhenTheirNumberCannotBeHad) {
  ON_CALL(Hardware().Grating(), GetNumberGratings).WillByDefault(Throw(kFailure));
  EXPECT_EQ(CorvaneSetGrating(0, 99), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneSetGratingOffset(0, 1, 99999), CORVANE_COMMUNICATION_ERROR);
}

TEST_F(ExportedFunctions, AFailedSearchLeavesTheEarlierStateWithoutItsDevices) {
  gSearch = []() -> Found { throw std::bad_alloc(); };
  EXPECT_EQ(CorvaneInitialize(nullptr), CORVANE_NOT_INITIALIZED);
  int count = 0;
  EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS) << "the flag stays";
  EXPECT_EQ(count, 1);
  EXPECT_EQ(CorvaneWavelengthReset(0), CORVANE_COMMUNICATION_ERROR) << "the earlier device is gone";
  EXPECT_EQ(CorvaneSetSlitCoefficients(0, 1, 2, 3, 4), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneSetFocusMirror(0, 1), CORVANE_COMMUNICATION_ERROR);
}

TEST_F(ExportedFunctions, AnInstrumentThatDoesNotInitialiseEndsTheSearchWithTheLibraryInitialised) {
  Find(3, true);
  EXPECT_EQ(CorvaneInitialize(nullptr), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(CorvaneWavelengthReset(2), CORVANE_SUCCESS);
}

}  // namespace
