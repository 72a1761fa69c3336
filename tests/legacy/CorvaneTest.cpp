// The driver of an older instrument, on a bus that writes down its moves and outputs.
#include "legacy/Corvane.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <variant>

#include "support/SimulatedLegacyBus.h"
#include "support/TemporaryDirectory.h"

namespace {

using Texts = std::vector<std::string>;
using Operation = std::function<unsigned int(Corvane&)>;
using corvane::kFilterMotor;
using corvane::kWaveMotor;

constexpr int kPlain = static_cast<int>(corvane::MoveMode::kPlain);
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
/// Transfers of a move: the version and the status register to see the motor stand, then the order.
constexpr int kOneMove = 3;

const Texts kNothing;
// Lengths and places of the record that tests change: page and offset.
constexpr std::pair kFineFind{1, 186};
constexpr std::pair kFineInto{1, 202};
constexpr std::pair kFineEdge{1, 206};
constexpr std::pair kHighestDrive{1, 16};
constexpr std::pair kSecondFilter{3, 98};
constexpr std::pair kFilterResetOffset{3, 90};
constexpr std::pair kLowestFlipper{4, 12};
const Texts kCoarseHole{"0+480000h", "0+1000", "0-5000e"};
const Texts kFineHole{"0+3000h", "0+10", "0-2000e"};

/// Two turrets, and moves that end at once.
corvane::sim::LegacyDescription Described() {
  corvane::sim::LegacyDescription description = corvane::sim::DefaultLegacy();
  description.record.turrets.push_back(description.record.turrets.front());
  description.motion = 0;
  return description;
}

class CorvaneTest : public testing::Test {
 protected:
  /// Loads the record and takes the wave drive to be at a position.
  void Load(int position = 0) {
    ASSERT_EQ(mDriver.ReadSpectCfg(nullptr), Corvane::kSuccess);
    mDriver.SaveCurrentWaveSteps(position);
    mBus.TakeStatus();
    mBus.TakeMoves();
  }
  void Program(std::pair<int, int> at, std::int32_t number) {
    mBus.Program(at.first, at.second, {reinterpret_cast<const char*>(&number), sizeof(number)});
  }
  int Steps() {
    int steps = 0;
    mDriver.GetCurrentWaveSteps(&steps);
    return steps;
  }

  SimulatedLegacyBus mBus{Described()};
  Corvane mDriver{&mBus, false};
};

TEST_F(CorvaneTest, WaveDriveGoesTheShortWayAndEndsForward) {
  const struct {
    int from;
    int distance;
    Texts moves;
  } cases[] = {
      {1000, 100, {"0+100"}},
      {1000, -100, {"0-2100", "0+2000"}},
      {470000, -460000, {"0+20000"}},
      {10000, 460000, {"0-22000", "0+2000"}},
      {0, 240000, {"0+240000"}},
      {1000, 10, {"0+10"}},
      {1000, 25, {"0+10", "0+10", "0+5"}},
      {1000, 30, {"0+30"}},
      {1000, 0, kNothing},
  };
  for (const auto& [from, distance, moves] : cases) {
    SCOPED_TRACE(std::to_string(from) + " by " + std::to_string(distance));
    Load();
    ASSERT_EQ(mDriver.ModifyDetectorOffset(0), Corvane::kSuccess);
    mDriver.SaveCurrentWaveSteps(from);
    mBus.TakeMoves();
    const std::uint64_t before = mBus.time.Slept();
    EXPECT_EQ(mDriver.ModifyDetectorOffset(distance), Corvane::kSuccess);
    EXPECT_EQ(mBus.TakeMoves(), moves);
    EXPECT_EQ(Steps(), from + distance);
    EXPECT_EQ(mBus.time.Slept() - before >= 250'000U, moves.size() == 2) << "a pause before it turns round";
  }
}

TEST_F(CorvaneTest, SplitMoveIsDecidedByItsRemainder) {
  Load();
  const struct {
    int motor;
    int steps;
    int mode;
    int failingMove;
    unsigned int result;
    Texts moves;
  } cases[] = {
      {kWaveMotor, 25, kPlain, 1, Corvane::kSuccess, {"0+10", "0+5"}},
      {kWaveMotor, 25, kPlain, 3, Corvane::kFailure, {"0+10", "0+10", "0+5"}},
      {kWaveMotor, 20, kPlain, 1, Corvane::kFailure, {"0+10"}},
      {kWaveMotor, 9, kPlain, 1, Corvane::kFailure, {"0+9"}},
      {kWaveMotor, 0, kPlain, 0, Corvane::kFailure, kNothing},
      {kWaveMotor, -5, kPlain, 0, Corvane::kFailure, kNothing},
      {kFilterMotor, 25, kPlain, 0, Corvane::kSuccess, {"2+25"}},
      {5, 5, kPlain, 0, Corvane::kFailure, kNothing},
      {-1, 5, kPlain, 0, Corvane::kFailure, kNothing},
      {kWaveMotor, 5, 3, 0, Corvane::kFailure, kNothing},
      {kWaveMotor, 5, -1, 0, Corvane::kFailure, kNothing},
  };
  mDriver.SetDirection(kFilterMotor, true);
  mDriver.SetDirection(kWaveMotor, true);
  for (const auto& [motor, steps, mode, failingMove, result, moves] : cases) {
    SCOPED_TRACE(std::to_string(motor) + " by " + std::to_string(steps) + " in mode " + std::to_string(mode));
    mBus.failingMove = failingMove;
    EXPECT_EQ(mDriver.Pulse(motor, steps, mode), result);
    EXPECT_EQ(mBus.TakeMoves(), moves);
  }
}

TEST_F(CorvaneTest, SetGratingKeepsTheWavelengthAndAMirrorGoesToZeroOrder) {
  mBus.Program(1, 230, "MIRR");
  Load();
  ASSERT_EQ(mDriver.SetWavelength(500.0F), Corvane::kSuccess);
  float nm = 0.0F;
  mDriver.GetWavelength(&nm);
  // A failed move is reported, but the rest goes on: the drive has been sent to the new grating.
  mBus.failingMove = 1;
  EXPECT_EQ(mDriver.SetGrating(2), Corvane::kFailure);
  EXPECT_EQ(Steps(), mDriver.GetData().ConvertWaveToSteps(nm, 2, 0));

  ASSERT_EQ(mDriver.SetGrating(3), Corvane::kSuccess);
  EXPECT_EQ(Steps(), 320000 + 192);
  int grating = 0;
  mDriver.GetGrating(&grating);
  EXPECT_EQ(grating, 3);

  ASSERT_EQ(mDriver.SetMirrorPosition(false), Corvane::kSuccess);
  ASSERT_EQ(mDriver.GotoZeroOrder(1), Corvane::kSuccess);
  EXPECT_EQ(Steps(), 1) << "port 1 has an offset of 0";
}

TEST_F(CorvaneTest, ADriveThatGotLostIsHomedBeforeItMoves) {
  Load(1000);
  mBus.answers = kOneMove;
  EXPECT_EQ(mDriver.SetWavelength(600.0F), Corvane::kFailure);
  EXPECT_EQ(Steps(), Corvane::kNoStepPosition);

  mBus.answers = mBus.kAlways;
  mBus.TakeMoves();
  EXPECT_EQ(mDriver.SetWavelength(600.0F), Corvane::kSuccess);
  Texts moves = kCoarseHole;
  moves.insert(moves.end(), kFineHole.begin(), kFineHole.end());
  moves.push_back("0+" + std::to_string(mDriver.GetData().ConvertWaveToSteps(600.0F, 1, 0)));
  EXPECT_EQ(mBus.TakeMoves(), moves);

  EXPECT_EQ(mDriver.ResetWavelength(false), Corvane::kSuccess);
  EXPECT_EQ(mBus.TakeMoves(), kFineHole);
  EXPECT_EQ(Steps(), 0);
}

TEST_F(CorvaneTest, HomingLeavesOutALegWithoutLengthAndRefusesToSearchForNothing) {
  const struct {
    int find;
    int into;
    int edge;
    unsigned int result;
    Texts moves;
  } cases[] = {{3000, 0, 2000, Corvane::kSuccess, {"0+3000h", "0-2000e"}},
               {0, 0, 2000, Corvane::kSuccess, {"0-2000e"}},
               {3000, 10, -1, Corvane::kFailure, kNothing},
               {0, 10, 0, Corvane::kFailure, kNothing}};
  for (const auto& [find, into, edge, result, moves] : cases) {
    Program(kFineFind, find);
    Program(kFineInto, into);
    Program(kFineEdge, edge);
    Load(1000);
    EXPECT_EQ(mDriver.ResetWavelength(false), result);
    EXPECT_EQ(mBus.TakeMoves(), moves);
    EXPECT_EQ(Steps(), result == Corvane::kSuccess ? 0 : 1000);
  }
}

TEST_F(CorvaneTest, AWavelengthOutOfReachMovesNothing) {
  Program(kHighestDrive, 20000);
  Load(1000);
  EXPECT_EQ(mDriver.SetWavelength(1000.0F), Corvane::kFailure) << "above the drive's highest position";
  EXPECT_EQ(mDriver.SetWavelength(kNoNumber), Corvane::kBeyondLimits);
  EXPECT_EQ(mDriver.SetWavelength(-0.01F), Corvane::kBeyondLimits);
  EXPECT_EQ(mBus.TakeMoves(), kNothing);
}

TEST(CorvaneStuckMotor, IsWaitedForWithoutALimit) {
  corvane::sim::LegacyDescription description = Described();
  description.faults.push_back({.motor = corvane::sim::kSlitMotor, .milliseconds = 1e6});
  SimulatedLegacyBus bus(description);
  Corvane driver(&bus, false);
  ASSERT_EQ(driver.ReadSpectCfg(nullptr), Corvane::kSuccess);
  EXPECT_EQ(driver.SetSlit(0, 1000.0F), Corvane::kSuccess);
  EXPECT_GE(bus.time.Slept(), 1'000'000'000U);
}

TEST_F(CorvaneTest, PresenceIsReadTwiceAndDropsTheOutputs) {
  Load();
  mBus.tamper = [](std::uint8_t, std::uint8_t& value) { value = 0xFD; };
  EXPECT_TRUE(mDriver.DeviceExists(Corvane::kInputSlit)) << "no bit but its own counts";
  EXPECT_EQ(mBus.TakeStatus(), (Texts{"129?", "129?", "0=0", "0=128", "0=160"}));
  mBus.failingTransfer = 3;
  EXPECT_FALSE(mDriver.DeviceExists(Corvane::kInputSlit)) << "the second read failed";
  for (const int none : {static_cast<int>(Corvane::kFocusMirror), -1, 7}) {
    EXPECT_FALSE(mDriver.DeviceExists(none)) << none;
  }

  mBus.tamper = nullptr;
  EXPECT_EQ(mDriver.SetAccessoryState(2, true), Corvane::kSuccess);
  EXPECT_EQ(mDriver.SetShutter(1), Corvane::kSuccess);
  mBus.TakeStatus();
  EXPECT_TRUE(mDriver.DeviceExists(Corvane::kAccessory));
  EXPECT_EQ(mBus.TakeStatus(), (Texts{"1?", "1?"})) << "this one leaves the outputs alone";
  bool state = false;
  mDriver.GetAccessoryState(2, state);
  EXPECT_TRUE(state);
  mDriver.DeviceExists(Corvane::kShutter);
  mDriver.GetAccessoryState(2, state);
  EXPECT_FALSE(state);
}

TEST(CorvaneFirstGeneration, SelectsAStatusRegisterBeforeItIsRead) {
  corvane::sim::LegacyDescription description = Described();
  description.fpga = 22;
  description.parts.slit = false;
  SimulatedLegacyBus bus(description);
  Corvane driver(&bus, true);
  EXPECT_FALSE(driver.DeviceExists(Corvane::kInputSlit));
  EXPECT_EQ(bus.TakeStatus(), (Texts{">129", "129?", "129?", "0=0", "0=128", "0=160"}));
}

TEST_F(CorvaneTest, OutputsAreResetInTheirOrderUpToTheFirstFailure) {
  Load();
  EXPECT_EQ(mDriver.Execute(Corvane::kOutputTask), Corvane::kSuccess);
  EXPECT_EQ(mBus.TakeStatus(), (Texts{"0=0", "0=128", "0=160", "0=64", "0=96"}));
  mBus.failingTransfer = 6;  // each line asks for the version first
  EXPECT_EQ(mDriver.Execute(Corvane::kOutputTask), Corvane::kFailure);
  EXPECT_EQ(mBus.TakeStatus(), (Texts{"0=0", "0=128"}));
}

TEST_F(CorvaneTest, ADataFileStandsInForNoRecordButNotForANewer) {
  const TemporaryDirectory directory;
  const ScopedWorkingDirectory there(directory.Path());
  directory.Write("spectrograph.ini", "[wave]\nTURRET=2\n");
  const auto expect = [this](const char* path, unsigned int result) {
    Corvane driver(&mBus, false);
    EXPECT_EQ(driver.ReadSpectCfg(path), result);
    int turret = 0;
    EXPECT_EQ(driver.GetTurret(turret), result == Corvane::kSuccess ? Corvane::kSuccess : Corvane::kNoData);
    EXPECT_EQ(turret, result == Corvane::kSuccess ? 2 : 0);
    EXPECT_EQ(driver.GotoZeroOrder(1), result == Corvane::kSuccess ? Corvane::kSuccess : Corvane::kNoData);
  };
  mBus.Program(0, 21, "4");
  const auto programmed = mBus.Writes();
  expect(nullptr, Corvane::kBeyondLimits);
  mBus.Program(0, 0, "\xFF");
  expect(nullptr, Corvane::kSuccess);
  expect("none.ini", Corvane::kFailure);
  EXPECT_EQ(mBus.Writes(), programmed + 1);
}

TEST_F(CorvaneTest, ADataFileTakesNothingFromAnEepromThatWasReadInPart) {
  const TemporaryDirectory directory;
  const ScopedWorkingDirectory there(directory.Path());
  directory.Write("spectrograph.ini", "[General]\nSVERNO=1.0\n");
  Load();
  ASSERT_EQ(mDriver.ModifyDetectorOffset(0, 1, 77), Corvane::kSuccess);
  Corvane driver(&mBus, false);
  mBus.answers = 500;  // into the slits' page
  ASSERT_EQ(driver.ReadSpectCfg(nullptr), Corvane::kSuccess);
  EXPECT_TRUE(driver.GetData().values.loadedFromFile);
  EXPECT_EQ(driver.GetData().values.detectorOffset[1], 0) << "a key since 1.4";
}

TEST_F(CorvaneTest, PartsMoveTheirMotorAndStoreWhereTheyStand) {
  constexpr auto kDone = Corvane::kSuccess;
  constexpr auto kRefused = Corvane::kFailure;
  const struct {
    const char* what;
    Operation operation;
    unsigned int result;
    Texts moves;
    int page;
    int offset;
    std::variant<float, std::int32_t> stored;
  } cases[] = {
      // 25 um lie at step -74 of the calibration, 1000 um at 318.
      {"slit", [](auto& d) { return d.SetSlit(0, 1000.0F); }, kDone, {"1+392"}, 0, 79, 1000.0F},
      {"slit closes", [](auto& d) { return d.SetSlit(0, 10.0F); }, kDone, {"1-398"}, 0, 79, 10.0F},
      {"slit below its stop", [](auto& d) { return d.SetSlit(0, 5.0F); }, kRefused, kNothing, 0, 79, 10.0F},
      {"not a width", [](auto& d) { return d.SetSlit(0, kNoNumber); }, kRefused, kNothing, 0, 79, 10.0F},
      {"output slit", [](auto& d) { return d.SetSlit(1, 1000.0F); }, kDone, {"4+392"}, 0, 99, 1000.0F},
      {"slit reset", [](auto& d) { return d.ResetSlit(0, true); }, kDone, {"1-4880", "1+100", "1-100"}, 0, 79, 10.0F},
      {"filter", [](auto& d) { return d.SetFilter(6); }, kDone, {"2+4000"}, 0, 83, 6},
      {"filter over the end", [](auto& d) { return d.SetFilter(2); }, kDone, {"2+1600"}, 0, 83, 2},
      {"mirror", [](auto& d) { return d.SetMirrorPosition(false); }, kDone, {"3+70"}, 0, 87, 1},
      {"mirror there", [](auto& d) { return d.SetMirrorPosition(false); }, kDone, {"3+70"}, 0, 87, 1},
      {"mirror reset", [](auto& d) { return d.ResetMirror(); }, kDone, {"3-70"}, 0, 87, 0},
      {"other port", [](auto& d) { return d.ModifyDetectorOffset(0, 1, 77); }, kDone, kNothing, 1, 226, 77},
      {"port in use", [](auto& d) { return d.ModifyDetectorOffset(0, 0, 292); }, kDone, {"0+100"}, 1, 70, 292},
      {"grating in use", [](auto& d) { return d.ModifyGratingOffset(0, 50); }, kDone, {"0+50"}, 1, 46, 50},
      {"turret", [](auto& d) { return d.SetTurret(2); }, kDone, kNothing, 2, 161, 0},
      {"its third grating", [](auto& d) { return d.ModifyGratingOffset(2, 8); }, kDone, kNothing, 2, 161, 8},
      {"equal widths", [](auto& d) { return d.WriteSlitCoefficients(1, 5, 3, 5); }, kRefused, kNothing, 2, 24, 10},
      {"coefficients", [](auto& d) { return d.WriteSlitCoefficients(1, 2, 3, 5); }, kDone, kNothing, 2, 32, 5},
  };
  Program(kLowestFlipper, 10);
  Load(1000);
  for (const auto& [what, operation, result, moves, page, offset, stored] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(operation(mDriver), result);
    EXPECT_EQ(mBus.TakeMoves(), moves);
    const auto expectStored = [this, at = std::pair(page, offset)](auto number) {
      EXPECT_EQ(mBus.Stored<decltype(number)>(at.first, at.second), number);
    };
    std::visit(expectStored, stored);
  }
}

TEST_F(CorvaneTest, NumbersOutsideTheirLimitsAreRefusedOnBothSides) {
  Load(1000);
  char text[2] = "";
  int number = 0;
  float value = 0.0F;
  const struct {
    const char* what;
    std::function<unsigned int(int)> operation;
    int least;
    int most;
  } cases[] = {
      {"line of output", [&](int n) { return mDriver.SendData(n); }, 0, 4},
      {"slit", [&](int n) { return mDriver.SetSlit(n, 100.0F); }, 0, 1},
      {"filter", [&](int n) { return mDriver.SetFilter(n); }, 1, 6},
      {"filter's label", [&](int n) { return mDriver.GetFilterInfo(n, text, 2); }, 1, 6},
      {"shutter", [&](int n) { return mDriver.SetShutter(n); }, 0, 1},
      {"accessory line", [&](int n) { return mDriver.SetAccessoryState(n, true); }, 1, 2},
      {"grating", [&](int n) { return mDriver.SetGrating(n); }, 1, 3},
      {"grating's limits", [&](int n) { return mDriver.GetWavelengthLimits(n, &value, &value); }, 1, 3},
      {"turret", [&](int n) { return mDriver.SetTurret(n); }, 1, 2},
      {"exit", [&](int n) { return mDriver.ModifyDetectorOffset(0, n, 7); }, 0, 1},
      {"exit asked for", [&](int n) { return mDriver.GetDetectorOffset(0, n, &number); }, 0, 1},
      {"entrance", [&](int n) { return mDriver.GetDetectorOffset(n, 0, &number); }, 0, 0},
  };
  for (const auto& [what, operation, least, most] : cases) {
    // -1 stands for the grating in use where limits are asked for.
    EXPECT_EQ(operation(least == 1 ? 0 : -1), Corvane::kFailure) << what;
    EXPECT_EQ(operation(least), Corvane::kSuccess) << what;
    EXPECT_EQ(operation(most), Corvane::kSuccess) << what;
    EXPECT_EQ(operation(most + 1), Corvane::kFailure) << what;
  }
}

TEST_F(CorvaneTest, MemoryKeepsWhatCouldNotBeStored) {
  Load();
  mBus.answers = 2;
  EXPECT_EQ(mDriver.ModifyDetectorOffset(0, 1, 5), Corvane::kFailure);
  int offset = 0;
  EXPECT_EQ(mDriver.GetDetectorOffset(0, 1, &offset), Corvane::kSuccess);
  EXPECT_EQ(offset, 5);
}

TEST_F(CorvaneTest, FilterWheelIsFoundByItsSensor) {
  constexpr int kTurn = 4800;
  constexpr int kBeforeFilter = 160;
  Load();
  // How far around its place the sensor shows filter 1: as instruments have it, and so little that sixths of a turn
  // step over it.
  for (const int width : {800, 60}) {
    mBus.tamper = [&, width](std::uint8_t reg, std::uint8_t& value) {
      const double fromMiddle = std::remainder(mBus.Position(kFilterMotor) + kBeforeFilter, double{kTurn});
      if (reg == 64) {
        value = std::abs(fromMiddle) * 2 <= width ? 4 : 10;
      }
    };
    for (const int turned : {0, 2437}) {
      SCOPED_TRACE(std::to_string(width) + " turned by " + std::to_string(turned));
      mDriver.SetDirection(kFilterMotor, true);
      mDriver.Pulse(kFilterMotor, turned, kPlain);
      EXPECT_EQ(mDriver.ResetFilter(), Corvane::kSuccess);
      EXPECT_NEAR(std::remainder(mBus.Position(kFilterMotor), double{kTurn}), 0.0, 40.0);
    }
  }
  int filter = 0;
  for (const std::uint8_t stuck : {std::uint8_t{4}, std::uint8_t{10}}) {
    SCOPED_TRACE(stuck == 4 ? "always filter 1" : "never filter 1");
    mBus.tamper = [stuck](std::uint8_t, std::uint8_t& value) { value = stuck; };
    EXPECT_EQ(mDriver.ResetFilter(), Corvane::kFailure);
    EXPECT_EQ(mDriver.GetFilter(&filter), Corvane::kFailure);
    EXPECT_EQ(mDriver.SetFilter(1), Corvane::kFailure);
  }
}

TEST_F(CorvaneTest, AResetOffsetMayLieAnywhereOnTheTurnOfTheWheel) {
  for (const int offset : {160, -799, -800, -5000, std::numeric_limits<int>::max()}) {
    Program(kFilterResetOffset, offset);
    Load();
    EXPECT_EQ(mDriver.ResetFilter(), Corvane::kSuccess) << offset;
    EXPECT_NEAR(std::remainder(mBus.Position(kFilterMotor) + 160.0 - offset, 4800.0), 0.0, 40.0) << offset;
  }
}

TEST_F(CorvaneTest, AFilterWithoutAPlaceOfItsOwnIsRefused) {
  for (const int place : {-1, 0, 4800}) {
    Program(kSecondFilter, place);
    Load();
    EXPECT_EQ(mDriver.SetFilter(2), Corvane::kFailure) << place;
    EXPECT_EQ(mBus.TakeMoves(), kNothing);
    EXPECT_EQ(mDriver.SetFilter(1), Corvane::kSuccess) << "where it stands";
  }
}

TEST_F(CorvaneTest, FilterLabelsStayInTheirFields) {
  Load();
  char text[12] = "###########";
  EXPECT_EQ(mDriver.SetFilterInfo(6, "0123456789"), Corvane::kSuccess);
  EXPECT_EQ(mDriver.GetFilterInfo(6, text, 5), Corvane::kSuccess);
  EXPECT_STREQ(text, "0123");
  mDriver.GetFilterInfo(6, text, sizeof(text));
  EXPECT_STREQ(text, "012345678");
}

TEST_F(CorvaneTest, AFailedMoveLeavesNoPlaceUntilTheResetAndStoresNone) {
  Load();
  ASSERT_EQ(mDriver.ResetFilter(), Corvane::kSuccess);
  const int filterMoves = static_cast<int>(mBus.TakeMoves().size());
  float width = 0.0F;
  int number = 0;
  const struct {
    const char* what;
    Operation move;
    Operation reset;
    Operation ask;
    int resetMoves;
  } cases[] = {
      {"input slit", [](auto& d) { return d.SetSlit(0, 1000.0F); }, [](auto& d) { return d.ResetSlit(0, true); },
       [&](auto& d) { return d.GetSlit(0, &width); }, 3},
      {"output slit", [](auto& d) { return d.SetSlit(1, 1000.0F); }, [](auto& d) { return d.ResetSlit(1, false); },
       [&](auto& d) { return d.GetCurrentSlitSteps(1, &number); }, 1},
      {"filter", [](auto& d) { return d.SetFilter(3); }, [](auto& d) { return d.ResetFilter(); },
       [&](auto& d) { return d.GetFilter(&number); }, filterMoves},
  };
  for (const auto& [what, move, reset, ask, resetMoves] : cases) {
    for (const bool deadBus : {false, true}) {
      SCOPED_TRACE(std::string(what) + (deadBus ? " on a dead bus" : ""));
      const auto writes = mBus.Writes();
      mBus.failingMove = deadBus ? 0 : 1;
      mBus.answers = deadBus ? kOneMove : mBus.kAlways;
      EXPECT_EQ(move(mDriver), Corvane::kFailure);
      mBus.answers = mBus.kAlways;
      EXPECT_EQ(mBus.TakeMoves().size(), 1U);
      EXPECT_EQ(ask(mDriver), Corvane::kFailure);
      EXPECT_EQ(move(mDriver), Corvane::kFailure);
      EXPECT_EQ(mBus.TakeMoves(), kNothing) << "from nowhere to nowhere";
      mBus.failingMove = resetMoves;
      EXPECT_EQ(reset(mDriver), Corvane::kFailure);
      EXPECT_EQ(ask(mDriver), Corvane::kFailure);
      EXPECT_EQ(mBus.Writes(), writes);
      EXPECT_EQ(reset(mDriver), Corvane::kSuccess);
      EXPECT_EQ(ask(mDriver), Corvane::kSuccess);
      mBus.TakeMoves();
    }
  }
}

}  // namespace
