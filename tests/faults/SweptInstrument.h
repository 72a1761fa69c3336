// The simulated instrument of a fault sweep: it is disturbed, and asked afterwards where it stands and what its record
// holds, past the library. Each test program attaches it in its own way.
#pragma once

#include <cmath>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

/// By the names that the simulation gives them; what nothing moves to is not in it.
using Stand = std::map<std::string, double>;
/// Stored values by the address or number of each: a value is never torn.
using StoredRecord = std::map<int, std::string>;

struct Fault {
  std::string name;
  /// Of the reply to a line, as in a scenario's "faults"; null: of a transfer.
  nlohmann::json reply;
  /// The line or the transfer, from 1, counted from the start.
  std::uint64_t number = 0;
  bool fromThenOn = false;
  /// Says something else than is so, in a form that is in order: what it says is passed on.
  bool isLie = false;
  /// The link comes back with the next opening only.
  bool isCut = false;
};

class SweptInstrument {
 public:
  virtual ~SweptInstrument() = default;

  virtual std::string Directory() const = 0;
  /// Puts a new instrument in place; it keeps its power over closing and opening. Counts start anew.
  virtual void Renew() = 0;
  virtual void Arm(const Fault& fault) = 0;
  /// Takes all faults away, and mends what they broke.
  virtual void Lift() = 0;

  /// Where everything stands, as the simulation tells it.
  virtual nlohmann::json State() = 0;
  virtual StoredRecord Record() = 0;
  /// Protocol lines so far; none of an older instrument.
  virtual std::vector<std::string> Lines() = 0;
  virtual std::uint64_t LineCount() = 0;
  virtual std::uint64_t Transfers() = 0;
  /// Transfers that faults have hit.
  virtual std::uint64_t TransferHits() = 0;

  struct Look {
    Stand stand;
    std::uint64_t hits = 0;  ///< transfers and lines that faults have hit
  };
  Look TakeLook() {
    const nlohmann::json state = State();
    Look look{{}, TransferHits() + state.value("disturbed", std::uint64_t{0})};
    const nlohmann::json places = state.flatten();
    for (const auto& [place, value] : places.items()) {
      if (value.is_number() && !IsCount(place)) {
        look.stand[place] = value.get<double>();
      }
    }
    return look;
  }

 private:
  /// Counters, and what follows from a place beside it.
  static bool IsCount(const std::string& place) {
    for (const char* const name : {"/step", "/disturbed", "/moves", "/moving", "/writes", "/nmPerStep", "/fromZero"}) {
      if (place.rfind(name, 0) == 0) {
        return true;
      }
    }
    return false;
  }
};
