#include "legacy/LegacyInstrument.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "scenario/LegacyReader.h"

namespace corvane::sim {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

// Devices of the bus and their registers.
constexpr int kMotorDevice = 0x10;
constexpr int kStatusDevice = 0x11;
constexpr int kPage0 = 0x68;
constexpr int kPage5 = 0x6D;
constexpr int kMotorStatus = 0xC3;
constexpr int kNoAnswer = -1;

constexpr int kForward = 3;
constexpr int kUnknownMode = 0x30;

std::vector<std::uint8_t> Order(int motor, int flags, int steps, int rate = 80000) {
  std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(motor), static_cast<std::uint8_t>(flags)};
  for (const int value : {steps, rate, rate, 1000}) {
    for (const int shift : {0, 8, 16}) {
      bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
  }
  return bytes;
}

class SimulatedLegacyInstrument : public testing::Test {
 protected:
  LegacyInstrument Make(const LegacyDescription& description) const {
    return LegacyInstrument(description, [this] { return mNow; });
  }
  static int Answer(LegacyInstrument& instrument, int device, int reg) {
    std::uint8_t value = 0;
    return instrument.Read(static_cast<std::uint8_t>(device), static_cast<std::uint8_t>(reg), value) ? value
                                                                                                     : kNoAnswer;
  }
  static nlohmann::json StateOf(const LegacyInstrument& instrument) {
    return nlohmann::json::parse(instrument.State());
  }

  microseconds mNow{1000};
};

TEST_F(SimulatedLegacyInstrument, TheEepromIsWrittenInWriteModeOnlyAndDoesNotAnswerMeanwhile) {
  LegacyInstrument instrument = Make(DefaultLegacy());
  EXPECT_EQ(Answer(instrument, kPage0, 1), 'T');
  EXPECT_TRUE(instrument.Write(kPage0, 1, 'X'));
  EXPECT_EQ(Answer(instrument, kPage0, 1), 'T') << "lost";
  EXPECT_TRUE(instrument.Write(0x6F, 0xFF, 2));
  EXPECT_TRUE(instrument.Write(kPage0, 1, 'X'));
  EXPECT_EQ(Answer(instrument, kPage5, 0), kNoAnswer);
  EXPECT_FALSE(instrument.Write(kPage0, 2, 'X'));
  mNow += milliseconds(10);
  EXPECT_EQ(Answer(instrument, kPage0, 1), 'X');
  const auto state = StateOf(instrument);
  EXPECT_EQ(state["writes"], 1);
  EXPECT_EQ(state["lostWrites"], 1);
}

TEST_F(SimulatedLegacyInstrument, StatusTakesBurstsBelowVersion23AndRegistersFromThere) {
  for (const int fpga : {22, 23}) {
    LegacyDescription description = DefaultLegacy();
    description.fpga = fpga;
    LegacyInstrument instrument = Make(description);
    EXPECT_EQ(Answer(instrument, kMotorDevice, 0), fpga);
    EXPECT_EQ(instrument.BurstWrite(kStatusDevice, std::vector<std::uint8_t>{0, 7}), fpga == 22);
    EXPECT_EQ(instrument.Write(kStatusDevice, 0, 7), fpga == 23);
    EXPECT_EQ(StateOf(instrument)["lines"][0], 7);
    EXPECT_EQ(instrument.BurstWrite(kStatusDevice, std::vector<std::uint8_t>{64}), fpga == 22);
    EXPECT_EQ(Answer(instrument, kStatusDevice, fpga == 22 ? 0 : 64), 4) << "the first filter's pattern";
  }
}

TEST_F(SimulatedLegacyInstrument, AMotorRunsForItsRampAndRefusesMovesMeanwhile) {
  LegacyInstrument instrument = Make(DefaultLegacy());
  const auto move = [&](const std::vector<std::uint8_t>& order) { return instrument.BurstWrite(kMotorDevice, order); };
  EXPECT_TRUE(move(Order(kSlitMotor, kForward, 800)));
  EXPECT_EQ(Answer(instrument, kStatusDevice, kMotorStatus), 0x04);
  EXPECT_FALSE(move(Order(kSlitMotor, kForward, 1)));
  EXPECT_TRUE(move(Order(kWaveMotor, kForward, 1))) << "the others are free";
  mNow += milliseconds(11);
  EXPECT_EQ(Answer(instrument, kStatusDevice, kMotorStatus), 0);
  EXPECT_FALSE(move(Order(kLegacyMotors, kForward, 1)));
  EXPECT_FALSE(move(Order(kWaveMotor, kForward | kUnknownMode, 1)));
  EXPECT_FALSE(move(Order(kSlitMotor, kForward, 1, 0)));
}

}  // namespace
}  // namespace corvane::sim
