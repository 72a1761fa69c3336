// What the benchmarks share: two sides measured in turns within one Google Benchmark run, so that whatever else the
// machine does hits both, and limits that a figure must keep. A figure beyond its limit is reported as an error and
// makes the exit status 1.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvane {

using Clock = std::chrono::steady_clock;

inline void Require(bool condition, const char* what) {
  if (!condition) {
    throw std::runtime_error(what);
  }
}

inline double Seconds(Clock::duration duration) {
  return std::chrono::duration<double>(duration).count();
}

inline double Median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

struct Comparison {
  double library = 0;
  double bare = 0;
  /// Median of the rounds' own ratios: what else the machine does hits both sides of a round.
  double ratio = 0;
};

/// Measures both sides once in every iteration of the benchmark and shows the medians as counters.
inline Comparison InTurns(benchmark::State& state, const std::function<double()>& library,
                          const std::function<double()>& bare) {
  std::vector<double> libraryFigures;
  std::vector<double> bareFigures;
  std::vector<double> ratios;
  while (state.KeepRunning()) {
    libraryFigures.push_back(library());
    bareFigures.push_back(bare());
    ratios.push_back(libraryFigures.back() / bareFigures.back());
  }
  const Comparison figures{Median(libraryFigures), Median(bareFigures), Median(ratios)};
  state.counters["library"] = figures.library;
  state.counters["bare"] = figures.bare;
  state.counters["ratio"] = figures.ratio;
  return figures;
}

inline bool& AllWithinLimits() {
  static bool within = true;
  return within;
}

inline void Limit(benchmark::State& state, bool kept, const std::string& limit) {
  state.SetLabel(limit);
  if (!kept) {
    state.SkipWithError(("beyond its limit: " + limit).c_str());
    AllWithinLimits() = false;
  }
}

/// Compares a figure with its limit in a file of lines "figure <= value" or "figure >= value". Throws
/// std::runtime_error when the file has none of this name.
inline void LimitFromFile(benchmark::State& state, const std::string& path, const std::string& name, double figure) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string wanted;
    std::string relation;
    double limit = 0;
    if (words >> wanted >> relation >> limit && wanted == name) {
      Limit(state, relation == "<=" ? figure <= limit : figure >= limit, line + ", is " + std::to_string(figure));
      return;
    }
  }
  throw std::runtime_error("no limit for " + name);
}

inline int RunBenchmarks(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  return AllWithinLimits() ? 0 : 1;
}

}  // namespace corvane
