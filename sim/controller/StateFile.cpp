#include "controller/StateFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

namespace corvane::sim {
namespace {

using nlohmann::json;

void CheckRange(const char* name, std::int64_t value, std::int64_t low, std::int64_t high) {
  if (value < low || value > high) {
    throw std::runtime_error(std::string(name) + " is out of range");
  }
}

void CheckPositions(const InstrumentDescription& description, const Positions& positions) {
  const std::int64_t turn = std::int64_t{description.drive.totalSteps} * description.drive.microsteps;
  CheckRange("turret", positions.turret, 0, turn - 1);
  CheckRange("grating", positions.grating, 1, kMaxGratings);
  CheckRange("mountedTurret", positions.mountedTurret, 1, kUnlistedTurret);
  CheckRange("entrancePort", positions.entrancePort, 0, 1);
  CheckRange("exitPort", positions.exitPort, 0, 1);
  CheckRange("filter", positions.filter, 1, kFilters);
  CheckRange("focus", positions.focus, 0, description.parts.focusTotalSteps);
  CheckRange("portOutputs", positions.portOutputs, 0, 15);
  CheckRange("shutterMode", positions.shutterMode, 0, 1);
}

Positions FromJson(const json& state) {
  Positions positions;
  state.at("turret").get_to(positions.turret);
  state.at("grating").get_to(positions.grating);
  positions.mountedTurret = state.value("mountedTurret", positions.mountedTurret);
  state.at("entrancePort").get_to(positions.entrancePort);
  state.at("exitPort").get_to(positions.exitPort);
  state.at("filter").get_to(positions.filter);
  state.at("filterMode").get_to(positions.filterMode);
  state.at("focus").get_to(positions.focus);
  state.at("slitWidths").get_to(positions.slitWidths);
  state.at("slitModes").get_to(positions.slitModes);
  state.at("portOutputs").get_to(positions.portOutputs);
  state.at("shutterMode").get_to(positions.shutterMode);
  return positions;
}

json ToJson(const Positions& positions) {
  return {{"turret", positions.turret},
          {"grating", positions.grating},
          {"mountedTurret", positions.mountedTurret},
          {"entrancePort", positions.entrancePort},
          {"exitPort", positions.exitPort},
          {"filter", positions.filter},
          {"filterMode", positions.filterMode},
          {"focus", positions.focus},
          {"slitWidths", positions.slitWidths},
          {"slitModes", positions.slitModes},
          {"portOutputs", positions.portOutputs},
          {"shutterMode", positions.shutterMode}};
}

InstrumentMemory MemoryFromJson(const InstrumentDescription& description, const json& state) {
  InstrumentMemory memory;
  if (!description.KeepsTexts()) {
    if (!memory.bytes.FromHex(state.at("memory").get<std::string>())) {
      throw std::runtime_error("its memory image is damaged");
    }
    return memory;
  }
  const auto texts = state.at("parameters").get<std::vector<std::string>>();
  if (texts.size() != ParameterMemory::kSize) {
    throw std::runtime_error("its parameters are damaged");
  }
  for (int number = 0; number < ParameterMemory::kSize; ++number) {
    memory.parameters.SetText(number, texts[static_cast<std::size_t>(number)]);
  }
  return memory;
}

}  // namespace

bool LoadState(const InstrumentDescription& description, InstrumentMemory& memory, Positions& positions) {
  std::ifstream file(description.stateFile);
  if (!file) {
    return false;
  }
  try {
    const json state = json::parse(file);
    if (state.at("serial").get<std::string>() != description.serial) {
      throw std::runtime_error("it belongs to instrument " + state.at("serial").get<std::string>() + ", not to " +
                               description.serial);
    }
    const InstrumentMemory storedMemory = MemoryFromJson(description, state);
    const Positions storedPositions = FromJson(state.at("positions"));
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
  json state = {{"serial", description.serial}, {"positions", ToJson(positions)}};
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
