#include "scenario/Scenario.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "controller/ControllerInstrument.h"
#include "legacy/LegacyInstrument.h"
#include "support/TemporaryDirectory.h"

namespace corvane::sim {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(Scenario, EveryShippedOneDescribesAWorkingInstrument) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS)) {
    if (!entry.is_directory()) {
      continue;
    }
    ++count;
    const Scenario scenario = LoadScenario(entry.path());
    EXPECT_TRUE(scenario.i2c || scenario.legacy || !scenario.usb.empty()) << entry.path();
    if (scenario.legacy && !scenario.legacy->drivePosition) {
      EXPECT_NEAR(*LegacyInstrument(*scenario.legacy).TrueCentre(), scenario.legacy->wavelength, 0.02) << entry.path();
    }
    if (scenario.i2c) {
      const ControllerInstrument instrument(*scenario.i2c);
      EXPECT_NEAR(*instrument.Wavelength(), scenario.i2c->wavelength, 1e-3) << entry.path();
      EXPECT_NEAR(*instrument.TrueCentre(), scenario.i2c->wavelength, 1e-3) << entry.path();
    }
  }
  EXPECT_GE(count, 16);
}

TEST(Scenario, MistakesAreReportedWithTheirPlace) {
  constexpr const char* kMistakes[][2] = {
      {"{", "file: "},
      {R"({"i2C": {}})", "file: i2C is not known here (known: i2c"},
      {R"({"i2c": {"record": {"tilt": "6"}}})", "i2c.record.tilt must be a number from -89 to 89"},
      {R"({"i2c": {"structureVersion": "2.0", "turrets": [{"gratings": [{"blaze": "12500"}]}]}})",
       "i2c.turrets[0].gratings[0].blaze must be a text of at most 4"},
      {R"({"i2c": {"record": {"sine": {"amplitude": 200}}}})", "i2c.record.sine turns the drive back"},
      {R"({"i2c": {"model": "SX", "parts": {"entranceFlipper": true}}})", "entranceFlipper is nothing that an SX"},
      {R"({"i2c": {"model": "SX", "memory": {"patches": []}}})", "memory.patches are not in the memory of this model"},
      {R"({"i2c": {"memory": {"patches": [{"address": 1024, "bytes": [1, 2]}]}}})",
       "bytes must be a list [ ] of 0 to 1"},
      {R"({"i2c": {"structureVersion": "10.0"}})", R"(structureVersion must be major.minor, from "1.0" to "9.99")"},
      {R"({"i2c": {"faults": [{"error": "E01", "silence": true}]}})", "and only one"},
      {R"({"i2c": {"faults": [{"command": "MOVETO?", "error": "E01"}]}})", "i2c.faults[0].command must be a word"},
      {R"({"i2c": {"faults": [{"error": "E1"}]}})", "i2c.faults[0].error must be an error word"},
      {R"({"legacy": {"memory": {"patches": [{"bytes": [256]}]}}})", "legacy.memory.patches[0].bytes[0] must be"},
      {R"({"legacy": {"structureVersion": "1.0", "turrets": [{}]}})", "legacy.turrets are not in a record of this age"},
      {R"({"usb": [{}, {"vendorId": "136E"}]})", "usb[1].vendorId must be a USB identifier"},
      {R"({"usb": [{}, {"serial": "A", "serial": "B"}]})", "usb[1].serial is given twice"},
      {R"({"transportFaults": [{"operation": 0}]})", "transportFaults[0].operation must be a whole number from 1"}};
  for (const auto& [text, place] : kMistakes) {
    const auto parse = [&scenario = text] { ParseScenario(scenario, "file", "/nowhere"); };
    EXPECT_THAT(parse, ThrowsMessage<ScenarioError>(HasSubstr(place))) << text;
  }
}

struct StateFile : testing::Test {
  StateFile() {
    description.stateFile = directory.Path() / "state.json";
    ControllerInstrument instrument(description);
    instrument.WriteParameter(82, kLabel);
    instrument.SetFilter(2);
    std::ifstream file(description.stateFile);
    text.assign(std::istreambuf_iterator<char>(file), {});
  }

  void ExpectRefused(const std::string& content, const char* reason) const {
    directory.Write("state.json", content);
    const auto load = [&] { const ControllerInstrument loaded(description); };
    EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(reason), HasSubstr("delete the file"))));
  }

  static constexpr const char* kLabel = "5,\x01 \"x\" ";
  TemporaryDirectory directory;
  InstrumentDescription description = DefaultInstrument("SX");
  std::string text;
};

TEST_F(StateFile, OutlivesTheInstrument) {
  const ControllerInstrument again(description);
  EXPECT_EQ(again.Stands().filter, 2);
  EXPECT_EQ(again.Parameters().Text(82), kLabel);
}

TEST_F(StateFile, OfAnotherInstrumentIsRefused) {
  description.serial = "OTHER";
  ExpectRefused(text, "belongs to instrument CV1001, not to OTHER");
}

TEST_F(StateFile, CutAnywhereIsRefused) {
  for (std::size_t length = 0; length + 2 < text.size(); length += 7) {
    ExpectRefused(text.substr(0, length), "parse error");
  }
}

TEST_F(StateFile, WithContentsThatNoInstrumentWritesIsRefused) {
  const std::string filter = "\"filter\": ";
  constexpr const char* kSpoiled[][2] = {{"9", "filter is out of range"},
                                         {"2.5", "positions/filter is neither a whole number nor a text"},
                                         {"4294967298", "filter is not known or out of range"},
                                         {"2, \"filter\": 3", "positions.filter is given twice"},
                                         {"2, \"fliter\": 3", "fliter is not known"}};
  for (const auto& [value, reason] : kSpoiled) {
    std::string spoiled = text;
    ExpectRefused(spoiled.replace(spoiled.find(filter), filter.size() + 1, filter + value), reason);
  }
  ExpectRefused(R"({"serial": "CV1001", "parameters": ["a"], "positions": {}})", "its parameters are damaged");
}

}  // namespace
}  // namespace corvane::sim
