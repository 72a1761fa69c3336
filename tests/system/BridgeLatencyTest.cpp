// What a shorter latency period of the bridge gains: the virtual chip keeps a short reply until the end of the period,
// as chips do.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/TemporaryDirectory.h"

namespace {

using Clock = std::chrono::steady_clock;

class BridgeLatency : public testing::Test {
 protected:
  void TearDown() override { unsetenv("CORVANE_USB_LATENCY_MS"); }

  /// Time from CorvaneInitialize until the serial number of the one device is known.
  Clock::duration OpeningTime() {
    std::string folder = mFolder.Path().string();
    const auto begin = Clock::now();
    EXPECT_EQ(CorvaneInitialize(folder.data()), CORVANE_SUCCESS);
    char serial[CORVANE_SERIAL_LENGTH] = "";
    EXPECT_EQ(CorvaneGetSerialNumber(0, serial), CORVANE_SUCCESS);
    const auto time = Clock::now() - begin;
    EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
    return time;
  }

  TemporaryDirectory mFolder;
  corvane::sim::MotionController mController{corvane::sim::DefaultInstrument("SX")};
  VirtualUsbBus mBus;
  BridgeChip& mChip = mBus.Plug({.vendorId = usbid::kInstrumentMaker, .productId = usbid::kController}, {&mController});
};

TEST_F(BridgeLatency, StaysAsItIsUnlessAskedForAndThenShortensAnOpening) {
  const auto usual = OpeningTime();
  EXPECT_EQ(mChip.Settings(0).latency, BridgeChannel::kDefaultLatency);
  setenv("CORVANE_USB_LATENCY_MS", "1", 1);
  const auto shortened = OpeningTime();
  EXPECT_EQ(mChip.Settings(0).latency, 1);
  EXPECT_LT(shortened, usual * 2 / 3);
}

}  // namespace
