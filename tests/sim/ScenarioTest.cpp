#include "controller/Scenario.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "controller/Instrument.h"
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
    EXPECT_TRUE(scenario.i2c || !scenario.usb.empty()) << entry.path();
    if (scenario.i2c) {
      const Instrument instrument(*scenario.i2c);
      EXPECT_NEAR(*instrument.Wavelength(), scenario.i2c->wavelength, 1e-3) << entry.path();
      EXPECT_NEAR(*instrument.TrueCentre(), scenario.i2c->wavelength, 1e-3) << entry.path();
    }
  }
  EXPECT_EQ(count, 12);
}

TEST(Scenario, WithoutAFileTheDefaultIsTheShippedOne) {
  const TemporaryDirectory directory;
  const std::string shipped = Instrument(*LoadScenario(SCENARIOS "/lx").i2c).Memory().ToHex();
  EXPECT_EQ(Instrument(*LoadScenario(directory.Path()).i2c).Memory().ToHex(), shipped);
  EXPECT_EQ(Instrument(*ParseScenario(R"({"i2c": {}})", "file", "").i2c).Memory().ToHex(), shipped);
  EXPECT_THROW(LoadScenario(directory.Path() / "missing"), ScenarioError);
}

TEST(Scenario, MistakesAreReportedWithTheirPlace) {
  constexpr const char* kMistakes[][2] = {
      {"{", "file: "},
      {R"({"i2C": {}})", "file: i2C is not known here (known: i2c"},
      {R"({"i2c": {"record": {"tilt": "6"}}})", "i2c.record.tilt must be a number from -89 to 89"},
      {R"({"i2c": {"structureVersion": "2.0", "turrets": [{"gratings": [{"blaze": "12500"}]}]}})",
       "i2c.turrets[0].gratings[0].blaze must be a text of at most 4"},
      {R"({"i2c": {"drive": {"totalSteps": 4294968000}}})", "i2c.drive.totalSteps must be"},
      {R"({"i2c": {"record": {"sine": {"amplitude": 200}}}})", "i2c.record.sine turns the drive back"},
      {R"({"i2c": {"wavelength": 2000}})", "i2c.wavelength is beyond"},
      {R"({"i2c": {"turrets": [{"gratings": [{}]}], "grating": 2}})", "i2c.grating must be one of the 1"},
      {R"({"i2c": {"faults": [{"error": "E01", "silence": true}]}})", "and only one"},
      {R"({"usb": [{}, {"vendorId": "136E"}]})", "usb[1].vendorId must be a USB identifier"},
      {R"({"transportFaults": [{"operation": 0}]})", "transportFaults[0].operation must be a whole number from 1"}};
  for (const auto& [text, place] : kMistakes) {
    const auto parse = [&scenario = text] { ParseScenario(scenario, "file", "/nowhere"); };
    EXPECT_THAT(parse, ThrowsMessage<ScenarioError>(HasSubstr(place))) << text;
  }
}

TEST(StateFile, MemoryAndPositionsOutliveTheInstrumentOnlyInItsOwnWholeFile) {
  const TemporaryDirectory directory;
  InstrumentDescription description = DefaultInstrument();
  description.stateFile = directory.Path() / "state.json";
  const auto load = [&] { const Instrument loaded(description); };
  Instrument instrument(description);
  instrument.MoveTo(612.5);
  instrument.WriteMemory(400, 99);
  instrument.SetFilter(2);
  const Instrument again(description);
  EXPECT_NEAR(*again.Wavelength(), 612.5, 1e-3);
  EXPECT_EQ(again.Memory().Byte(400), 99);
  EXPECT_EQ(again.Stands().filter, 2);

  description.serial = "OTHER";
  EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("belongs to instrument CV1001, not to OTHER")));
  description.serial = "CV1001";
  std::ifstream file(description.stateFile);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  for (std::size_t length = 0; length + 2 < text.size(); length += 7) {
    directory.Write("state.json", text.substr(0, length));
    EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("delete the file"))) << length;
  }
  directory.Write("state.json", text.replace(text.find("\"filter\": 2"), 11, "\"filter\": 9"));
  EXPECT_THAT(load, ThrowsMessage<std::runtime_error>(HasSubstr("filter is out of range")));
}

}  // namespace
}  // namespace corvane::sim
