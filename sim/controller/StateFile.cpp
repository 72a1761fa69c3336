#include "controller/StateFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

#include "controller/ControllerInstrument.h"
#include "model/Limits.h"
#include "model/StrictJson.h"

namespace corvane::sim {

// The keys of the positions in a state file are their names here.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Positions, turret, grating, mountedTurret, entrancePort, exitPort, filter,
                                   filterMode, focus, slitWidths, slitModes, portOutputs, shutterMode)

namespace {

using nlohmann::json;

void Require(bool isSound, const std::string& problem) {
  if (!isSound) {
    throw std::runtime_error(problem);
  }
}

/// Conversion cuts decimals, wraps large numbers and passes over what it does not know; here none of that is positions.
Positions ReadPositions(const json& stored) {
  const json values = stored.flatten();
  for (const auto& [place, value] : values.items()) {
    Require(value.is_number_integer() || value.is_string(),
            "positions" + place + " is neither a whole number nor a text");
  }
  auto positions = stored.get<Positions>();
  const json understood = positions;
  for (const auto& [key, value] : stored.items()) {
    Require(understood.contains(key) && understood[key] == value, key + " is not known or out of range");
  }
  return positions;
}

void CheckPositions(const InstrumentDescription& description, const Positions& positions) {
  const std::int64_t turn = std::int64_t{description.drive.totalSteps} * description.drive.microsteps;
  const struct {
    const char* name;
    int value;
    Limits limits;
  } bounded[] = {
      {"grating", positions.grating, kGratingNumbers},
      {"entrancePort", positions.entrancePort, kPortNumbers},
      {"exitPort", positions.exitPort, kPortNumbers},
      {"filter", positions.filter, kFilterNumbers},
      {"focus", positions.focus, {0, description.parts.focusTotalSteps}},
      {"portOutputs", positions.portOutputs, kLinePatterns},
      {"shutterMode", positions.shutterMode, kShutterModes},
  };
  for (const auto& [name, value, limits] : bounded) {
    Require(limits.Hold(value), std::string(name) + " is out of range");
  }
  for (const int width : positions.slitWidths) {
    Require(kWideSlit.Hold(width), "slitWidths is out of range");
  }
  Require(positions.turret >= 0 && positions.turret < turn, "turret is out of range");
  Require(kTurretNumbers.Hold(positions.mountedTurret) || positions.mountedTurret == kUnlistedTurret,
          "mountedTurret is out of range");
}

InstrumentMemory ReadMemory(const InstrumentDescription& description, const json& state) {
  InstrumentMemory memory;
  if (!description.KeepsTexts()) {
    Require(memory.bytes.FromHex(state.at("memory").get<std::string>()), "its memory image is damaged");
    return memory;
  }
  const auto texts = state.at("parameters").get<std::vector<std::string>>();
  Require(texts.size() == ParameterMemory::kSize, "its parameters are damaged");
  for (int number = 0; number < ParameterMemory::kSize; ++number) {
    memory.parameters.SetText(number, texts[static_cast<std::size_t>(number)]);
  }
  return memory;
}

}  // namespace

std::string StateText(const ControllerInstrument& instrument, int disturbed) {
  json state = instrument.Stands();
  state.erase("turret");
  state["mountedTurret"] = instrument.MountedTurret();
  state["step"] = instrument.Step();
  const std::optional<double> firmware = instrument.Wavelength();
  const std::optional<double> truth = instrument.TrueCentre();
  state["firmwareWavelength"] = firmware ? json(*firmware) : json(nullptr);
  state["wavelength"] = truth ? json(*truth) : json(nullptr);
  state["disturbed"] = disturbed;
  return state.dump();
}

bool LoadState(const InstrumentDescription& description, InstrumentMemory& memory, Positions& positions) {
  std::ifstream file(description.stateFile);
  if (!file) {
    return false;
  }
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  try {
    const json state = ParseStrictly(text, JsonComments::kNone);
    const auto serial = state.at("serial").get<std::string>();
    Require(serial == description.serial, "it belongs to instrument " + serial + ", not to " + description.serial);
    const InstrumentMemory storedMemory = ReadMemory(description, state);
    const Positions storedPositions = ReadPositions(state.at("positions"));
    CheckPositions(description, storedPositions);
    memory = storedMemory;
    positions = storedPositions;
    return true;
  } catch (const std::exception& problem) {
    throw std::runtime_error("state file " + description.stateFile + ": " + problem.what() +
                             " (delete the file to start afresh)");
  }
}

void SaveState(const InstrumentDescription& description, const InstrumentMemory& memory, const Positions& positions) {
  json state = {{"serial", description.serial}, {"positions", positions}};
  if (description.KeepsTexts()) {
    state["parameters"] = memory.parameters.Texts();
  } else {
    state["memory"] = memory.bytes.ToHex();
  }
  // Written aside and moved into place, so that a program that dies here leaves the old state whole.
  const std::string aside = description.stateFile + ".new";
  {
    std::ofstream file(aside);
    file << state.dump(1, ' ', false, json::error_handler_t::replace) << '\n';
    if (!file.flush()) {
      std::cerr << "corvane simulation: cannot write state file " << aside << '\n';
      return;
    }
  }
  std::error_code error;
  std::filesystem::rename(aside, description.stateFile, error);
  if (error) {
    std::cerr << "corvane simulation: cannot write state file " << description.stateFile << ": " << error.message()
              << '\n';
  }
}

}  // namespace corvane::sim
