// The driver of an older instrument, on a bus that writes down its moves and outputs.
#include "legacy/Corvane.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <tuple>

#include "support/FakeLegacyInstrument.h"
#include "support/TemporaryDirectory.h"

namespace {

using Texts = std::vector<std::string>;
using corvane::kWaveMotor;

const Texts kNothing;
const Texts kHoming{"0+480000h", "0+1000", "0-5000e", "0+3000h", "0+10", "0-2000e"};

class CorvaneTest : public testing::Test {
 protected:
  /// Loads the record and puts the wave drive at a position.
  void Load(int position = 0) {
    ASSERT_EQ(mDriver.ReadSpectCfg(nullptr), Corvane::kSuccess);
    mDriver.SaveCurrentWaveSteps(position);
    mInstrument.position[0] = position;
    mInstrument.TakeStatus();
  }
  int Steps() {
    int steps = 0;
    mDriver.GetCurrentWaveSteps(&steps);
    return steps;
  }

  FakeLegacyInstrument mInstrument;
  Corvane mDriver{&mInstrument, false};
};

TEST_F(CorvaneTest, WaveDriveGoesTheShortWayAndEndsForward) {
  using Case = std::tuple<int, int, Texts>;
  const Case cases[] = {{1000, 100, {"0+100"}},
                        {1000, -100, {"0-2100", "0+2000"}},
                        {470000, -460000, {"0+20000"}},
                        {10000, 460000, {"0-22000", "0+2000"}},
                        {0, 240000, {"0+240000"}},
                        {1000, 10, {"0+10"}},
                        {1000, 25, {"0+10", "0+10", "0+5"}},
                        {1000, 30, {"0+30"}},
                        {1000, 0, kNothing}};
  for (const auto& [from, distance, moves] : cases) {
    Load(from);
    ASSERT_EQ(mDriver.ModifyDetectorOffset(0), Corvane::kSuccess);
    mDriver.SaveCurrentWaveSteps(from);
    mInstrument.TakeMoves();
    const std::uint64_t before = mInstrument.time.Slept();
    EXPECT_EQ(mDriver.ModifyDetectorOffset(distance), Corvane::kSuccess);
    EXPECT_EQ(mInstrument.TakeMoves(), moves) << from << ' ' << distance;
    EXPECT_EQ(Steps(), from + distance);
    EXPECT_EQ(mInstrument.time.Slept() - before >= 250'000U, moves.size() == 2) << "a pause before it turns round";
  }
}

TEST_F(CorvaneTest, SplitMoveIsDecidedByItsRemainder) {
  Load();
  using Case = std::tuple<int, int, int, unsigned int, Texts>;
  const Case cases[] = {{kWaveMotor, 25, 1, 0, {"0+10", "0+5"}},
                        {kWaveMotor, 25, 3, 1, {"0+10", "0+10", "0+5"}},
                        {kWaveMotor, 20, 1, 1, {"0+10"}},
                        {kWaveMotor, 9, 1, 1, {"0+9"}},
                        {kWaveMotor, 0, 0, 1, kNothing},
                        {kWaveMotor, -5, 0, 1, kNothing},
                        {corvane::kFilterMotor, 25, 0, 0, {"2+25"}},
                        {5, 5, 0, 1, kNothing},
                        {-1, 5, 0, 1, kNothing}};
  for (const auto& [motor, steps, failing, result, moves] : cases) {
    mInstrument.failingMove = failing;
    EXPECT_EQ(mDriver.Pulse(motor, steps, 0), result) << steps;
    EXPECT_EQ(mInstrument.TakeMoves(), moves);
  }
  EXPECT_EQ(mDriver.Pulse(kWaveMotor, 5, 3) + mDriver.Pulse(kWaveMotor, 5, -1), 2U);
}

TEST_F(CorvaneTest, SetGratingKeepsTheWavelengthAndAMirrorGoesToZeroOrder) {
  mInstrument.Put(1, 230, "MIRR");
  Load();
  ASSERT_EQ(mDriver.SetWavelength(500.0F), 0U);
  float nm = 0.0F;
  mDriver.GetWavelength(&nm);
  // A failed move is reported, but the rest goes on: the drive has been sent to the new grating.
  mInstrument.failingMove = 1;
  EXPECT_EQ(mDriver.SetGrating(2), Corvane::kFailure);
  EXPECT_EQ(Steps(), mDriver.GetData().ConvertWaveToSteps(nm, 2, 0));
  ASSERT_EQ(mDriver.SetGrating(3), 0U);
  EXPECT_EQ(Steps(), 320000 + 192);
  int grating = 0;
  mDriver.GetGrating(&grating);
  EXPECT_EQ(grating, 3);
  ASSERT_EQ(mDriver.SetMirrorPosition(false), 0U);  // port 1 has an offset of 0
  ASSERT_EQ(mDriver.GotoZeroOrder(1), 0U);
  EXPECT_EQ(Steps(), 1);
}

TEST_F(CorvaneTest, AStuckMotorIsWaitedForAndADeadBusIsNot) {
  Load(1000);
  mInstrument.busyPolls = 100000;
  EXPECT_EQ(mDriver.SetWavelength(500.0F), Corvane::kSuccess);
  EXPECT_GE(mInstrument.time.Slept(), 100000U * 10'000U);

  mInstrument.busyPolls = 2;
  const std::uint64_t before = mInstrument.time.Slept();
  mInstrument.answers = 8;  // the move itself is taken
  EXPECT_EQ(mDriver.SetWavelength(600.0F), Corvane::kFailure);
  EXPECT_LT(mInstrument.time.Slept() - before, 10'000'000U);
  // Nobody knows where it stands now, so it is homed first.
  mInstrument.answers = mInstrument.kAlways;
  mInstrument.TakeMoves();
  EXPECT_EQ(Steps(), Corvane::kNoStepPosition);
  EXPECT_EQ(mDriver.SetWavelength(600.0F), Corvane::kSuccess);
  Texts moves = kHoming;
  moves.push_back("0+" + std::to_string(mDriver.GetData().ConvertWaveToSteps(600.0F, 1, 0)));
  EXPECT_EQ(mInstrument.TakeMoves(), moves);
  EXPECT_EQ(mDriver.ResetWavelength(false), Corvane::kSuccess);
  EXPECT_EQ(mInstrument.TakeMoves(), Texts(kHoming.begin() + 3, kHoming.end()));
  EXPECT_EQ(Steps(), 0);
  mInstrument.Put(1, 16, 20000);  // the drive's highest position
  Load();
  EXPECT_EQ(mDriver.SetWavelength(1000.0F), Corvane::kFailure);
  EXPECT_EQ(mDriver.SetWavelength(NAN), Corvane::kBeyondLimits);
  EXPECT_EQ(mInstrument.TakeMoves(), kNothing);
}

TEST_F(CorvaneTest, PresenceIsReadTwiceAndOutputsAreResetInOrder) {
  Load();
  mInstrument.fpga = 23;
  mInstrument.status[129] = 0xFD;
  EXPECT_TRUE(mDriver.DeviceExists(Corvane::kInputSlit));
  EXPECT_EQ(mInstrument.TakeStatus(), (Texts{"129?", "129?", "0=0", "0=128", "0=160"}));
  mInstrument.failingTransfer = 3;  // the second read
  EXPECT_FALSE(mDriver.DeviceExists(Corvane::kInputSlit));
  mInstrument.TakeStatus();
  mInstrument.fpga = 22;
  mInstrument.status[129] = 0x02;
  EXPECT_FALSE(mDriver.DeviceExists(Corvane::kInputSlit));
  EXPECT_EQ(mInstrument.TakeStatus(), (Texts{">129", "129?", "129?", "0=0", "0=128", "0=160"}));
  EXPECT_FALSE(mDriver.DeviceExists(Corvane::kFocusMirror) || mDriver.DeviceExists(-1) || mDriver.DeviceExists(7));

  mInstrument.fpga = 25;
  EXPECT_EQ(mDriver.SetAccessoryState(2, true) + mDriver.SetShutter(1), 0U);
  EXPECT_TRUE(mDriver.DeviceExists(Corvane::kAccessory));
  EXPECT_EQ(mInstrument.TakeStatus(), (Texts{"0=2", "0=6", "1?", "1?"})) << "The accessory's leaves them alone.";
  bool state = true;
  mDriver.DeviceExists(Corvane::kShutter);
  mDriver.GetAccessoryState(2, state);
  EXPECT_FALSE(state);
  mInstrument.TakeStatus();
  EXPECT_EQ(mDriver.Execute(Corvane::kOutputTask), 0U);
  EXPECT_EQ(mInstrument.TakeStatus(), (Texts{"0=0", "0=128", "0=160", "0=64", "0=96"}));
  mInstrument.answers = 4;  // the third line's byte is lost
  EXPECT_EQ(mDriver.Execute(Corvane::kOutputTask), 1U);
  EXPECT_EQ(mInstrument.TakeStatus(), (Texts{"0=0", "0=128"}));
  EXPECT_EQ(mDriver.SendData(5) + mDriver.SendData(-1), 2U);
}

TEST_F(CorvaneTest, ADataFileStandsInForNoRecordButNotForANewer) {
  const TemporaryDirectory directory;
  const ScopedWorkingDirectory there(directory.Path());
  directory.Write("spectrograph.ini", "[wave]\nTURRET=2\n");
  const auto read = [this](const char* path) {
    Corvane driver(&mInstrument, false);
    const unsigned int result = driver.ReadSpectCfg(path);
    int turret = 0;
    EXPECT_EQ(driver.GetTurret(turret), result == 0U ? 0U : Corvane::kNoData);
    EXPECT_EQ(turret, result == 0U ? 2 : 0);
    EXPECT_EQ(driver.GotoZeroOrder(1), result == 0U ? 0U : Corvane::kNoData);
    return result;
  };
  mInstrument.Put(0, 21, "4");
  EXPECT_EQ(read(nullptr), Corvane::kBeyondLimits);
  mInstrument.Put(0, 0, "\xFF");
  EXPECT_EQ(read(nullptr), Corvane::kSuccess);
  EXPECT_EQ(read("none.ini"), Corvane::kFailure);
  EXPECT_EQ(mInstrument.writes, 0);
}

TEST_F(CorvaneTest, PartsMoveTheirMotorAndStoreWhereTheyStand) {
  using Operation = std::function<unsigned int(Corvane&)>;
  const std::tuple<const char*, Operation, unsigned int, Texts, std::size_t, std::size_t, float> cases[] = {
      // 25 um lie at step -74 of the fresh calibration, 1000 um at 318.
      {"slit", [](auto& d) { return d.SetSlit(0, 1000.0F); }, 0, {"1+392"}, 0, 79, 1000.0F},
      {"slit closes", [](auto& d) { return d.SetSlit(0, 10.0F); }, 0, {"1-398"}, 0, 79, 10.0F},
      {"slit below its stop", [](auto& d) { return d.SetSlit(0, 5.0F); }, 1, kNothing, 0, 79, 10.0F},
      {"not a width", [](auto& d) { return d.SetSlit(0, NAN); }, 1, kNothing, 0, 79, 10.0F},
      {"output slit", [](auto& d) { return d.SetSlit(1, 1000.0F); }, 0, {"4+392"}, 0, 99, 1000.0F},
      {"slit reset", [](auto& d) { return d.ResetSlit(0, true); }, 0, {"1-4880", "1+100", "1-100"}, 0, 79, 10.0F},
      {"filter", [](auto& d) { return d.SetFilter(6) + d.SetFilter(2); }, 0, {"2+4000", "2+1600"}, 0, 83, 2},
      {"mirror", [](auto& d) { return d.SetMirrorPosition(false); }, 0, {"3+80"}, 0, 87, 1},
      {"mirror there", [](auto& d) { return d.SetMirrorPosition(false); }, 0, {"3+80"}, 0, 87, 1},
      {"mirror reset", [](auto& d) { return d.ResetMirror(); }, 0, {"3-80"}, 0, 87, 0},
      {"other port", [](auto& d) { return d.ModifyDetectorOffset(0, 1, 77); }, 0, kNothing, 1, 226, 77},
      {"port in use", [](auto& d) { return d.ModifyDetectorOffset(0, 0, 292); }, 0, {"0+100"}, 1, 70, 292},
      {"grating in use", [](auto& d) { return d.ModifyGratingOffset(0, 50); }, 0, {"0+50"}, 1, 46, 50},
      {"second turret", [](auto& d) { return d.SetTurret(2) + d.ModifyGratingOffset(2, 8); }, 0, kNothing, 2, 161, 8},
      {"equal widths", [](auto& d) { return d.WriteSlitCoefficients(1, 5, 3, 5); }, 1, kNothing, 2, 24, 10},
      {"coefficients", [](auto& d) { return d.WriteSlitCoefficients(1, 2, 3, 5); }, 0, kNothing, 2, 32, 5},
  };
  Load(1000);
  for (const auto& [what, operation, result, moves, page, offset, stored] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(operation(mDriver), result);
    EXPECT_EQ(mInstrument.TakeMoves(), moves);
    const bool isFloat = offset == 79 || offset == 99;
    EXPECT_EQ(isFloat ? mInstrument.Number<float>(page, offset) : float(mInstrument.Number<int>(page, offset)), stored);
  }
  // Memory keeps what could not be stored.
  int steps = 0;
  mInstrument.answers = 8;
  EXPECT_EQ(mDriver.ModifyDetectorOffset(0, 1, 5), Corvane::kFailure);
  EXPECT_EQ(mDriver.GetDetectorOffset(0, 1, &steps), 0U);
  EXPECT_EQ(steps, 5);
}

TEST_F(CorvaneTest, FilterWheelIsFoundByItsSensorAndItsLabelsStayInTheirFields) {
  Load();
  for (const auto& [width, start] : {std::pair{800, 0}, {800, 2437}, {60, 0}, {60, 2437}}) {
    mInstrument.sensorWidth = width;
    mInstrument.position[2] = start;
    EXPECT_EQ(mDriver.ResetFilter(), Corvane::kSuccess);
    EXPECT_NEAR(std::remainder(mInstrument.position[2], 4800.0), 0.0, 40.0) << width << ' ' << start;
  }
  int filter = 0;
  for (const int width : {-1, 9600}) {  // a sensor that shows filter 1 never or always
    mInstrument.sensorWidth = width;
    EXPECT_EQ(mDriver.ResetFilter(), Corvane::kFailure);
    EXPECT_EQ(mDriver.GetFilter(&filter) + mDriver.SetFilter(1), 2 * Corvane::kFailure);
  }

  char text[12] = "###########";
  EXPECT_EQ(mDriver.SetFilterInfo(6, "0123456789") + mDriver.GetFilterInfo(6, text, 5), 0U);
  EXPECT_STREQ(text, "0123");
  mDriver.GetFilterInfo(6, text, 12);
  EXPECT_STREQ(text, "012345678");
  EXPECT_EQ(mDriver.GetFilterInfo(7, text, 12) + mDriver.SetFilterInfo(0, "x"), 2U);
}

TEST_F(CorvaneTest, AFailedMoveLeavesNoPlaceUntilTheResetAndStoresNone) {
  Load();
  ASSERT_EQ(mDriver.ResetFilter(), Corvane::kSuccess);
  const int filterMoves = static_cast<int>(mInstrument.TakeMoves().size());
  float width = 0.0F;
  int number = 0;
  const struct {
    std::function<unsigned int(Corvane&)> move;
    std::function<unsigned int(Corvane&)> reset;
    std::function<unsigned int(Corvane&)> ask;
    int resetMoves;
  } cases[] = {
      {[](auto& d) { return d.SetSlit(0, 1000.0F); }, [](auto& d) { return d.ResetSlit(0, true); },
       [&](auto& d) { return d.GetSlit(0, &width); }, 3},
      {[](auto& d) { return d.SetSlit(1, 1000.0F); }, [](auto& d) { return d.ResetSlit(1, false); },
       [&](auto& d) { return d.GetCurrentSlitSteps(1, &number); }, 1},
      {[](auto& d) { return d.SetFilter(3); }, [](auto& d) { return d.ResetFilter(); },
       [&](auto& d) { return d.GetFilter(&number); }, filterMoves},
  };
  for (const auto& [move, reset, ask, resetMoves] : cases) {
    for (const bool deadBus : {false, true}) {
      mInstrument.writes = 0;
      mInstrument.failingMove = deadBus ? 0 : 1;
      mInstrument.answers = deadBus ? 3 : std::numeric_limits<int>::max();  // the move itself is taken
      EXPECT_EQ(move(mDriver), Corvane::kFailure);
      mInstrument.answers = std::numeric_limits<int>::max();
      EXPECT_EQ(mInstrument.TakeMoves().size(), 1U);
      EXPECT_EQ(ask(mDriver), Corvane::kFailure);
      EXPECT_EQ(move(mDriver), Corvane::kFailure);
      EXPECT_EQ(mInstrument.TakeMoves(), kNothing) << "from nowhere to nowhere";
      mInstrument.position = {};
      mInstrument.failingMove = resetMoves;
      EXPECT_EQ(reset(mDriver), Corvane::kFailure);
      EXPECT_EQ(ask(mDriver), Corvane::kFailure);
      EXPECT_EQ(mInstrument.writes, 0);
      EXPECT_EQ(reset(mDriver), Corvane::kSuccess);
      EXPECT_EQ(ask(mDriver), Corvane::kSuccess);
      mInstrument.TakeMoves();
    }
  }
}

TEST_F(CorvaneTest, ADataFileTakesNothingFromAnEepromThatWasReadInPart) {
  const TemporaryDirectory directory;
  const ScopedWorkingDirectory there(directory.Path());
  directory.Write("spectrograph.ini", "[General]\nSVERNO=1.0\n");
  Load();
  ASSERT_EQ(mDriver.ModifyDetectorOffset(0, 1, 77), Corvane::kSuccess);
  Corvane driver(&mInstrument, false);
  mInstrument.answers = 500;  // into the slits' page
  ASSERT_EQ(driver.ReadSpectCfg(nullptr), Corvane::kSuccess);
  EXPECT_TRUE(driver.GetData().values.loadedFromFile);
  EXPECT_EQ(driver.GetData().values.detectorOffset[1], 0) << "a key since 1.4";
}

}  // namespace
