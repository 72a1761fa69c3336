// A shorter latency period that is asked for reaches the bridge chip.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "bridge/VirtualUsbBus.h"
#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/TemporaryDirectory.h"

namespace {

class BridgeLatency : public testing::Test {
 protected:
  void TearDown() override { unsetenv("CORVANE_USB_LATENCY_MS"); }

  /// Of the chip, once its instrument has been opened.
  int PeriodOfAnOpening() {
    std::string folder = mFolder.Path().string();
    EXPECT_EQ(CorvaneInitialize(folder.data()), CORVANE_SUCCESS);
    const int period = mChip.Settings(0).latency;
    EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
    return period;
  }

  TemporaryDirectory mFolder;
  corvane::sim::MotionController mController{corvane::sim::DefaultInstrument("SX")};
  VirtualUsbBus mBus;
  BridgeChip& mChip = mBus.Plug({.vendorId = usbid::kInstrumentMaker, .productId = usbid::kController}, {&mController});
};

TEST_F(BridgeLatency, StaysAsItIsUnlessAskedFor) {
  EXPECT_EQ(PeriodOfAnOpening(), BridgeChannel::kDefaultLatency);
  setenv("CORVANE_USB_LATENCY_MS", "1", 1);
  EXPECT_EQ(PeriodOfAnOpening(), 1);
}

}  // namespace
