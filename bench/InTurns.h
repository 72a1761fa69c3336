// What the benchmarks share: two sides measured in turns in one process, so that whatever else the machine does hits
// both; and the command line. PROGRAM [--check] [--rounds N]: with --check the exit status is 1 when a figure is beyond
// its limit.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string_view>
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

inline Comparison InTurns(int rounds, const std::function<double()>& library, const std::function<double()>& bare) {
  std::vector<double> libraryFigures;
  std::vector<double> bareFigures;
  std::vector<double> ratios;
  for (int round = 0; round < rounds; ++round) {
    libraryFigures.push_back(library());
    bareFigures.push_back(bare());
    ratios.push_back(libraryFigures.back() / bareFigures.back());
  }
  return {Median(libraryFigures), Median(bareFigures), Median(ratios)};
}

/// Runs benchmarks, each of which prints its figures and answers whether they keep within their limits.
inline int RunBenchmarks(int argc, char** argv, const std::vector<std::function<bool(int rounds)>>& benchmarks) {
  bool check = false;
  int rounds = 9;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--check") {
      check = true;
    } else if (argument == "--rounds" && i + 1 < argc) {
      rounds = std::max(1, std::atoi(argv[++i]));
    } else {
      std::fprintf(stderr, "usage: %s [--check] [--rounds N]\n", argv[0]);
      return EXIT_FAILURE;
    }
  }
  try {
    bool kept = true;
    for (const auto& benchmark : benchmarks) {
      kept = benchmark(rounds) && kept;
    }
    return !check || kept ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return EXIT_FAILURE;
  }
}

}  // namespace corvane
