// Several instruments at once, on USB and behind the camera: their order, which of them can be driven, and what foreign
// bridges cost.
#include <CorvaneCIF.h>
#include <dlfcn.h>
#include <ftd2xx.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bridge/SerialPeers.h"
#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "controller/Scenario.h"
#include "support/LockedPeer.h"
#include "support/TemporaryDirectory.h"

using corvane::sim::InstrumentDescription;
using corvane::sim::MotionController;

namespace {

/// A controller instrument behind a bridge of its own.
struct UsbInstrument {
  explicit UsbInstrument(const InstrumentDescription& description) : controller(description), peer(controller) {}
  MotionController controller;
  LockedPeer peer;
};

class SeveralInstruments : public testing::Test {
 protected:
  // Once loaded the simulated camera SDK stays; this scenario has no instrument behind the camera.
  void SetUp() override { mFolder.Write("corvane-sim.json", "{}"); }
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

  /// Number of devices found.
  int Initialize() {
    EXPECT_EQ(CorvaneInitialize(mFolder.Path().string().data()), CORVANE_SUCCESS);
    int count = -1;
    EXPECT_EQ(CorvaneGetNumberDevices(&count), CORVANE_SUCCESS);
    return count;
  }

  static std::string SerialOf(int device) {
    std::array<char, 21> serial{};
    EXPECT_EQ(CorvaneGetSerialNumber(device, serial.data()), CORVANE_SUCCESS);
    return serial.data();
  }

  static unsigned int Move(int device, float nm) { return CorvaneSetWavelength(device, nm); }

  TemporaryDirectory mFolder;
  std::vector<std::unique_ptr<UsbInstrument>> mInstruments;
  ScriptedPeer mSilent;
  int mPlugged = 1;
  VirtualUsbBus mBus;
};

TEST_F(SeveralInstruments, TwoOnUsbAreListedInTheBridgesOrderAndBothAreDriven) {
  PlugInstrument("CV-A");
  PlugInstrument("CV-B");
  ASSERT_EQ(Initialize(), 2);
  EXPECT_EQ(Move(0, 510.0F), CORVANE_SUCCESS);
  EXPECT_EQ(Move(1, 620.0F), CORVANE_SUCCESS);
  float first = 0;
  float second = 0;
  EXPECT_EQ(CorvaneGetWavelength(0, &first), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneGetWavelength(1, &second), CORVANE_SUCCESS);
  EXPECT_NEAR(first, 510.0F, 1e-3F);
  EXPECT_NEAR(second, 620.0F, 1e-3F);

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
  }
  EXPECT_EQ(Move(1, 630.0F), CORVANE_SUCCESS) << "listing closes nothing";
}

// Bridges with the controllers' identifiers are looked for only while no controller answers behind the camera; they are
// counted all the same.
TEST_F(SeveralInstruments, BehindACameraAndOnUsbAllAreListedButOnlyTheFirstIsDriven) {
  void* simulation = dlopen(CORVANE_SIMULATED_SDK, RTLD_NOW);
  ASSERT_NE(simulation, nullptr) << dlerror();
  mFolder.Write("corvane-sim.json", R"({"i2c": {"serial": "CV-CAM", "motion": 0}})");
  PlugInstrument("CV-A");
  PlugInstrument("CV-B");
  ASSERT_EQ(Initialize(), 3);
  EXPECT_EQ(SerialOf(0), "CV-CAM");
  EXPECT_EQ(Move(0, 510.0F), CORVANE_SUCCESS);
  for (const int device : {1, 2}) {
    EXPECT_EQ(SerialOf(device), "");
    EXPECT_EQ(Move(device, 510.0F), CORVANE_COMMUNICATION_ERROR);
  }
  int pixels = 0;
  EXPECT_EQ(CorvaneGetNumberPixels(0, &pixels), CORVANE_SUCCESS);
  EXPECT_EQ(pixels, 2048) << "the camera's detector goes to the first device";
  EXPECT_EQ(CorvaneGetNumberPixels(1, &pixels), CORVANE_SUCCESS);
  EXPECT_EQ(pixels, 0);
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  dlclose(simulation);
}

TEST_F(SeveralInstruments, ForeignAndSilentBridgesAreListedClosedAndCostSeconds) {
  Plug(0x0403, 0x6001, &mSilent);  // somebody's serial cable
  Plug(0x136E, 0x0017, &mSilent);  // a controller that is switched off
  PlugInstrument("CV-X", "Another maker");
  PlugInstrument("CV-A");
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_EQ(Initialize(), 4);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(40));
  EXPECT_EQ(SerialOf(0), "CV-A") << "the only one that opens";
  EXPECT_EQ(Move(0, 510.0F), CORVANE_SUCCESS);
  for (const int device : {1, 2, 3}) {
    EXPECT_EQ(Move(device, 510.0F), CORVANE_COMMUNICATION_ERROR);
  }
}

TEST_F(SeveralInstruments, APulledBridgeFailsAtOnceAndTheOtherGoesOn) {
  PlugInstrument("CV-A");
  BridgeChip& pulled = PlugInstrument("CV-B");
  ASSERT_EQ(Initialize(), 2);
  const int gone = SerialOf(0) == "CV-B" ? 0 : 1;
  ASSERT_EQ(CorvaneSetGratingOffset(gone, 1, 9), CORVANE_SUCCESS) << "unsaved, so that closing wants to write";
  mBus.Unplug(pulled);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Move(gone, 480.0F), CORVANE_COMMUNICATION_ERROR);
  EXPECT_EQ(Move(1 - gone, 480.0F), CORVANE_SUCCESS);
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

}  // namespace
