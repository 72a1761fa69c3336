// The search for instruments: cameras from several sources, older instruments behind them, then controllers.
#include "core/discovery/TSpectrographList.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "calibration/TCalibration.h"
#include "legacy/Corvane.h"
#include "legacy/TCorvaneDetection.h"
#include "legacy/TCorvaneI2CControl.h"
#include "support/ScriptedBridge.h"
#include "support/SimulatedLegacyBus.h"
#include "support/TemporaryDirectory.h"

namespace {

using Buses = std::vector<TI2CInterface*>;

struct FakeDetector final : TDetectorInterface {
  unsigned int GetNumberOfPixels(int& count) override {
    count = pixels;
    return 0;
  }
  int pixels = 0;
};

/// Cameras of 1000, 1001, ... pixels; a null bus has no older instrument. The last thing they do is to call `atEnd`.
struct FakeCameras final : TI2CController {
  explicit FakeCameras(
      Buses itsBuses, std::function<void()> itsEnd = [] {})
      : buses(std::move(itsBuses)), atEnd(std::move(itsEnd)), detectors(buses.size()) {}
  ~FakeCameras() override { atEnd(); }
  FakeCameras(const FakeCameras&) = delete;
  FakeCameras& operator=(const FakeCameras&) = delete;
  int GetNumberDevices() override { return static_cast<int>(buses.size()); }
  TI2CInterface* GetI2CInterface(int index) override { return buses.at(static_cast<std::size_t>(index)); }
  TDetectorInterface* GetDetectorInterface(int index) override {
    FakeDetector& detector = detectors.at(static_cast<std::size_t>(index));
    detector.pixels = 1000 + index;
    return &detector;
  }
  Buses buses;
  std::function<void()> atEnd;
  std::vector<FakeDetector> detectors;
};

TEST(Detection, ComparesFiveRegistersWithoutRegardToCaseUpToTheFirstFailure) {
  struct Case {
    const char* text;
    unsigned int status;  // of a transfer
    int failingTransfer;  // from 1
    bool detected;
    int reads;
  };
  const Case cases[] = {{"tiVANxxx", 0, 0, true, 5},
                        {"tivan", 20002, 0, true, 5},
                        {"tivax", 0, 0, false, 5},
                        {"tivan", 0, 3, false, 3},
                        {"tivan", 3, 0, false, 1}};
  for (const Case& test : cases) {
    SimulatedLegacyBus bus;
    bus.Program(0, 1, test.text);
    bus.success = test.status;
    bus.failingTransfer = test.failingTransfer;
    EXPECT_EQ(TCorvaneDetection::Detect(&bus), test.detected) << test.text;
    EXPECT_EQ(bus.TakeTransfers(), test.reads) << test.text;
  }
}

class SpectrographList : public testing::Test {
 protected:
  SpectrographList() {
    mFirst.success = 0;
    mSecond.success = 0;
    mController.SetValue("SYSTEMINFO", "TIVAN,CV-SX,SN-77,x,V2.80");
  }
  TemporaryDirectory mDirectory;  // where there is no camera SDK
  ScopedWorkingDirectory mThere{mDirectory.Path()};
  SimulatedLegacyBus mFirst;
  SimulatedLegacyBus mSecond;
  ScriptedController mController;
  ScriptedBridge mBridge;
  std::unique_ptr<TGlobalControl> mGlobal = std::make_unique<TGlobalControl>(nullptr);
};

TEST_F(SpectrographList, CamerasAreNumberedThroughEightSources) {
  for (const Buses& buses : {Buses{nullptr, &mFirst}, Buses{}, Buses{&mSecond}, Buses{}, Buses{}, Buses{}, Buses{}}) {
    EXPECT_TRUE(mGlobal->AddController(std::make_unique<FakeCameras>(buses)));
  }
  EXPECT_FALSE(mGlobal->AddController(std::make_unique<FakeCameras>(Buses{&mFirst}))) << "the ninth";
  EXPECT_EQ(mGlobal->GetNumberDevices(), 3);
  using SourceAndCamera = std::pair<int, int>;
  const std::pair<int, SourceAndCamera> addresses[] = {{1, {1, 1}}, {2, {3, 0}}, {3, {-1, -1}}, {INT_MIN, {-1, -1}}};
  for (const auto& [index, expected] : addresses) {
    SourceAndCamera found;
    mGlobal->GetDeviceAddress(index, found.first, found.second);
    EXPECT_EQ(found, expected) << index;
  }
}

TEST_F(SpectrographList, CamerasWithAnOlderInstrumentAreListed) {
  for (const Buses& buses : {Buses{nullptr, &mFirst}, Buses{}, Buses{&mSecond}}) {
    mGlobal->AddController(std::make_unique<FakeCameras>(buses));
  }
  TCorvaneI2CControl control(std::move(mGlobal));
  ASSERT_EQ(control.GetNumberDevices(), 2);
  EXPECT_EQ(control.GetI2CInterface(0), &mFirst);
  EXPECT_EQ(control.GetI2CInterface(1), &mSecond);
  EXPECT_TRUE(control.IsDeviceUSB(0)) << "sources 0 and 1";
  EXPECT_FALSE(control.IsDeviceUSB(1));
  for (const int unknown : {2, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(control.GetI2CInterface(unknown), nullptr);
    EXPECT_EQ(control.GetDetectorInterface(unknown), nullptr);
    EXPECT_FALSE(control.IsDeviceUSB(unknown));
    EXPECT_FALSE(control.IsDeviceSDK(unknown));
  }
}

TEST_F(SpectrographList, OlderInstrumentsComeFirstEachWithItsDriverAndItsCamera) {
  mFirst.Program(0, 31, "A");
  mSecond.Program(0, 31, "B");
  const ScriptedBridge::Device& device = mBridge.Add(ScriptedBridge::kSxProduct, mController);
  mGlobal->AddController(std::make_unique<FakeCameras>(Buses{nullptr, &mFirst, nullptr, &mSecond}));
  TSpectrographList list(std::make_unique<TCorvaneI2CControl>(std::move(mGlobal)));

  ASSERT_EQ(list.GetNumberDevices(), 3);
  EXPECT_TRUE(device.isOpen);
  // An older instrument gets its own camera's detector, a controller that of the camera of its place in the list.
  const std::pair<std::string, int> expected[] = {{"A", 1001}, {"B", 1003}, {"SN-77", 1002}};
  for (int index = 0; index < 3; ++index) {
    const auto& [serial, pixels] = expected[index];
    std::array<char, TSpectrographHardware::kSerialLength> text{};
    list.GetDevice(index)->GetSerialNumber(text.data(), static_cast<int>(text.size()));
    EXPECT_EQ(std::string(text.data()).substr(0, serial.size()), serial);
    int count = 0;
    EXPECT_EQ(list.GetCalibration(index)->GetNumberPixels(count), 0U);
    EXPECT_EQ(count, pixels);
    EXPECT_EQ(list.GetRawCorvane(index) != nullptr, index < 2);
  }
}

TEST_F(SpectrographList, AControllerIsBidFarewellAndClosedBeforeTheCamerasGo) {
  const ScriptedBridge::Device& device = mBridge.Add(ScriptedBridge::kSxProduct, mController);
  std::string lastLine;
  bool open = true;
  mGlobal->AddController(std::make_unique<FakeCameras>(Buses{nullptr}, [&] {
    lastLine = mController.Lines().back();
    open = device.isOpen;
  }));
  { const TSpectrographList list(std::make_unique<TCorvaneI2CControl>(std::move(mGlobal))); }
  EXPECT_EQ(lastLine, "GOODBYE");
  EXPECT_FALSE(open);
}

}  // namespace
