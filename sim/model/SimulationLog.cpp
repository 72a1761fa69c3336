#include "model/SimulationLog.h"

#include <stdexcept>

namespace corvane::sim {
namespace {

constexpr std::size_t kKept = 4UL << 20U;
constexpr std::string_view kDigits = "0123456789ABCDEF";

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '\r') {
      escaped += "\\r";
    } else if (character == '\n') {
      escaped += "\\n";
    } else if (character == '\\') {
      escaped += "\\\\";
    } else if (byte < 0x20 || byte > 0x7E) {
      escaped += {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 15U]};
    } else {
      escaped += character;
    }
  }
  return escaped;
}

}  // namespace

SimulationLog::SimulationLog(const std::string& file, bool transfers) : mTransfers(transfers) {
  if (!file.empty()) {
    mFile.open(file);
    if (!mFile) {
      throw std::runtime_error("cannot write log file " + file);
    }
  }
}

void SimulationLog::FromHost(std::string_view name, std::string_view line) {
  Append(std::string(name) + " > " + Escaped(line));
}

void SimulationLog::ToHost(std::string_view name, std::string_view reply) {
  Append(std::string(name) + " < " + Escaped(reply));
}

void SimulationLog::Transfer(std::string_view name, std::string_view operation, std::span<const std::uint8_t> bytes,
                             std::string_view status) {
  if (!mTransfers) {
    return;
  }
  std::string line = std::string(name) + " " + std::string(operation) + " ";
  for (const std::uint8_t byte : bytes) {
    line += {kDigits[byte >> 4U], kDigits[byte & 15U]};
  }
  Append(line + " " + std::string(status));
}

void SimulationLog::Append(std::string line) {
  line += '\n';
  if (mFile.is_open()) {
    mFile << line << std::flush;
  }
  mSize += line.size();
  mLines.push_back(std::move(line));
  while (mSize > kKept) {
    mSize -= mLines.front().size();
    mLines.pop_front();
  }
}

std::string SimulationLog::Text() const {
  std::string text;
  text.reserve(mSize);
  for (const std::string& line : mLines) {
    text += line;
  }
  return text;
}

}  // namespace corvane::sim
