#include "controller/TTivanOnly_MerakOrbis.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "ScriptedBus.h"
#include "support/FakeTime.h"
#include "support/ScriptedBridge.h"

namespace {

class TTivanOnlyTest : public testing::Test {
 protected:
  static ScriptedController Controller(const std::string& systemInfo) {
    ScriptedController controller;
    controller.SetValue("SYSTEMINFO", systemInfo);
    return controller;
  }
  ScriptedBridge::Device& AddLx(const std::string& manufacturer = "Tivan") {
    return mBridge.Add(0x0403, 0xD491, Controller(manufacturer + ",CV-LX,SN,C,V2.8"));
  }
  ScriptedBridge::Device& AddSx(const std::string& manufacturer = "Tivan") {
    return mBridge.Add(0x136E, 0x0017, Controller(manufacturer + ",CV-SX,SN,C,V2.8"));
  }
  static int Count(TMerakOrbis& orbis) {
    int count = -1;
    EXPECT_EQ(orbis.GetDeviceCount(count), 0U);
    return count;
  }

  FakeTime mTime;
  ScriptedBridge mBridge;
  ScriptedBus mBus;
  TTivanOnly_MerakOrbis mOrbis{nullptr};
};

TEST_F(TTivanOnlyTest, CountsAndOpensBehindAControllerOnTheBus) {
  mBus.responder = Controller("Other,CV-LX,SN,C,V2.8");
  TTivanOnly_MerakOrbis orbis(&mBus);
  EXPECT_EQ(Count(orbis), 1);
  EXPECT_TRUE(mBus.bursts.empty()) << "alone it is not asked for its maker";
  mBus.responder = Controller("Tivan,CV-LX,SN,C,V2.8");
  ScriptedBridge::Device& first = AddLx();
  ScriptedBridge::Device& second = AddLx("TiVaN");
  // The maker's own product is taken for the one that the bus already reaches.
  ScriptedBridge::Device& sx = AddSx();
  EXPECT_EQ(Count(orbis), 3);
  EXPECT_EQ(orbis.Open(2), 0U);
  EXPECT_TRUE(second.isOpen);
  EXPECT_FALSE(first.isOpen);
  EXPECT_EQ(sx.opens, 0);
  // Found with the short time-outs, used with the long ones.
  EXPECT_EQ(second.timeouts.at(second.timeouts.size() - 2), std::pair(100U, 100U));
  EXPECT_EQ(second.timeouts.back(), std::pair(100000U, 1000U));
  EXPECT_EQ(orbis.Open(3), 2U);
  EXPECT_FALSE(orbis.IsOpen());
  // The first place of the bridge's list always reaches the bus.
  const int opens = first.opens;
  EXPECT_EQ(orbis.Open(1), 0U);
  EXPECT_TRUE(orbis.IsOpen());
  EXPECT_EQ(first.opens, opens);
}

TEST_F(TTivanOnlyTest, ForeignMakersAreClosedAgain) {
  ScriptedBridge::Device& cable = mBridge.Add(0x0403, 0x6001, ScriptedController());
  ScriptedBridge::Device& foreign = AddSx("Tivanx");
  AddSx().openStatus = FT_DEVICE_NOT_OPENED;
  ScriptedBridge::Device& own = AddSx("tivan");
  EXPECT_EQ(Count(mOrbis), 1);
  EXPECT_EQ(cable.opens, 0) << "another product is not even tried";
  EXPECT_EQ(mOrbis.Open(0), 0U);
  EXPECT_TRUE(own.isOpen);
  EXPECT_FALSE(foreign.isOpen);
  // Identified at open, asked for its maker, and bid farewell; once for the count and once for the open.
  const std::string visit = "Hello\rHello\rSYSTEMINFO?\rSYSTEMINFO?\rGOODBYE\r";
  EXPECT_EQ(foreign.written, visit + visit);
  EXPECT_EQ(mOrbis.Open(1), 2U);
}

TEST_F(TTivanOnlyTest, NeverEndsOnABridgeThatDoesNotSayWhoItIs) {
  ScriptedController mute;
  mute.SetAnswer("SYSTEMINFO?", "E01\r");
  const ScriptedBridge::Device& unidentified = mBridge.Add(0x136E, 0x0017, mute);
  ScriptedController silent;
  silent.FallSilent();
  const ScriptedBridge::Device& dead = mBridge.Add(0x136E, 0x0017, silent);
  const std::uint64_t before = mTime.Slept();
  EXPECT_EQ(Count(mOrbis), 0);
  EXPECT_EQ(mOrbis.Open(0), 2U);
  EXPECT_FALSE(mOrbis.IsOpen());
  EXPECT_FALSE(unidentified.isOpen || dead.isOpen);
  EXPECT_LE(mTime.Slept() - before, 5'000'000U) << "a silent device costs seconds";
}

TEST_F(TTivanOnlyTest, AHeldBridgeKeepsItsPlaceInTheCount) {
  const ScriptedBridge::Device* const devices[] = {&AddLx(), &AddLx(), &AddLx()};
  TTivanOnly_MerakOrbis second(nullptr);
  TTivanOnly_MerakOrbis third(nullptr);
  EXPECT_EQ(mOrbis.Open(0), 0U);
  EXPECT_EQ(second.Open(1), 0U);
  EXPECT_EQ(third.Open(2), 0U);
  EXPECT_TRUE(devices[0]->isOpen && devices[1]->isOpen && devices[2]->isOpen);
  // All that is left is the one that the asking object holds itself.
  EXPECT_EQ(Count(third), 1);
  // Index 0 skips what is held; a reopened object drops its own bridge first.
  third.Close();
  TTivanOnly_MerakOrbis fourth(nullptr);
  EXPECT_EQ(fourth.Open(0), 0U);
  EXPECT_TRUE(devices[2]->isOpen);
  EXPECT_EQ(mOrbis.Open(0), 0U);
  EXPECT_TRUE(devices[0]->isOpen);
}

TEST_F(TTivanOnlyTest, ABrokenListGivesOneAndAnUnreadableListNothing) {
  AddSx();
  int count = -1;
  mBridge.infoStatus = FT_OTHER_ERROR;
  EXPECT_EQ(Count(mOrbis), 0);
  EXPECT_EQ(mOrbis.Open(0), 2U);
  mBridge.createStatus = FT_INSUFFICIENT_RESOURCES;
  EXPECT_EQ(mOrbis.GetDeviceCount(count), 1U);
  EXPECT_EQ(mOrbis.Open(0), 1U);
}

}  // namespace
