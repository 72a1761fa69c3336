// Cameras from several sources, detection of older spectrographs behind them, and the bus adapter of their driver.
#include "legacy/TCorvaneI2CControl.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "camera/TCorvaneDetection.h"
#include "legacy/TMCDI2CInterfaceWrapper.h"
#include "support/TemporaryDirectory.h"

namespace {

class FakeI2C final : public TI2CInterface {
 public:
  /// Register r from 1 reads as character r - 1 of text with this status; registers behind the text fail.
  explicit FakeI2C(std::string text, unsigned int status = 0) : mText(std::move(text)), mStatus(status) {}

  unsigned int Write(unsigned char address, unsigned char reg, unsigned char data) override {
    return Note({address, reg, data});
  }
  unsigned int Read(unsigned char address, unsigned char reg, unsigned char* data) override {
    *data = reg >= 1 && reg <= mText.size() ? static_cast<unsigned char>(mText[reg - 1U]) : 0;
    return Note({address, reg}) + (*data == 0 ? 1 : 0);
  }
  unsigned int BurstWrite(unsigned char address, long count, const unsigned char* data) override {
    return Note({address, count, *data});
  }
  unsigned int BurstRead(unsigned char address, long count, unsigned char* data) override {
    *data = 42;
    return Note({address, count});
  }

  /// The arguments of the calls so far.
  std::vector<std::vector<long>> mCalls;

 private:
  unsigned int Note(const std::vector<long>& call) {
    mCalls.push_back(call);
    return mStatus;
  }

  std::string mText;
  unsigned int mStatus;
};

class FakeSource final : public TI2CController {
 public:
  /// One device for each text.
  explicit FakeSource(const std::vector<std::string>& texts) : mBuses(texts.begin(), texts.end()) {}

  int GetNumberDevices() override { return static_cast<int>(mBuses.size()); }
  TI2CInterface* GetI2CInterface(int index) override { return &mBuses.at(static_cast<std::size_t>(index)); }
  TDetectorInterface* GetDetectorInterface(int) override { return &mDetector; }

 private:
  std::vector<FakeI2C> mBuses;
  TDetectorInterface mDetector;
};

TEST(Detection, ComparesFiveRegistersWithoutRegardToCaseUpToTheFirstFailure) {
  struct {
    FakeI2C bus;
    bool detected;
    long reads;
  } cases[] = {
      {FakeI2C("tiVANxxx"), true, 5}, {FakeI2C("tivan", 20002), true, 5},  // The camera SDK's own success.
      {FakeI2C("tivax"), false, 5},   {FakeI2C("ti"), false, 3},          {FakeI2C("tivan", 3), false, 1},
  };
  for (auto& [bus, detected, reads] : cases) {
    EXPECT_EQ(detected, TCorvaneDetection::Detect(&bus));
    const std::vector<std::vector<long>> all{{104, 1}, {104, 2}, {104, 3}, {104, 4}, {104, 5}};
    EXPECT_EQ(std::vector(all.begin(), all.begin() + reads), bus.mCalls);
  }
  EXPECT_FALSE(TCorvaneDetection::Detect(nullptr));
}

/// The list of all cameras over fake sources, made where there is no camera SDK.
class Cameras : public testing::Test {
 protected:
  void Add(const std::vector<std::string>& texts) {
    EXPECT_TRUE(mGlobal->AddController(std::make_unique<FakeSource>(texts)));
  }

  TemporaryDirectory mDirectory;
  ScopedWorkingDirectory mThere{mDirectory.Path()};
  std::unique_ptr<TGlobalControl> mGlobal = std::make_unique<TGlobalControl>(nullptr);
};

TEST_F(Cameras, AreNumberedThroughEightSourcesAtMost) {
  for (const std::size_t devices : {2U, 0U, 1U, 0U, 0U, 0U, 0U}) {
    Add(std::vector<std::string>(devices));
  }
  EXPECT_FALSE(mGlobal->AddController(std::make_unique<FakeSource>(std::vector<std::string>{"ninth"})));
  EXPECT_FALSE(mGlobal->AddController(nullptr));
  EXPECT_EQ(3, mGlobal->GetNumberDevices());
  EXPECT_EQ(mGlobal->GetDetectorInterface(0), mGlobal->GetDetectorInterface(1));
  EXPECT_NE(mGlobal->GetDetectorInterface(0), mGlobal->GetDetectorInterface(2));
  EXPECT_EQ(nullptr, mGlobal->GetSDKI2CInterface()) << "the camera SDK's bus only";
  const std::pair<int, std::pair<int, int>> addresses[] = {{1, {1, 1}},    {2, {3, 0}},         {3, {-1, -1}},
                                                           {-1, {-1, -1}}, {INT_MAX, {-1, -1}}, {INT_MIN, {-1, -1}}};
  for (const auto& [index, address] : addresses) {
    std::pair<int, int> found;
    mGlobal->GetDeviceAddress(index, found.first, found.second);
    EXPECT_EQ(address, found) << index;
  }
  EXPECT_TRUE(mGlobal->IsDeviceUSB(1)) << "on source 1";
  EXPECT_FALSE(mGlobal->IsDeviceUSB(2));
  EXPECT_FALSE(mGlobal->IsDeviceSDK(1));
}

TEST_F(Cameras, OnlyThoseWithASpectrographAreListed) {
  std::vector<std::string> texts(10, "TIVAN");
  texts[0] = "none";
  Add({});
  Add(texts);
  TGlobalControl& global = *mGlobal;
  TCorvaneI2CControl control(std::move(mGlobal));
  ASSERT_EQ(9, control.GetNumberDevices());
  for (int k = 0; k < 9; ++k) {
    EXPECT_EQ(global.GetI2CInterface(k + 1), control.GetI2CInterface(k));
  }
  EXPECT_TRUE(control.IsDeviceSDK(0)) << "on source 2";
  EXPECT_FALSE(control.IsDeviceUSB(0));
  for (const int unknown : {9, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(nullptr, control.GetI2CInterface(unknown));
    EXPECT_EQ(nullptr, control.GetDetectorInterface(unknown));
    EXPECT_FALSE(control.IsDeviceUSB(unknown));
    EXPECT_FALSE(control.IsDeviceSDK(unknown));
  }
}

TEST(BusAdapter, ForwardsAndTranslates) {
  FakeI2C good("abc");
  FakeI2C bad("abc", 5);
  TMCDI2CInterfaceWrapper adapter(nullptr);
  const std::pair<TI2CInterface*, unsigned int> cases[] = {{nullptr, 20081}, {&good, 20002}, {&bad, 20081}};
  for (const auto& [bus, status] : cases) {
    unsigned char byte = 0;
    adapter.SetInterface(bus);
    EXPECT_EQ(status, adapter.Write(1, 2, 3));
    EXPECT_EQ(status, adapter.Read(104, 2, &byte));
    EXPECT_EQ(bus == nullptr ? 0 : 'b', byte);
    EXPECT_EQ(status, adapter.BurstWrite(5, 1, &byte));
    EXPECT_EQ(status, adapter.BurstRead(6, 1, &byte));
    EXPECT_EQ(bus == nullptr ? 0 : 42, byte);
  }
  EXPECT_EQ((std::vector<std::vector<long>>{{1, 2, 3}, {104, 2}, {5, 1, 'b'}, {6, 1}}), good.mCalls);
}

}  // namespace
