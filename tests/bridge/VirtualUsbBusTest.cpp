// The virtual bus seen through the real libusb: claims, transfers and failures on demand.
#include "bridge/VirtualUsbBus.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <ctime>
#include <functional>

#include "BusFixture.h"

using namespace std::chrono_literals;
using corvane::OpenUsb;
using testing::Each;
using testing::ElementsAre;

using VirtualUsbBusTest = VirtualBusTest;

TEST_F(VirtualUsbBusTest, AnInterfaceHasOneHolder) {
  auto& chip = mBus.Plug();
  mBus.BindKernelDriver(chip, 0, "serial");
  UsbHandle first = OpenUsb(mContext, mBus, chip);
  EXPECT_EQ(libusb_claim_interface(first.get(), 0), LIBUSB_ERROR_BUSY);
  EXPECT_EQ(libusb_set_auto_detach_kernel_driver(first.get(), 1), 0);
  EXPECT_EQ(libusb_claim_interface(first.get(), 0), 0);
  EXPECT_EQ(mBus.BoundDriver(chip, 0), "usbfs");

  const UsbHandle second = OpenUsb(mContext, mBus, chip);
  EXPECT_EQ(libusb_claim_interface(second.get(), 0), LIBUSB_ERROR_BUSY);
  EXPECT_EQ(libusb_claim_interface(second.get(), 1), LIBUSB_ERROR_NOT_FOUND);
  EXPECT_EQ(libusb_set_configuration(second.get(), 1), LIBUSB_ERROR_BUSY);
  EXPECT_EQ(libusb_release_interface(first.get(), 0), 0);
  EXPECT_EQ(mBus.BoundDriver(chip, 0), "serial") << "given back";
  mBus.BindKernelDriver(chip, 0, "");
  EXPECT_EQ(libusb_claim_interface(first.get(), 0), 0);
  first.reset();
  EXPECT_EQ(libusb_claim_interface(second.get(), 0), 0) << "a closed file holds nothing";
}

TEST_F(VirtualUsbBusTest, AShortReplyEndsItsTransferAndLongOnesArePacketed) {
  for (const bool highSpeed : {false, true}) {
    LoopbackPeer peer;
    auto& chip = mBus.Plug({.highSpeed = highSpeed, .repliesAtOnce = true}, {&peer});
    chip.SetModemStatus(0, 0x31, 0x60);
    const UsbHandle handle = OpenClaimed(chip);
    const std::size_t packet = highSpeed ? 512 : 64;
    // 1 byte; one byte less than a packet's worth; exactly one packet's worth; three and a half.
    for (const std::size_t length : {std::size_t{1}, packet - 3, packet - 2, 3 * packet + packet / 2}) {
      const auto sent = Pattern(length);
      ASSERT_EQ(Write(handle, sent), static_cast<int>(length));
      auto transfer = Read(handle);
      while (transfer.size() == 2) {
        transfer = Read(handle);  // an idle packet may come first
      }
      EXPECT_EQ(corvane::Payload(transfer, packet), sent);
      for (std::size_t at = 0; at < transfer.size(); at += packet) {
        EXPECT_EQ(transfer[at], 0x31);
        EXPECT_EQ(transfer[at + 1], 0x60);
      }
    }
    mBus.Unplug(chip);
  }
}

TEST_F(VirtualUsbBusTest, ACancelledTransferEndsAloneAndTooLateACancelIsRefused) {
  auto& chip = mBus.Plug();
  chip.Hold(kIn, true);
  const UsbHandle handle = OpenClaimed(chip);
  InFlight flight(mContext, handle, 3);
  EXPECT_EQ(flight.Cancel(1), 0);
  EXPECT_TRUE(flight.PumpUntilPending(2));
  EXPECT_EQ(flight.Cancel(1), LIBUSB_ERROR_NOT_FOUND);
  chip.Hold(kIn, false);
  EXPECT_TRUE(flight.PumpUntilPending(0));
  EXPECT_THAT(flight.mStatuses,
              ElementsAre(LIBUSB_TRANSFER_CANCELLED, LIBUSB_TRANSFER_COMPLETED, LIBUSB_TRANSFER_COMPLETED));
}

TEST_F(VirtualUsbBusTest, ReleaseStallAndUnplugEndWhatIsPending) {
  auto& chip = mBus.Plug();
  UsbHandle handle = OpenClaimed(chip);
  chip.Hold(kIn, true);
  const auto endedBy = [&](const std::function<void()>& act) {
    InFlight flight(mContext, handle, 2);
    act();
    EXPECT_TRUE(flight.PumpUntilPending(0));
    EXPECT_EQ(mBus.PendingTransfers(), 0U);
    return flight.mStatuses;
  };
  endedBy([&] { EXPECT_EQ(libusb_release_interface(handle.get(), 0), 0); });
  EXPECT_EQ(libusb_claim_interface(handle.get(), 0), 0);
  EXPECT_THAT(endedBy([&] { chip.Stall(kIn); }), Each(LIBUSB_TRANSFER_STALL));
  EXPECT_EQ(libusb_clear_halt(handle.get(), kIn), 0);
  EXPECT_THAT(endedBy([&] { mBus.Unplug(chip); }), Each(LIBUSB_TRANSFER_NO_DEVICE));
  EXPECT_EQ(Write(handle, {1}), LIBUSB_ERROR_NO_DEVICE);
  EXPECT_EQ(libusb_clear_halt(handle.get(), kIn), LIBUSB_ERROR_NO_DEVICE);
  EXPECT_EQ(mBus.OpenNodes(), 1U);
  handle.reset();
  EXPECT_EQ(mBus.OpenNodes(), 0U);

  const int address = mBus.Address(chip);
  mBus.Replug(chip);
  EXPECT_EQ(mBus.Address(chip), address + 1);
  EXPECT_NE(OpenUsb(corvane::MakeUsbContext(), mBus, chip), nullptr);
}

TEST_F(VirtualUsbBusTest, TransfersOfOneEndpointFollowEachOtherAtTheDelay) {
  mBus.SetCompletionDelay(2ms);
  CountingPeer peer;
  const auto& chip = mBus.Plug({.highSpeed = true}, {&peer});
  const UsbHandle handle = OpenClaimed(chip);
  const auto begin = Clock::now();
  InFlight flight(mContext, handle, 20);
  EXPECT_TRUE(flight.PumpUntilPending(0));
  EXPECT_GE(Clock::now() - begin, 20 * 2ms);
}

TEST_F(VirtualUsbBusTest, WaitingDoesNotSpin) {
  const UsbHandle handle = OpenClaimed(mBus.Plug());
  const std::clock_t before = std::clock();  // Processor time of all threads.
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(Read(handle).size(), 2U) << "an idle packet after 16 ms";
  }
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
}

TEST_F(VirtualUsbBusTest, ANumberedOperationFailsOnceOrFromThenOn) {
  LoopbackPeer peer;
  const auto& chip = mBus.Plug({}, {&peer});
  const UsbHandle handle = OpenClaimed(chip);
  mBus.ForgetOperations();
  const auto sweep = [&](const UsbFault& fault) {
    mBus.SetFault(fault);
    std::vector<int> results;
    for (int i = 0; i < 4; ++i) {
      results.push_back(Write(handle, {1}));
    }
    return results;
  };
  using Effect = UsbFault::Effect;
  EXPECT_THAT(sweep({.effect = Effect::kSubmitFails, .operation = 2, .kinds = UsbFault::kBulkOut}),
              ElementsAre(1, LIBUSB_ERROR_IO, 1, 1));
  EXPECT_THAT(sweep({.effect = Effect::kCompletionFails, .operation = 3, .fromThenOn = true, .error = EPROTO}),
              ElementsAre(1, 1, LIBUSB_ERROR_IO, LIBUSB_ERROR_IO));
  EXPECT_EQ(mBus.FaultHits(), 2U);
  EXPECT_THAT(sweep({.effect = Effect::kSubmitFails, .operation = 1, .kinds = UsbFault::kBulkIn}), Each(1));
  EXPECT_EQ(mBus.Operations(), 12U);
  mBus.ClearFault();
  EXPECT_THAT(ReadPayload(handle, 9), testing::SizeIs(9)) << "what failed moved nothing";
}

TEST(VirtualUsbBusLife, HandlesOutliveTheirBusAndANewBusServesTheSameContext) {
  corvane::UsbContext context;
  corvane::UsbHandle handle;
  {
    VirtualUsbBus bus;
    context = corvane::MakeUsbContext();
    handle = OpenUsb(context, bus, bus.Plug());
    ASSERT_NE(handle, nullptr);
    EXPECT_THROW(VirtualUsbBus(), std::runtime_error);
  }
  EXPECT_EQ(libusb_claim_interface(handle.get(), 0), LIBUSB_ERROR_NO_DEVICE);
  handle.reset();
  VirtualUsbBus next;
  EXPECT_NE(OpenUsb(context, next, next.Plug()), nullptr);
}
