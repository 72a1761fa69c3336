// Reads the instrument sections of a scenario file. Used by Scenario only.
#pragma once

#include <filesystem>
#include <vector>

#include "controller/InstrumentDescription.h"
#include "controller/JsonSection.h"

namespace corvane::sim {

/// Relative file names are taken from directory. Throws ScenarioError.
InstrumentDescription ReadInstrument(JsonSection section, const std::filesystem::path& directory);

ReplyFault ReadReplyFault(JsonSection section);

std::vector<TransportFault> ReadTransportFaults(JsonSection& section, const char* key);

/// Empty stays empty.
std::string AbsoluteFile(const std::string& name, const std::filesystem::path& directory);

}  // namespace corvane::sim
