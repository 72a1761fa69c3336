// An older instrument behind the simulated camera SDK: its scenario, and what it really does.
#pragma once

#include <bit>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/Simulation.h"
#include "support/TemporaryDirectory.h"

class LegacyLaboratory {
 public:
  /// A whole scenario; an older instrument in it is made instantaneous where it does not say otherwise.
  explicit LegacyLaboratory(nlohmann::json scenario) {
    for (const char* const kind : {"legacy", "i2c"}) {
      if (scenario.contains(kind) && !scenario[kind].contains("motion")) {
        scenario[kind]["motion"] = 0;
      }
    }
    mFolder.Write("corvane-sim.json", scenario.dump());
    mSimulation.ArmFault(0, 0, 0);
  }

  std::string Directory() const { return mFolder.Path().string(); }
  const Simulation& Bus() const { return mSimulation; }

  nlohmann::json State() const {
    std::string text(mSimulation.State(0, nullptr, 0) + 1, '\0');
    mSimulation.State(0, text.data(), text.size());
    return nlohmann::json::parse(text.c_str());
  }

  std::uint8_t Byte(int page, int offset) const {
    unsigned char value = 0;
    if (mSimulation.Peek(0, 1 + page * kPageSize + offset, &value) != 0) {
      throw std::out_of_range("no such byte");
    }
    return value;
  }
  std::int32_t Int(int page, int offset) const {
    std::uint32_t word = 0;
    for (int i = 3; i >= 0; --i) {
      word = word << 8U | Byte(page, offset + i);
    }
    return static_cast<std::int32_t>(word);
  }
  float Float(int page, int offset) const { return std::bit_cast<float>(Int(page, offset)); }

  std::vector<std::uint8_t> Memory() const {
    std::vector<std::uint8_t> bytes;
    for (int place = 0; place < kPages * kPageSize; ++place) {
      bytes.push_back(Byte(place / kPageSize, place % kPageSize));
    }
    return bytes;
  }

  static constexpr int kPages = 6;
  static constexpr int kPageSize = 256;

 private:
  TemporaryDirectory mFolder;
  Simulation mSimulation;
};
