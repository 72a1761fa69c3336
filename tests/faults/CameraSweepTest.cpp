// Every transfer and every reply of a session behind the camera's I2C bus is disturbed: of each controller, of one that
// the library steps, and of older instruments.
#include <gtest/gtest.h>

#include <fstream>
#include <ostream>
#include <sstream>

#include "RecordFields.h"
#include "Sweep.h"
#include "support/FakeTime.h"
#include "support/Simulation.h"
#include "support/TemporaryDirectory.h"

using nlohmann::json;

namespace {

constexpr unsigned int kBusFailure = 20067;
constexpr int kControllerSize = 1024;
constexpr int kLegacySize = 6 * 256;

class CameraInstrument final : public SweptInstrument {
 public:
  CameraInstrument(const json& scenario, Oracle::Kind kind) : mKind(kind) {
    mFolder.Write("corvane-sim.json", scenario.dump());
  }

  std::string Directory() const override { return mFolder.Path().string(); }

  void Renew() override {
    Lift();
    mSimulation.KeepPower(0);
    std::string directory = Directory();
    EXPECT_EQ(mSimulation.Initialize(directory.data()), 20002U);
    mSimulation.KeepPower(1);
    mBefore = mSimulation.Operations();
  }
  void Arm(const Fault& fault) override {
    if (fault.reply.is_null()) {
      mSimulation.ArmFault(fault.number, fault.fromThenOn ? 1 : 0, kBusFailure);
    } else {
      EXPECT_EQ(mSimulation.ArmReplyFault(0, fault.reply.dump().c_str()), 0) << fault.reply;
    }
  }
  void Lift() override {
    mSimulation.ArmFault(0, 0, kBusFailure);
    mSimulation.ClearReplyFaults(0);
  }

  json State() override {
    return json::parse(Simulation::Text([this](char* text, size_t size) { return mSimulation.State(0, text, size); }));
  }
  StoredRecord Record() override {
    if (mKind == Oracle::Kind::kSx) {
      return NumberedTexts([this](int number) {
        return Simulation::Text([&](char* text, size_t size) { return mSimulation.Parameter(0, number, text, size); });
      });
    }
    const bool isLegacy = mKind == Oracle::Kind::kLegacy;
    static const std::map<int, int> kControllerPlaces = ControllerFields();
    static const std::map<int, int> kLegacyPlaces = LegacyFields();
    return CutIntoFields(isLegacy ? kLegacySize : kControllerSize, isLegacy ? kLegacyPlaces : kControllerPlaces,
                         [this](int address) {
                           unsigned char byte = 0;
                           mSimulation.Peek(0, address, &byte);
                           return static_cast<char>(byte);
                         });
  }

  std::vector<std::string> Lines() override {
    std::istringstream log(Simulation::Text([this](char* text, size_t size) { return mSimulation.Log(text, size); }));
    const std::string mark = "i2c > ";
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);) {
      if (line.rfind(mark, 0) == 0) {
        lines.push_back(line.substr(mark.size()));
      }
    }
    return lines;
  }
  std::uint64_t LineCount() override { return mSimulation.Lines(0); }
  std::uint64_t Transfers() override { return mSimulation.Operations() - mBefore; }
  std::uint64_t TransferHits() override { return mSimulation.FaultHits(); }

 private:
  Oracle::Kind mKind;
  TemporaryDirectory mFolder;
  Simulation mSimulation;
  std::uint64_t mBefore = 0;
};

struct CameraSweepCase {
  SweepPlan plan;
  json scenario;
};

void PrintTo(const CameraSweepCase& sweep, std::ostream* out) {
  *out << sweep.plan.name;
}

class CameraSweep : public testing::TestWithParam<CameraSweepCase> {
  FakeTime mTime;
};

TEST_P(CameraSweep, LeavesNothingWrong) {
  const auto& [plan, scenario] = GetParam();
  CameraInstrument instrument(scenario, plan.kind);
  Sweep(instrument, plan);
}

json Controller(const char* model) {
  return {{"i2c", {{"model", model}, {"motion", 0}, {"wavelength", 480}}}};
}

/// One that the library steps, its first grating's zero order on the far side of the turret's own zero.
json Stepped() {
  std::ifstream file(SCENARIOS "/lx-steps/corvane-sim.json");
  json scenario = json::parse(file, nullptr, true, true);
  scenario["i2c"]["motion"] = 0;
  scenario["i2c"]["wavelength"] = 480;
  scenario["i2c"]["turrets"][0]["gratings"][0]["start"] = -1500;
  return scenario;
}

// The library's pauses cost nothing here, so neither may what they wait for.
json Legacy(int fpga) {
  const json instrument = {{"motion", 0}, {"writeTime", 0}, {"fpga", fpga}};
  return {{"legacy", instrument}, {"detector", {{"pixels", 1024}}}};
}

using Kind = Oracle::Kind;
const CameraSweepCase kCases[] = {
    {{"LX", Kind::kFirmwareMoves, kControllerFailures, 200}, Controller("LX")},
    {{"MX", Kind::kFirmwareMoves, kControllerFailures, 100}, Controller("MX")},
    {{"SX", Kind::kSx, kSxFailures, 200}, Controller("SX")},
    {{"LxSteps", Kind::kLibrarySteps, kControllerFailures, 200}, Stepped()},
    {{"LegacyRegisters", Kind::kLegacy, 0, 200, false}, Legacy(23)},
    {{"LegacyBursts", Kind::kLegacy, 0, 200, false}, Legacy(22)},
};
INSTANTIATE_TEST_SUITE_P(Faults, CameraSweep, testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.plan.name; });

}  // namespace
