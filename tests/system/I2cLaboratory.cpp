// The instrument behind the simulated camera SDK, which the library loads by itself.
#include <sstream>
#include <stdexcept>

#include "Laboratory.h"
#include "support/Simulation.h"
#include "support/TemporaryDirectory.h"

namespace {

class I2cLaboratory final : public Laboratory {
 public:
  explicit I2cLaboratory(nlohmann::json scenario) {
    scenario["i2c"] = scenario["instrument"];
    scenario.erase("instrument");
    mFolder.Write("corvane-sim.json", scenario.dump());
    mSimulation.ArmFault(0, 0, 0);
  }

  std::string Directory() const override { return mFolder.Path().string(); }

  std::vector<std::string> Lines() const override {
    std::string text(mSimulation.Log(nullptr, 0) + 1, '\0');
    mSimulation.Log(text.data(), text.size());
    std::vector<std::string> lines;
    std::istringstream stream(text);
    const std::string mark = "i2c > ";
    for (std::string line; std::getline(stream, line);) {
      if (line.rfind(mark, 0) == 0) {
        lines.push_back(line.substr(mark.size()));
      }
    }
    return lines;
  }

  std::uint8_t Peek(int address) const override {
    unsigned char value = 0;
    Check(mSimulation.Peek(0, address, &value));
    return value;
  }

  double TrueWavelength(double pixel) const override {
    double value = 0;
    Check(mSimulation.TrueWavelength(0, pixel, &value));
    return value;
  }

  double TrueCentre() const override {
    double value = 0;
    Check(mSimulation.TrueCentre(0, &value));
    return value;
  }

  void ArmReplyFault(const nlohmann::json& fault) override {
    Check(mSimulation.ArmReplyFault(0, fault.dump().c_str()));
  }
  std::size_t OpeningLines() const override { return 2; }
  bool HasDetector() const override { return true; }

 private:
  static void Check(int status) {
    if (status != 0) {
      throw std::runtime_error("simulation answers " + std::to_string(status));
    }
  }

  TemporaryDirectory mFolder;
  Simulation mSimulation;
};

}  // namespace

std::unique_ptr<Laboratory> MakeLaboratory(nlohmann::json scenario) {
  return std::make_unique<I2cLaboratory>(std::move(scenario));
}
