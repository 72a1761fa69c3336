// The virtual bus seen through the real libusb: what the tests of the library on it do not show.
#include "bridge/VirtualUsbBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libusb.h>

#include <cerrno>
#include <cstdint>
#include <vector>

#include "bridge/SerialPeers.h"
#include "support/VirtualBusUsb.h"

using corvane::OpenUsb;
using corvane::UsbHandle;
using testing::Each;
using testing::ElementsAre;

namespace {

constexpr std::uint8_t kOut = BridgeChip::OutEndpoint(0);

class VirtualUsbBusTest : public testing::Test {
 protected:
  UsbHandle OpenClaimed(const BridgeChip& chip) {
    UsbHandle handle = OpenUsb(mContext, mBus, chip);
    EXPECT_EQ(libusb_claim_interface(handle.get(), 0), 0);
    return handle;
  }

  // For each write of a byte the bytes moved, or a libusb error.
  static std::vector<int> WriteBytes(const UsbHandle& handle, int count) {
    std::vector<int> results;
    while (count-- > 0) {
      std::uint8_t byte = 1;
      int moved = 0;
      const int status = libusb_bulk_transfer(handle.get(), kOut, &byte, 1, &moved, 2000);
      results.push_back(status != 0 ? status : moved);
    }
    return results;
  }

  VirtualUsbBus mBus;
  corvane::UsbContext mContext = corvane::MakeUsbContext();
};

TEST_F(VirtualUsbBusTest, AnInterfaceHasOneHolder) {
  auto& chip = mBus.Plug();
  UsbHandle first = OpenClaimed(chip);
  const UsbHandle second = OpenUsb(mContext, mBus, chip);
  EXPECT_EQ(libusb_claim_interface(second.get(), 0), LIBUSB_ERROR_BUSY);
  EXPECT_EQ(libusb_set_configuration(second.get(), 1), LIBUSB_ERROR_BUSY);
  first.reset();
  EXPECT_EQ(libusb_claim_interface(second.get(), 0), 0) << "a closed file holds nothing";
}

}  // namespace
