// What the subcommands do. Each throws Failure; how their words and options are written is in CommandLine.cpp.
#pragma once

#include <string>
#include <vector>

#include "Options.h"

/// The words of get, set and home: property, index where there are several, value for set.
using Words = std::vector<std::string>;

struct CalibrateOptions {
  std::string format = "text";
  float centre = -1.0F;
  int pixels = 0;
  float pixelWidth = 0.0F;
  std::vector<int> range;
  std::vector<int> only;
  bool truth = false;
};

void RunList(const Options& options);
void RunInfo(const Options& options);
void RunGet(const Options& options, const Words& words);
void RunSet(const Options& options, const Words& words);
void RunHome(const Options& options, const Words& words);
void RunCalibrate(const Options& options, const CalibrateOptions& wanted);
