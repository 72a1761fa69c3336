#include "scenario/Scenario.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "controller/ControllerInstrument.h"
#include "legacy/LegacyInstrument.h"
#include "support/TemporaryDirectory.h"

namespace corvane::sim {
namespace {

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
      {R"({"i2c": {"faults": [{"error": "E01", "silence": true}]}})", "and only one"},
      {R"({"legacy": {"memory": {"patches": [{"bytes": [256]}]}}})", "legacy.memory.patches[0].bytes[0] must be"},
      {R"({"legacy": {"structureVersion": "1.0", "turrets": [{}]}})", "legacy.turrets are not in a record of this age"},
      {R"({"usb": [{}, {"vendorId": "136E"}]})", "usb[1].vendorId must be a USB identifier"},
      {R"({"transportFaults": [{"operation": 0}]})", "transportFaults[0].operation must be a whole number from 1"}};
  for (const auto& [text, place] : kMistakes) {
    const auto parse = [&scenario = text] { ParseScenario(scenario, "file", "/nowhere"); };
    EXPECT_THAT(parse, ThrowsMessage<ScenarioError>(HasSubstr(place))) << text;
  }
}

TEST(StateFile, WhatItHoldsOutlivesTheInstrumentOnlyInItsOwnWholeFile) {
  const TemporaryDirectory directory;
  InstrumentDescription description = DefaultInstrument("SX");
  description.stateFile = directory.Path() / "state.json";
  const auto load = [&] { const ControllerInstrument loaded(description); };
  ControllerInstrument instrument(description);
  instrument.MoveTo(612.5);
  instrument.SetFilter(2);
  instrument.WriteParameter(82, "5,\x01 \"x\" ");
  instrument.SetMountedTurret(kUnlistedTurret);
  const ControllerInstrument again(description);
  EXPECT_EQ(again.Stands().filter, 2);
  EXPECT_EQ(again.Parameters().Text(82), "5,\x01 \"x\" ");
  EXPECT_EQ(again.MountedTurret(), kUnlistedTurret);

  const std::string serial = std::exchange(description.serial, "OTHER");
  EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("belongs to instrument CV1001, not to OTHER")));
  description.serial = serial;
  std::ifstream file(description.stateFile);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  for (std::size_t length = 0; length + 2 < text.size(); length += 7) {
    directory.Write("state.json", text.substr(0, length));
    EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("delete the file"))) << length;
  }
  directory.Write("state.json", text.replace(text.find("\"filter\": 2"), 11, "\"filter\": 9"));
  EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("filter is out of range")));
  directory.Write("state.json", R"({"serial": "CV1001", "parameters": ["a"], "positions": {}})");
  EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("its parameters are damaged")));
}

}  // namespace
}  // namespace corvane::sim
