// Reads the instrument sections of a scenario file, and what these share with the section of an older instrument. All
// throw ScenarioError.
#pragma once

#include <filesystem>
#include <vector>

#include "model/InstrumentDescription.h"
#include "scenario/JsonSection.h"

namespace corvane::sim {

/// Milliseconds that anything simulated may take.
inline constexpr double kLongestTime = 600000.0;

/// Relative file names are taken from directory.
InstrumentDescription ReadInstrument(JsonSection section, const std::filesystem::path& directory);

/// "structureVersion"; 3.0 where it is absent.
StructureVersion ReadStructureVersion(JsonSection& section);

/// The optical constants and the drive's polynomial, which every kind of instrument has in its record.
void ReadOptics(JsonSection& section, Record& record);

/// "sine" of a record, the drive's periodic error; amplitude to both sides of 0.
void ReadSine(JsonSection& section, Record& record, double mostAmplitude, const Bounds& frequency);

/// grating has the values of absent keys. mostSteps: to both sides of 0.
Grating ReadGrating(JsonSection section, Grating grating, const Bounds& blaze, int mostSteps);

/// "bytes" of a memory patch, of which room fit.
std::vector<unsigned char> ReadBytes(JsonSection& section, int room);

ReplyFault ReadReplyFault(JsonSection section);

std::vector<TransportFault> ReadTransportFaults(JsonSection& section, const char* key);

/// Empty stays empty.
std::string AbsoluteFile(const std::string& name, const std::filesystem::path& directory);

}  // namespace corvane::sim
