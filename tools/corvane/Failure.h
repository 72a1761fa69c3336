// How the program ends when something goes wrong: exit codes, and the exception that carries one with its message.
#pragma once

#include <stdexcept>
#include <string>

#include "CorvaneCIF.h"

/// Documented in docs/simulation.md and in the program's help.
enum class ExitCode {
  kSuccess = 0,
  kInstrument = 1,  ///< an instrument could not be reached, refused, or lacks the part
  kUsage = 2,       ///< the command line, or a value out of range
  kNotFound = 3,    ///< no instrument, or none of that number
  kSimulation = 4,  ///< the simulation could not be set up
  kLibrary = 5      ///< the library itself or the output failed
};

class Failure : public std::runtime_error {
 public:
  /// message: what went wrong. advice: what to do about it; may be empty. status: of the library, where a call to it
  /// failed.
  Failure(ExitCode code, const std::string& message, std::string advice = "", unsigned int status = CORVANE_SUCCESS)
      : std::runtime_error(message), mCode(code), mAdvice(std::move(advice)), mStatus(status) {}

  ExitCode Code() const { return mCode; }
  const std::string& Advice() const { return mAdvice; }
  unsigned int Status() const { return mStatus; }

 private:
  ExitCode mCode;
  std::string mAdvice;
  unsigned int mStatus;
};
