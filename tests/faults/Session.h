// An ordinary session (initialise, move, calibrate, close) that is run again and again with one transfer failing, and
// the rules that hold after each run whatever failed. Links the library's objects and not the shared library, so that
// the pauses between reply lines cost nothing.
#pragma once

#include <string>
#include <vector>

struct SessionResult {
  bool found = false;
  /// Status of every call in order, under its name.
  std::vector<std::pair<std::string, unsigned int>> calls;
  float wavelength = 0;
  std::vector<float> calibration;
  int offset = 0;

  bool AllSucceeded() const;
  bool SameResults(const SessionResult& other) const;
};

/// Runs a session. Fails the running test when a status is not a defined one or a failing call wrote an output.
SessionResult RunSession(const std::string& directory);

/// Descriptors that this process has open, and its threads.
int OpenDescriptors();
int Threads();
