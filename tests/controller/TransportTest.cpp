// The two ways to a controller: the bridge on USB and the bus of a camera.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "ScriptedBus.h"
#include "controller/TMerakControlI2C.h"
#include "controller/TMerakControlUSB.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Pair;

TEST(TMerakControlI2C, IsAvailableWhenTheProbeFindsDataToFollow) {
  EXPECT_FALSE(TMerakControlI2C(nullptr).IsAvailable());
  ScriptedBus bus;
  EXPECT_TRUE(TMerakControlI2C(&bus).IsAvailable());
  bus.readStatus = 0;
  EXPECT_TRUE(TMerakControlI2C(&bus).IsAvailable());
  EXPECT_THAT(bus.reads, Each(16));
  bus.absent = true;
  EXPECT_FALSE(TMerakControlI2C(&bus).IsAvailable());
  bus.absent = false;
  bus.readStatus = 20013;
  EXPECT_FALSE(TMerakControlI2C(&bus).IsAvailable());
}

TEST(TMerakControlI2C, CountsTheBytesBeforeACarriageReturnAndStoresItAllTheSame) {
  ScriptedBus bus;
  TMerakControlI2C transport(&bus);
  bus.output = "\rab\rcd" + std::string(1000, 'x');
  std::string buffer(1000, '.');
  unsigned int received = 9;
  EXPECT_EQ(transport.Read(buffer.data(), 1, &received), 0U);
  EXPECT_EQ(received, 0U);
  EXPECT_EQ(buffer.substr(0, 2), "\r.");
  EXPECT_EQ(transport.Read(buffer.data(), 5, &received), 0U);
  EXPECT_EQ(received, 2U);
  EXPECT_EQ(buffer.substr(0, 6), "ab\rcd.");
  EXPECT_EQ(transport.Read(buffer.data(), 1000, &received), 0U);
  EXPECT_EQ(received, 1000U);
  EXPECT_EQ(buffer, std::string(1000, 'x'));
}

TEST(TMerakControlI2C, ReadFailsAtOnceAndLeavesTheBufferAloneWithoutData) {
  ScriptedBus bus;
  char c = '!';
  unsigned int received = 9;
  EXPECT_EQ(TMerakControlI2C(&bus).Read(&c, 1, &received), 4U);
  EXPECT_EQ(received, 0U);
  bus.output = "x";
  bus.readStatus = 20081;
  EXPECT_EQ(TMerakControlI2C(&bus).Read(&c, 1, &received), 4U);
  EXPECT_EQ(TMerakControlI2C(nullptr).Read(&c, 1, &received), 4U);
  EXPECT_EQ(c, '!');
}

TEST(TMerakControlI2C, DiscardsOneStaleLineThenSendsTheWholeLineInOneBurst) {
  ScriptedBus bus;
  TMerakControlI2C transport(&bus);
  bus.output = "stale\rnext";
  unsigned int written = 0;
  EXPECT_EQ(transport.Write("Hello\r", 6, &written), 0U);
  EXPECT_EQ(written, 6U);
  EXPECT_THAT(bus.bursts, ElementsAre("Hello\r"));
  EXPECT_EQ(bus.output, "next");
  bus.endless = 'x';
  bus.reads.clear();
  EXPECT_EQ(transport.Write("x\r", 2, nullptr), 0U) << "clearing an output without end is given up";
  EXPECT_LE(bus.reads.size(), 65536U);
  bus.writeStatus = 20081;
  EXPECT_EQ(transport.Write("x", 1, nullptr), 4U);
}

TEST(TMerakControlUSB, LeavesTheMakersProductInTheBridgesTable) {
  ScriptedBridge bridge;
  const TMerakControlUSB transport;
  // The bridge has room for one pair, so the order decides.
  EXPECT_THAT(bridge.products, ElementsAre(Pair(0x0403U, 0xD493U), Pair(0x0403U, 0xD491U), Pair(0x136EU, 0x0017U)));
}

TEST(TMerakControlUSB, ClosesItsHandleOnceAndOnDestruction) {
  ScriptedBridge bridge;
  ScriptedBridge::Device& device = bridge.Add();
  {
    TMerakControlUSB transport;
    EXPECT_EQ(transport.Open(7), 1U) << "one without a handle, whatever the bridge said";
    EXPECT_EQ(transport.Open(0), 0U);
    EXPECT_EQ(transport.Close(), 0U);
    EXPECT_EQ(transport.Close(), 0U);
    EXPECT_EQ(device.closes, 1);
    transport.Open(0);
    char c = 0;
    EXPECT_EQ(transport.Read(&c, 1, nullptr), 4U) << "no read without a count";
  }
  EXPECT_EQ(device.closes, 2);
  EXPECT_FALSE(device.isOpen);
}

TEST(TMerakControlUSB, FindsTheLastDeviceOfTheMaker) {
  ScriptedBridge bridge;
  TMerakControlUSB transport;
  EXPECT_EQ(transport.GetDeviceIndex(), -1);
  bridge.Add(0x136E, 0x0017, {});
  bridge.Add(0x0403, 0x6001, {});
  bridge.Add(0x136E, 0x0017, {});
  bridge.Add(0x136E, 0x0018, {});
  EXPECT_EQ(transport.GetDeviceIndex(), 2);
  bridge.infoStatus = FT_OTHER_ERROR;
  EXPECT_EQ(transport.GetDeviceIndex(), -1);
  bridge.createStatus = FT_INSUFFICIENT_RESOURCES;
  EXPECT_EQ(transport.GetDeviceIndex(), -2);
}

}  // namespace
