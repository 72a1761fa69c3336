// The transfers of an older instrument: numbers and texts of its pages, and its motors' registers.
#include "legacy/LegacyBus.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "support/SimulatedLegacyBus.h"

namespace {

using corvane::legacy::kFailure;
using corvane::legacy::kSuccess;

constexpr int kMoving = corvane::LegacyBus::kMoving;
constexpr int kStanding = corvane::LegacyBus::kStanding;
constexpr std::uint8_t kPage0 = corvane::LegacyBus::kEepromBase;
constexpr std::uint8_t kMotors = corvane::LegacyBus::kMotorController;
constexpr const char* kEnterUsb = "0=196";
constexpr const char* kLeaveUsb = "0=199";
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
/// What the EEPROM takes for a byte at most.
constexpr double kStoreMilliseconds = 15;
constexpr std::uint64_t kStoreMicroseconds = 15'000;

TEST(LegacyBus, GivesTheEepromTimeForEachByte) {
  corvane::sim::LegacyDescription description = corvane::sim::DefaultLegacy();
  description.writeTime = kStoreMilliseconds;
  SimulatedLegacyBus device(description);
  corvane::LegacyBus bus(&device, false);
  ASSERT_EQ(bus.SetWriteMode(), kSuccess);
  const std::uint64_t before = device.time.Slept();
  EXPECT_EQ(bus.WriteByte(1, kPage0, 200), kSuccess);
  EXPECT_EQ(device.time.Slept() - before, 1 * kStoreMicroseconds);
  EXPECT_EQ(bus.WriteInt(1, kPage0, 200), kSuccess);
  EXPECT_EQ(device.time.Slept() - before, 5 * kStoreMicroseconds);
  EXPECT_EQ(bus.WriteFloat(1.0F, kPage0, 200), kSuccess);
  EXPECT_EQ(device.time.Slept() - before, 9 * kStoreMicroseconds);
  EXPECT_EQ(bus.WriteString("x", 3, kPage0, 200), kSuccess);
  EXPECT_EQ(device.time.Slept() - before, 12 * kStoreMicroseconds);
}

TEST(LegacyBus, ReadsBackWhatItWrote) {
  SimulatedLegacyBus device;
  corvane::LegacyBus bus(&device, false);
  bus.SetWriteMode();
  // A text longer than its field is cut, and what is left has to be read back; registers go on at 0.
  EXPECT_EQ(bus.WriteString("abcdef", 4, kPage0, 254), kSuccess);
  EXPECT_EQ(device.Bytes(0, 254, 2) + device.Bytes(0, 0, 2), "abcd");
  EXPECT_EQ(bus.WriteFloat(kNoNumber, kPage0, 71), kFailure) << "No number equals it.";
  device.SetWriteMode(false);
  EXPECT_EQ(bus.WriteString("abcx", 4, kPage0, 254), kFailure);
  EXPECT_EQ(bus.WriteInt(1, kPage0 + 1, 0), kFailure);
  EXPECT_EQ(bus.WriteByte(17, kPage0, 0), kFailure);
}

TEST(LegacyBus, ANumberInABlazesPlaceIsTakenForItsText) {
  for (const auto& [number, text] :
       {std::pair{500.9F, "500"}, {0.0F, ""}, {150000.0F, ""}, {kNoNumber, ""}, {-500.0F, ""}}) {
    SimulatedLegacyBus device;
    corvane::LegacyBus bus(&device, false);
    device.Program(1, 200, {reinterpret_cast<const char*>(&number), sizeof(number)});
    device.Program(1, 200, std::string(1, '\0'));
    char read[corvane::LegacyBus::kBlazeSlot] = "x";
    ASSERT_EQ(bus.ReadBlaze(read, 4, kPage0 + 1, 200), kSuccess);
    EXPECT_STREQ(read, text);
  }
}

constexpr corvane::StepRamp kSlowRamp{1000, 1000, 0};

TEST(LegacyBus, OrdersAMoveThatItsFourteenBytesHold) {
  using corvane::MoveMode;
  const auto bytes =
      corvane::EncodeRampedMove({3, true, true, MoveMode::kStopAtEdge, 0x010203, {1, 256, 480000}}).value();
  EXPECT_EQ(bytes, (corvane::RampedMoveBytes{3, 0x23, 3, 2, 1, 1, 0, 0, 0, 1, 0, 0, 0x53, 7}));
  SimulatedLegacyBus device;
  corvane::LegacyBus bus(&device, false);
  for (const auto& [motor, steps] : {std::pair{0, -1}, {0, 0x1000000}, {5, 1}, {-1, 1}}) {
    EXPECT_EQ(bus.StartRampedMove(kMotors, {motor, true, true, MoveMode::kPlain, steps, kSlowRamp}), kFailure);
  }
  EXPECT_TRUE(device.TakeMoves().empty());
}

TEST(LegacyBus, SeesAMotorMoveByItsOwnBits) {
  // By register; the first generation is told first which one, and keeps it in another behind a USB camera.
  for (const auto& [fpga, usb] : {std::pair{25, true}, {25, false}, {22, true}, {22, false}}) {
    SCOPED_TRACE(std::to_string(fpga) + (usb ? " on USB" : ""));
    corvane::sim::LegacyDescription description = corvane::sim::DefaultLegacy();
    description.fpga = fpga;
    description.usbCamera = usb;
    SimulatedLegacyBus device(description);
    corvane::LegacyBus bus(&device, usb);
    device.failingTransfer = 1;
    EXPECT_EQ(bus.EngineMoving(0), corvane::LegacyBus::kUnreadable) << "the version, not taken for an old one";
    ASSERT_EQ(bus.StartRampedMove(kMotors, {1, true, true, corvane::MoveMode::kPlain, 800, kSlowRamp}), kSuccess);
    for (const auto& [motor, moving] :
         {std::pair{0, kStanding}, {1, kMoving}, {2, kStanding}, {3, kMoving}, {4, kMoving}}) {
      EXPECT_EQ(bus.EngineMoving(motor), moving) << motor;
    }
    EXPECT_EQ(bus.WaitForStandstill(1), kSuccess);
    ASSERT_EQ(bus.StartRampedMove(kMotors, {2, true, true, corvane::MoveMode::kPlain, 800, kSlowRamp}), kSuccess);
    for (const auto& [motor, moving] :
         {std::pair{0, kMoving}, {1, kStanding}, {2, kMoving}, {3, kStanding}, {4, kStanding}}) {
      EXPECT_EQ(bus.EngineMoving(motor), moving) << motor;
    }
  }
}

TEST(LegacyBus, GivesUpAMotorOnADeadBus) {
  SimulatedLegacyBus device;
  corvane::LegacyBus bus(&device, false);
  device.answers = 0;
  const std::uint64_t before = device.time.Slept();
  EXPECT_EQ(bus.EngineMoving(0), corvane::LegacyBus::kUnreadable);
  EXPECT_EQ(bus.WaitForStandstill(0), kFailure);
  EXPECT_LE(device.time.Slept() - before, 1'100'000U);
}

TEST(LegacyBus, TellsFirstGenerationControllersOfAUsbCamera) {
  corvane::sim::LegacyDescription description = corvane::sim::DefaultLegacy();
  description.fpga = 22;
  SimulatedLegacyBus device(description);
  corvane::LegacyBus bus(&device, false);
  bus.SetControl(&device, true);
  EXPECT_EQ(device.TakeStatus(), std::vector<std::string>{kEnterUsb});
  bus.SetControl(&device, true);
  EXPECT_EQ(device.TakeStatus(), std::vector<std::string>{});
  bus.SetControl(&device, false);
  EXPECT_EQ(device.TakeStatus(), std::vector<std::string>{kLeaveUsb});
}

}  // namespace
