// The simulated camera SDK through its entry points, as a host calls them.
#include <gmock/gmock.h>

#include <chrono>
#include <fstream>

#include "camera/TivanSimulation.h"
#include "support/TemporaryDirectory.h"

extern "C" {
unsigned int Initialize(char* directory);
unsigned int ShutDown();
unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data);
unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data);
unsigned int I2CRead(unsigned char address, unsigned char reg, unsigned char* data);
}

namespace {

constexpr unsigned int kSuccess = 20002;
constexpr unsigned int kBadParameter = 20066;
constexpr unsigned int kNotInitialized = 20075;
constexpr unsigned int kNoAnswer = 20080;
constexpr unsigned char kController = 0x58;

class TivanLibrary : public testing::Test {
 protected:
  ~TivanLibrary() override {
    CorvaneSimArmFault(0, 0, 0);
    ShutDown();
  }

  void Start(const std::string& scenario) {
    mDirectory.Write("corvane-sim.json", scenario);
    ASSERT_EQ(Initialize(mDirectory.Path().string().data()), kSuccess);
  }
  static unsigned int Send(std::string line) {
    line += '\r';
    return I2CBurstWrite(kController, static_cast<long>(line.size()), reinterpret_cast<unsigned char*>(line.data()));
  }
  static std::vector<int> Read(int count) {
    std::vector<unsigned char> frame(static_cast<std::size_t>(count), 0xAA);
    EXPECT_EQ(I2CBurstRead(kController, count, frame.data()), kSuccess);
    return {frame.begin(), frame.end()};
  }

  TemporaryDirectory mDirectory;
};

TEST_F(TivanLibrary, AnIdleControllerIsFoundByTheLongBurstOnlyAndABusyOneHoldsTheBus) {
  Start(R"({"i2c": {"motion": {"wavelength": 120}}})");
  std::vector<int> found(16, 0);
  found[0] = 0xB1;
  EXPECT_EQ(Read(16), found);
  EXPECT_EQ(Read(2), (std::vector<int>{0xB0, 0}));
  const auto before = std::chrono::steady_clock::now();
  ASSERT_EQ(Send("MOVETO 700"), kSuccess);
  EXPECT_EQ(Read(6), (std::vector<int>{0xB1, 'O', 'K', '\r', 0, 0}));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(120));
}

TEST_F(TivanLibrary, OtherAddressesAndBadTransfersFail) {
  Start(R"({"i2c": {}})");
  unsigned char data[2] = {};
  EXPECT_EQ(I2CRead(kController, 1, data), kNoAnswer);
  for (const auto burst : {I2CBurstRead, I2CBurstWrite}) {
    EXPECT_EQ(burst(0x57, 2, data), kNoAnswer);
    EXPECT_EQ(burst(kController, 0, data), kBadParameter);
    EXPECT_EQ(burst(kController, -5, data), kBadParameter);
    EXPECT_EQ(burst(kController, 2, nullptr), kBadParameter);
  }
  Start(R"({"usb": [{}]})");
  EXPECT_EQ(I2CBurstRead(kController, 2, data), kNoAnswer) << "nothing on the bus";
  EXPECT_EQ(CorvaneSimPeek(0, 1, data), 1);
}

TEST_F(TivanLibrary, TransferFaultsHitByCountAndLetNothingThrough) {
  Start(R"({"i2c": {}, "transportFaults": [{"operation": 4, "repeat": true, "status": 20066}]})");
  CorvaneSimArmFault(2, 0, 20068);
  EXPECT_EQ(Send("SAVEINFO 1,1"), kSuccess);
  EXPECT_EQ(Send("SAVEINFO 1,2"), 20068U);
  EXPECT_EQ(CorvaneSimFaultHits(), 1U);
  EXPECT_EQ(Send("Hello"), kSuccess);
  EXPECT_EQ(Send("Hello"), 20066U) << "the scenario's own";
  unsigned char byte = 0;
  EXPECT_EQ(CorvaneSimPeek(0, 1, &byte), 0);
  EXPECT_EQ(byte, 1);
}

TEST_F(TivanLibrary, TheInstrumentStaysInspectableAfterShutDown) {
  Start(R"({"i2c": {"motion": 0}, "log": "wire.log", "logTransfers": true})");
  ASSERT_EQ(Send("MOVETO 550"), kSuccess);
  EXPECT_EQ(Read(2), (std::vector<int>{0xB1, 'O'}));
  EXPECT_EQ(ShutDown(), kSuccess);
  unsigned char byte = 0;
  EXPECT_EQ(I2CBurstRead(kController, 1, &byte), kNotInitialized);
  EXPECT_EQ(CorvaneSimPeek(0, 0, &byte), 2);
  EXPECT_EQ(CorvaneSimPeek(0, 1025, &byte), 2);
  double centre = 0;
  EXPECT_EQ(CorvaneSimTrueCentre(0, &centre), 0);
  EXPECT_NEAR(centre, 550.0, 1e-4);
  const std::string expected =
      "i2c > MOVETO 550\ni2c < OK\\r\ni2c write 584D4F5645544F203535300D 20002\ni2c read 58B14F 20002\n";
  std::ifstream file(mDirectory.Path() / "wire.log");
  const std::string log{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_THAT(log, testing::StartsWith(expected));
  char text[5];
  EXPECT_GE(CorvaneSimLog(text, sizeof text), expected.size());
  EXPECT_STREQ(text, "i2c ") << "cut to the space";
}

}  // namespace
