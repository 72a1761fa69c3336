// Reads the instrument sections of a scenario file, and what these share with the section of an older instrument.
#pragma once

#include <filesystem>
#include <vector>

#include "model/InstrumentDescription.h"
#include "scenario/JsonSection.h"

namespace corvane::sim {

/// Relative file names are taken from directory. Throws ScenarioError.
InstrumentDescription ReadInstrument(JsonSection section, const std::filesystem::path& directory);

/// The optical constants and the drive's polynomial, which every kind of instrument has in its record.
void ReadOptics(JsonSection& section, Record& record);

ReplyFault ReadReplyFault(JsonSection section);

std::vector<TransportFault> ReadTransportFaults(JsonSection& section, const char* key);

/// Empty stays empty.
std::string AbsoluteFile(const std::string& name, const std::filesystem::path& directory);

}  // namespace corvane::sim
