// The bridge chip's own manners through libusb: latency, packets, vendor requests.
#include "bridge/BridgeChip.h"

#include <gmock/gmock.h>

#include "BusFixture.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class BridgeChipTest : public VirtualBusTest {
 protected:
  // 0 or a libusb error.
  static int Order(const UsbHandle& handle, std::uint8_t request, std::uint16_t value, std::uint16_t index) {
    return libusb_control_transfer(handle.get(), 0x40, request, value, index, nullptr, 0, 1000);
  }
  static Bytes Ask(const UsbHandle& handle, std::uint8_t request, std::uint16_t index, std::uint16_t length) {
    Bytes answer(length);
    const int got = libusb_control_transfer(handle.get(), 0xC0, request, 0, index, answer.data(), length, 1000);
    answer.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return answer;
  }
};

}  // namespace

TEST_F(BridgeChipTest, AnIdlePacketComesWhenALatencyPeriodEnds) {
  const UsbHandle handle = OpenClaimed(mBus.Plug());
  ASSERT_EQ(Order(handle, 9, 40, 0), 0);
  EXPECT_THAT(Ask(handle, 10, 0, 1), ElementsAre(40));
  EXPECT_THAT(Read(handle), SizeIs(2));
  const auto begin = Clock::now();
  EXPECT_THAT(Read(handle), SizeIs(2));
  EXPECT_THAT(Read(handle), SizeIs(2));
  EXPECT_GE(Clock::now() - begin, 79ms);
}

TEST_F(BridgeChipTest, AShortReplyWaitsForTheEndOfThePeriodUnlessSentAtOnce) {
  LoopbackPeer peer;
  auto& chip = mBus.Plug({}, {&peer});
  const UsbHandle handle = OpenClaimed(chip);
  ASSERT_EQ(Order(handle, 9, 250, 0), 0);
  const auto roundTrip = [&] {
    while (Read(handle).size() > 2) {
    }
    const auto begin = Clock::now();
    Write(handle, Pattern(10));
    EXPECT_EQ(ReadPayload(handle, 10), Pattern(10));
    return Clock::now() - begin;
  };
  EXPECT_GE(roundTrip(), 240ms);
  chip.SetRepliesAtOnce(true);
  EXPECT_LT(roundTrip(), 240ms);
}

TEST_F(BridgeChipTest, PurgeDropsWhatTheChipHoldsOnItsOwnInterface) {
  LoopbackPeer peers[2];
  const auto& chip = mBus.Plug({.interfaces = 2}, {&peers[0], &peers[1]});
  const UsbHandle handle = OpenClaimed(chip);
  ASSERT_EQ(libusb_claim_interface(handle.get(), 1), 0);
  Write(handle, Pattern(20));
  Write(handle, Pattern(20, 5), BridgeChip::OutEndpoint(1));
  ASSERT_EQ(Order(handle, 0, 2, 0), 0);  // transmit: nothing to lose here
  ASSERT_EQ(Order(handle, 0, 1, 0), 0);
  Write(handle, Pattern(5, 9));
  EXPECT_EQ(ReadPayload(handle, 5), Pattern(5, 9));
  EXPECT_EQ(ReadPayload(handle, 20, BridgeChip::InEndpoint(1)), Pattern(20, 5));
}

TEST_F(BridgeChipTest, VendorRequestsAreKeptAndAnswered) {
  auto& chip = mBus.Plug({.interfaces = 2, .eepromWords = 4});
  const UsbHandle handle = OpenClaimed(chip);
  chip.SetModemStatus(1, 0x41, 0x62);
  EXPECT_THAT(Ask(handle, 5, 1, 2), ElementsAre(0x41, 0x62));
  EXPECT_EQ(Order(handle, 3, 0x4138, 0x0100), 0);
  EXPECT_EQ(Order(handle, 4, 8, 2), LIBUSB_ERROR_PIPE);     // no such interface
  EXPECT_EQ(Order(handle, 0x55, 0, 0), LIBUSB_ERROR_PIPE);  // no such request
  EXPECT_THAT(Ask(handle, 4, 0, 1), IsEmpty());             // wrong direction
  EXPECT_EQ(Order(handle, 0x91, 0x1234, 3), 0);
  EXPECT_THAT(Ask(handle, 0x90, 3, 2), ElementsAre(0x34, 0x12));
  EXPECT_THAT(Ask(handle, 0x90, 4, 2), IsEmpty());
  EXPECT_EQ(Order(handle, 0x92, 0, 0), 0);
  EXPECT_THAT(chip.Eeprom(), testing::Each(0xFFFF));

  const auto requests = chip.Requests();
  ASSERT_THAT(requests, SizeIs(9));
  EXPECT_EQ(requests[1].value, 0x4138);
  EXPECT_EQ(requests[1].index, 0x0100);
  EXPECT_TRUE(requests[2].stalled);
}
