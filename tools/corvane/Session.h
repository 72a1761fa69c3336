// The library, open: simulation put in place where asked for, initialised, one instrument chosen; closed at the end.
// Subcommands reach the library's functions through Check, which turns a status into an explanation.
#pragma once

#include <optional>
#include <string>

#include "CorvaneCIF.h"
#include "Options.h"
#include "Simulation.h"

class Session {
 public:
  /// Throws Failure.
  explicit Session(const Options& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  int NumberDevices() const { return mNumberDevices; }
  /// The chosen device. Throws Failure when there is none of that number.
  int Device() const;
  /// Null on real instruments.
  const Simulation* Simulated() const { return mSimulation ? &*mSimulation : nullptr; }
  bool Json() const { return mOptions.json; }

 private:
  Options mOptions;
  std::optional<Simulation> mSimulation;
  int mNumberDevices = 0;
};

/// Throws Failure unless status is CORVANE_SUCCESS. doing: what was tried, for example "reading the wavelength".
void Check(unsigned int status, const std::string& doing = "");

/// The serial number, without what follows its end; empty when it cannot be read.
std::string SerialNumber(int device);
