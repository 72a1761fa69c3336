// Several instruments at once, on USB and behind the camera: their order, which of them can be driven whatever becomes
// of the others, and what foreign bridges cost.
#include <CorvaneCIF.h>
#include <dlfcn.h>
#include <ftd2xx.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "bridge/SerialPeers.h"
#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/LegacyLaboratory.h"
#include "support/LockedPeer.h"

using corvane::sim::InstrumentDescription;
using corvane::sim::MotionController;
using nlohmann::json;

namespace {

/// Loaded by its path it answers to its name from then on.
void* const gSimulatedSdk = dlopen(CORVANE_SIMULATED_SDK, RTLD_NOW);

/// A controller instrument behind a bridge of its own.
struct UsbInstrument {
  explicit UsbInstrument(const InstrumentDescription& description) : controller(description), peer(controller) {}
  MotionController controller;
  LockedPeer peer;
};

class SeveralInstruments : public testing::Test {
 protected:
  void TearDown() override { CorvaneClose(); }

  BridgeChip& PlugInstrument(const std::string& serial, const std::string& maker = "Tivan") {
    InstrumentDescription description = corvane::sim::DefaultInstrument();
    description.serial = serial;
    description.maker = maker;
    description.motion = {0, 0, 0, 0, 0, 0, 0};
    mInstruments.push_back(std::make_unique<UsbInstrument>(description));
    return Plug(0x136E, 0x0017, &mInstruments.back()->peer);
  }

  BridgeChip& Plug(std::uint16_t vendor, std::uint16_t product, ISerialPeer* peer) {
    BridgeChip::Options options;
    options.vendorId = vendor;
    options.productId = product;
    options.serialNumber = "BR" + std::to_string(mPlugged++);
    options.repliesAtOnce = true;
    return mBus.Plug(options, {peer});
  }

  /// Number of devices found, with these behind the camera; takes less than some seconds.
  int Initialize(const json& camera = json::object(), int seconds = 5) {
    mCamera = std::make_unique<LegacyLaboratory>(camera);
    mBegin = std::chrono::steady_clock::now();
    EXPECT_EQ(CorvaneInitialize(mCamera->Directory().data()), CORVANE_SUCCESS);
    ExpectWithin(seconds);
    int count = -1;
    EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
    return count;
  }

  void ExpectWithin(int seconds) const {
    EXPECT_LT(std::chrono::steady_clock::now() - mBegin, std::chrono::seconds(seconds));
  }

  static std::string SerialOf(int device) {
    std::array<char, CORVANE_SERIAL_LENGTH> serial{};
    EXPECT_EQ(CorvaneGetSerialNumber(device, serial.data()), CORVANE_SUCCESS);
    return serial.data();
  }

  /// A device that goes where it is sent and says so, or that fails.
  static void ExpectDriven(int device, bool driven = true) {
    const float nm = 500.0F + 50.0F * static_cast<float>(device);
    EXPECT_EQ(CorvaneSetWavelength(device, nm), driven ? CORVANE_SUCCESS : CORVANE_COMMUNICATION_ERROR) << device;
    float answer = nm;
    EXPECT_EQ(CorvaneGetWavelength(device, &answer), driven ? CORVANE_SUCCESS : CORVANE_COMMUNICATION_ERROR) << device;
    EXPECT_NEAR(answer, driven ? nm : 0.0F, 0.03F) << device;
  }

  std::unique_ptr<LegacyLaboratory> mCamera;
  std::vector<std::unique_ptr<UsbInstrument>> mInstruments;
  ScriptedPeer mSilent;
  int mPlugged = 1;
  VirtualUsbBus mBus;
  std::chrono::steady_clock::time_point mBegin;
};

TEST_F(SeveralInstruments, TwoOnUsbAreListedInTheBridgesOrderAndBothAreDriven) {
  PlugInstrument("CV-A");
  PlugInstrument("CV-B");
  ASSERT_EQ(Initialize(), 2);
  DWORD bridges = 0;
  ASSERT_EQ(FT_CreateDeviceInfoList(&bridges), FT_OK);
  std::vector<FT_DEVICE_LIST_INFO_NODE> nodes(bridges);
  ASSERT_EQ(FT_GetDeviceInfoList(nodes.data(), &bridges), FT_OK);
  ASSERT_EQ(bridges, 2U);
  const std::map<std::string, std::string> kBehind = {{"BR1", "CV-A"}, {"BR2", "CV-B"}};
  for (int i = 0; i < 2; ++i) {
    const FT_DEVICE_LIST_INFO_NODE& node = nodes[static_cast<std::size_t>(i)];
    EXPECT_EQ(node.Flags & FT_FLAGS_OPENED, FT_FLAGS_OPENED);
    EXPECT_NE(node.ftHandle, nullptr);
    EXPECT_EQ(SerialOf(i), kBehind.at(node.SerialNumber));
    ExpectDriven(i);  // listing closes nothing
  }
}

// Bridges with the controllers' identifiers are looked for only while no controller answers behind the camera; they are
// counted all the same.
TEST_F(SeveralInstruments, BehindACameraComeFirstAndAControllerThereHidesThoseOnUsb) {
  ASSERT_NE(gSimulatedSdk, nullptr);
  PlugInstrument("CV-A");
  PlugInstrument("CV-B");
  const json older = {{"serial", "OLD"}};
  const json controller = {{"serial", "CV-CAM"}};
  const struct {
    json scenario;
    std::vector<std::string> serials;
    std::set<std::string> usbSerials;
  } cases[] = {{{{"legacy", older}}, {"OLD"}, {"CV-A", "CV-B"}},
               {{{"i2c", controller}}, {"CV-CAM"}, {""}},
               {{{"legacy", older}, {"i2c", controller}}, {"OLD", "CV-CAM"}, {""}}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.scenario.dump());
    const int behind = static_cast<int>(test.serials.size());
    ASSERT_EQ(Initialize(test.scenario), behind + 2);
    std::set<std::string> usbSerials;
    for (int device = 0; device < behind + 2; ++device) {
      if (device < behind) {
        EXPECT_EQ(SerialOf(device), test.serials[static_cast<std::size_t>(device)]);
      } else {
        usbSerials.insert(SerialOf(device));
      }
      ExpectDriven(device, device < behind || test.usbSerials.size() == 2);
      int pixels = -1;
      EXPECT_EQ(CorvaneGetNumberPixels(device, &pixels), CORVANE_SUCCESS);
      EXPECT_EQ(pixels, device == 0 ? 2048 : 0) << "the camera's detector goes to the first device";
    }
    EXPECT_EQ(usbSerials, test.usbSerials);
    int point = 0;
    EXPECT_EQ(CorvaneGetSlitCoefficients(0, &point, &point, &point, &point),
              test.serials[0] == "OLD" ? CORVANE_SUCCESS : CORVANE_NO_LEGACY_DRIVER);
  }
}

TEST_F(SeveralInstruments, TheFailureOfAnOlderOneIsItsOwn) {
  PlugInstrument("CV-A");
  ASSERT_EQ(Initialize({{"legacy", json::object()}}), 2);
  mCamera->Bus().ArmFault(1, 1, 20067);
  EXPECT_EQ(CorvaneSetWavelength(0, 400.0F), CORVANE_COMMUNICATION_ERROR);
  ExpectDriven(1);
  // Detected and listed; the bus dies while its record is read.
  ASSERT_EQ(Initialize({{"legacy", json::object()}, {"transportFaults", {{{"operation", 100}, {"repeat", true}}}}}, 20),
            2);
  EXPECT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_COMMUNICATION_ERROR);
  ExpectDriven(1);
}

TEST_F(SeveralInstruments, ForeignAndSilentBridgesAreListedClosedAndCostSeconds) {
  Plug(0x0403, 0x6001, &mSilent);  // somebody's serial cable
  Plug(0x136E, 0x0017, &mSilent);  // a controller that is switched off
  PlugInstrument("CV-X", "Another maker");
  PlugInstrument("CV-A");
  ASSERT_EQ(Initialize(json::object(), 40), 4);
  EXPECT_EQ(SerialOf(0), "CV-A") << "the only one that opens";
  for (const int device : {0, 1, 2, 3}) {
    ExpectDriven(device, device == 0);
  }
}

TEST_F(SeveralInstruments, APulledBridgeFailsAtOnceAndTheOtherGoesOn) {
  PlugInstrument("CV-A");
  BridgeChip& pulled = PlugInstrument("CV-B");
  ASSERT_EQ(Initialize(), 2);
  const int gone = SerialOf(0) == "CV-B" ? 0 : 1;
  ASSERT_EQ(CorvaneSetGratingOffset(gone, 1, 9), CORVANE_SUCCESS) << "unsaved, so that closing wants to write";
  mBus.Unplug(pulled);
  mBegin = std::chrono::steady_clock::now();
  ExpectDriven(gone, false);
  ExpectDriven(1 - gone);
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  ExpectWithin(5);
}

}  // namespace
