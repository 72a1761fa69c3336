// The record of what went over the wires of a simulation: protocol lines, and transfers where asked for. Kept in
// memory (the last few megabytes) and, where a file is named, written to it line by line. No time stamps, so that two
// runs of one program give one text.
#pragma once

#include <cstdint>
#include <deque>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace corvane::sim {

class SimulationLog {
 public:
  SimulationLog() = default;
  /// Throws std::runtime_error when the file cannot be written. An empty name keeps the log in memory only.
  SimulationLog(const std::string& file, bool transfers);

  /// `NAME > LINE`: a line from the host, without its carriage return.
  void FromHost(std::string_view name, std::string_view line);
  /// `NAME < REPLY`: control characters as \r, \n, \xNN.
  void ToHost(std::string_view name, std::string_view reply);
  /// `NAME OPERATION HEX STATUS`; dropped unless transfers are logged.
  void Transfer(std::string_view name, std::string_view operation, std::span<const std::uint8_t> bytes,
                std::string_view status);

  /// All lines kept, each ended by a line feed.
  std::string Text() const;

 private:
  void Append(std::string line);

  std::ofstream mFile;
  bool mTransfers = false;
  std::deque<std::string> mLines;
  std::size_t mSize = 0;
};

}  // namespace corvane::sim
