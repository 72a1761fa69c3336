// Several instruments at once, on USB and behind the camera: their order, which of them can be driven whatever becomes
// of the others, and what foreign bridges do. Waits are real here, so a wait that the library should not make (100 s
// for a reply) shows as a test that ctest ends.
#include <CorvaneCIF.h>
#include <dlfcn.h>
#include <ftd2xx.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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
  void SetUp() override { ASSERT_NE(gSimulatedSdk, nullptr); }
  void TearDown() override { CorvaneClose(); }

  BridgeChip& PlugInstrument(const std::string& serial, const std::string& maker = "Tivan") {
    InstrumentDescription description = corvane::sim::DefaultInstrument();
    description.serial = serial;
    description.maker = maker;
    description.motion = {0, 0, 0, 0, 0, 0, 0};
    mInstruments.push_back(std::make_unique<UsbInstrument>(description));
    return Plug(mInstruments.back()->peer);
  }

  /// The identifiers are the controllers' where nothing else is said.
  BridgeChip& Plug(ISerialPeer& peer, std::uint16_t vendor = 0x136E, std::uint16_t product = 0x0017) {
    BridgeChip::Options options;
    options.vendorId = vendor;
    options.productId = product;
    options.serialNumber = "BR" + std::to_string(mPlugged++);
    options.repliesAtOnce = true;
    return mBus.Plug(options, {&peer});
  }

  /// Number of devices found, with these behind the camera.
  int Initialize(const json& camera = json::object()) {
    mCamera = std::make_unique<LegacyLaboratory>(camera);
    EXPECT_EQ(CorvaneInitialize(mCamera->Directory().data()), CORVANE_SUCCESS);
    int count = -1;
    EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
    return count;
  }

  static std::string SerialOf(int device) {
    std::array<char, CORVANE_SERIAL_LENGTH> serial{};
    EXPECT_EQ(CorvaneGetSerialNumber(device, serial.data()), CORVANE_SUCCESS);
    return serial.data();
  }

  /// It goes where it is sent and says so.
  static void ExpectDriven(int device) {
    const float nm = 500.0F + 50.0F * static_cast<float>(device);
    EXPECT_EQ(CorvaneSetWavelength(device, nm), CORVANE_SUCCESS) << device;
    float answer = 0.0F;
    EXPECT_EQ(CorvaneGetWavelength(device, &answer), CORVANE_SUCCESS) << device;
    EXPECT_NEAR(answer, nm, 0.03F) << device;
  }

  static void ExpectNotDriven(int device) {
    EXPECT_EQ(CorvaneSetWavelength(device, 500.0F), CORVANE_COMMUNICATION_ERROR) << device;
    float answer = 77.0F;
    EXPECT_EQ(CorvaneGetWavelength(device, &answer), CORVANE_COMMUNICATION_ERROR) << device;
    EXPECT_EQ(answer, 0.0F) << device;
  }

  std::unique_ptr<LegacyLaboratory> mCamera;
  std::vector<std::unique_ptr<UsbInstrument>> mInstruments;
  ScriptedPeer mForeign;
  ScriptedPeer mSilent;
  int mPlugged = 1;
  VirtualUsbBus mBus;
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

TEST_F(SeveralInstruments, AnOlderOneBehindTheCameraComesBeforeThoseOnUsb) {
  PlugInstrument("CV-A");
  PlugInstrument("CV-B");
  ASSERT_EQ(Initialize({{"legacy", {{"serial", "OLD"}}}}), 3);
  EXPECT_EQ(SerialOf(0), "OLD");
  EXPECT_EQ((std::set{SerialOf(1), SerialOf(2)}), (std::set<std::string>{"CV-A", "CV-B"}));
  for (const int device : {0, 1, 2}) {
    ExpectDriven(device);
  }
  int pixels = -1;
  EXPECT_EQ(CorvaneGetNumberPixels(0, &pixels), CORVANE_SUCCESS);
  EXPECT_EQ(pixels, 2048) << "the camera's detector goes to the first device";
  EXPECT_EQ(CorvaneGetNumberPixels(1, &pixels), CORVANE_SUCCESS);
  EXPECT_EQ(pixels, 0);
  int point = 0;
  EXPECT_EQ(CorvaneGetSlitCoefficients(0, &point, &point, &point, &point), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetSlitCoefficients(1, &point, &point, &point, &point), CORVANE_NO_LEGACY_DRIVER);
}

// Bridges with the controllers' identifiers are looked for only while no controller answers behind the camera; they are
// counted all the same.
TEST_F(SeveralInstruments, AControllerBehindTheCameraHidesThoseOnUsb) {
  PlugInstrument("CV-A");
  PlugInstrument("CV-B");
  ASSERT_EQ(Initialize({{"legacy", {{"serial", "OLD"}}}, {"i2c", {{"serial", "CV-CAM"}}}}), 4);
  EXPECT_EQ(SerialOf(0), "OLD");
  EXPECT_EQ(SerialOf(1), "CV-CAM");
  ExpectDriven(0);
  ExpectDriven(1);
  for (const int hidden : {2, 3}) {
    EXPECT_EQ(SerialOf(hidden), "");
    ExpectNotDriven(hidden);
  }
}

TEST_F(SeveralInstruments, TheFailureOfAnOlderOneIsItsOwn) {
  PlugInstrument("CV-A");
  ASSERT_EQ(Initialize({{"legacy", json::object()}}), 2);
  mCamera->Bus().ArmFault(1, 1, 20067);
  EXPECT_EQ(CorvaneSetWavelength(0, 400.0F), CORVANE_COMMUNICATION_ERROR);
  ExpectDriven(1);
  // Detected and listed; the bus dies while its record is read.
  ASSERT_EQ(Initialize({{"legacy", json::object()}, {"transportFaults", {{{"operation", 100}, {"repeat", true}}}}}), 2);
  EXPECT_EQ(CorvaneSetWavelength(0, 500.0F), CORVANE_COMMUNICATION_ERROR);
  ExpectDriven(1);
}

TEST_F(SeveralInstruments, ForeignAndSilentBridgesAreListedBehindTheOneThatAnswers) {
  Plug(mForeign, 0x0403, 0x6001);
  Plug(mSilent);  // a controller that is switched off
  PlugInstrument("CV-X", "Another maker");
  PlugInstrument("CV-A");
  ASSERT_EQ(Initialize(), 4);
  EXPECT_EQ(mForeign.Received(), "");
  const std::string greetings = mSilent.Received();
  EXPECT_LE(std::ranges::count(greetings, '\r'), 6) << "each is a second's wait";
  EXPECT_EQ(SerialOf(0), "CV-A") << "the only one that opens";
  ExpectDriven(0);
  for (const int device : {1, 2, 3}) {
    ExpectNotDriven(device);
  }
}

TEST_F(SeveralInstruments, APulledBridgeFailsAloneAndTheOtherGoesOn) {
  PlugInstrument("CV-A");
  BridgeChip& pulled = PlugInstrument("CV-B");
  ASSERT_EQ(Initialize(), 2);
  const int gone = SerialOf(0) == "CV-B" ? 0 : 1;
  const int other = 1 - gone;
  ASSERT_EQ(CorvaneSetGratingOffset(gone, 1, 9), CORVANE_SUCCESS) << "unsaved, so that closing wants to write";
  mBus.Unplug(pulled);
  ExpectNotDriven(gone);
  ExpectDriven(other);
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
}

}  // namespace
