// The virtual bus seen through the real libusb: what the tests of the library on it do not show.
#include "bridge/VirtualUsbBus.h"

#include <gtest/gtest.h>
#include <libusb.h>

#include "support/VirtualBusUsb.h"

namespace {

TEST(VirtualUsbBusTest, AnInterfaceHasOneHolder) {
  VirtualUsbBus bus;
  const auto context = corvane::MakeUsbContext();
  auto& chip = bus.Plug();
  auto first = corvane::OpenUsb(context, bus, chip);
  const auto second = corvane::OpenUsb(context, bus, chip);
  EXPECT_EQ(libusb_claim_interface(first.get(), 0), 0);
  EXPECT_EQ(libusb_claim_interface(second.get(), 0), LIBUSB_ERROR_BUSY);
  EXPECT_EQ(libusb_set_configuration(second.get(), 1), LIBUSB_ERROR_BUSY);
  first.reset();
  EXPECT_EQ(libusb_claim_interface(second.get(), 0), 0) << "a closed file holds nothing";
}

}  // namespace
