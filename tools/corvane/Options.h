// The options that every subcommand shares.
#pragma once

#include <string>

struct Options {
  std::string simulate;   ///< scenario name or directory; empty: real instruments
  std::string directory;  ///< handed to the camera SDK
  int device = 0;
  bool json = false;
};
