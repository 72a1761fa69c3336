#include "controller/TTivanOnly_MerakOrbis.h"

#include <gtest/gtest.h>

#include <string>

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
    return mBridge.Add(ScriptedBridge::kLxProduct, Controller(manufacturer + ",CV-LX,SN,C,V2.8"));
  }
  ScriptedBridge::Device& AddSx(const std::string& manufacturer = "Tivan") {
    return mBridge.Add(ScriptedBridge::kSxProduct, Controller(manufacturer + ",CV-SX,SN,C,V2.8"));
  }
  static int Count(TMerakOrbis& orbis) {
    int count = -1;
    EXPECT_EQ(orbis.GetDeviceCount(count), merak::kSuccess);
    return count;
  }

  FakeTime mTime;
  ScriptedBridge mBridge;
  ScriptedBus mBus;
  TTivanOnly_MerakOrbis mOrbis{nullptr};
};

TEST_F(TTivanOnlyTest, AControllerOnTheBusCountsWithoutBeingAskedForItsMaker) {
  mBus.responder = Controller("Other,CV-LX,SN,C,V2.8");
  TTivanOnly_MerakOrbis orbis(&mBus);
  EXPECT_EQ(Count(orbis), 1);
  EXPECT_TRUE(mBus.bursts.empty());
}

TEST_F(TTivanOnlyTest, BridgesComeBehindAControllerOnTheBus) {
  mBus.responder = Controller("Tivan,CV-LX,SN,C,V2.8");
  const ScriptedBridge::Device& first = AddLx();
  const ScriptedBridge::Device& second = AddLx("TiVaN");
  TTivanOnly_MerakOrbis orbis(&mBus);
  EXPECT_EQ(Count(orbis), 3);
  EXPECT_EQ(orbis.Open(2), merak::kSuccess);
  EXPECT_TRUE(second.isOpen);
  EXPECT_FALSE(first.isOpen);
  // Found with the short time-outs, used with the long ones.
  EXPECT_EQ(second.timeouts.at(second.timeouts.size() - 2), std::pair(100U, 100U));
  EXPECT_EQ(second.timeouts.back(), std::pair(100'000U, 1'000U));
  EXPECT_EQ(orbis.Open(3), merak::kDeviceNotFound);
  EXPECT_FALSE(orbis.IsOpen());
}

TEST_F(TTivanOnlyTest, BothProductsOfAnLxAreCandidatesAndNoOtherIsTried) {
  mBridge.Add(ScriptedBridge::kSecondLxProduct, Controller("Tivan,CV-LX,SN,C,V2.8"));
  const ScriptedBridge::Device& cable = mBridge.Add(ScriptedBridge::kPlainCable, ScriptedController());
  AddLx();
  EXPECT_EQ(Count(mOrbis), 2);
  EXPECT_EQ(cable.opens, 0);
}

TEST_F(TTivanOnlyTest, AForeignMakersControllerIsBidFarewellAndPassedOver) {
  const ScriptedBridge::Device& foreign = AddSx("Tivanx");
  AddSx().openStatus = FT_DEVICE_NOT_OPENED;
  const ScriptedBridge::Device& own = AddSx("tivan");
  EXPECT_EQ(Count(mOrbis), 1);
  // Identified at open, asked for its maker, and bid farewell.
  EXPECT_EQ(foreign.written, "Hello\rHello\rSYSTEMINFO?\rSYSTEMINFO?\rGOODBYE\r");
  EXPECT_EQ(mOrbis.Open(0), merak::kSuccess);
  EXPECT_TRUE(own.isOpen);
  EXPECT_FALSE(foreign.isOpen);
  EXPECT_EQ(mOrbis.Open(1), merak::kDeviceNotFound);
}

TEST_F(TTivanOnlyTest, NeverEndsOnABridgeThatDoesNotSayWhoItIs) {
  ScriptedController mute;
  mute.SetAnswer("SYSTEMINFO?", "E01\r");
  const ScriptedBridge::Device& device = mBridge.Add(ScriptedBridge::kSxProduct, mute);
  EXPECT_EQ(Count(mOrbis), 0);
  EXPECT_EQ(mOrbis.Open(0), merak::kDeviceNotFound);
  EXPECT_FALSE(mOrbis.IsOpen());
  EXPECT_FALSE(device.isOpen);
}

TEST_F(TTivanOnlyTest, ABridgeHeldByAnotherObjectKeepsItsPlaceInTheCount) {
  const ScriptedBridge::Device& first = AddLx();
  const ScriptedBridge::Device& second = AddLx();
  TTivanOnly_MerakOrbis other(nullptr);
  EXPECT_EQ(mOrbis.Open(0), merak::kSuccess);
  EXPECT_EQ(other.Open(1), merak::kSuccess);
  EXPECT_TRUE(first.isOpen);
  EXPECT_TRUE(second.isOpen);
  EXPECT_EQ(Count(other), 1) << "all that is left is its own";
  other.Close();
  EXPECT_EQ(other.Open(0), merak::kSuccess) << "index 0 skips what is held";
  EXPECT_TRUE(second.isOpen);
  EXPECT_EQ(mOrbis.Open(0), merak::kSuccess) << "its own bridge is dropped first";
  EXPECT_TRUE(first.isOpen);
}

TEST_F(TTivanOnlyTest, AListThatIsNotHandedOutIsEmptyAndOneThatCannotBeMadeAFailure) {
  AddSx();
  mBridge.infoStatus = FT_OTHER_ERROR;
  EXPECT_EQ(Count(mOrbis), 0);
  EXPECT_EQ(mOrbis.Open(0), merak::kDeviceNotFound);
  mBridge.createStatus = FT_INSUFFICIENT_RESOURCES;
  int count = -1;
  EXPECT_EQ(mOrbis.GetDeviceCount(count), merak::kUnknownError);
  EXPECT_EQ(mOrbis.Open(0), merak::kUnknownError);
}

}  // namespace
