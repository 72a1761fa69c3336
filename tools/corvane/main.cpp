// corvane: finds spectrographs and drives them from the command line, through the library's exported functions only.
#include <iostream>

#include "CommandLine.h"
#include "Failure.h"

namespace {

ExitCode Run(int argc, char** argv) {
  const ExitCode code = RunCommandLine(argc, argv);
  std::cout.flush();
  return std::cout || code != ExitCode::kSuccess ? code : ExitCode::kLibrary;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return static_cast<int>(Run(argc, argv));
  } catch (const Failure& failure) {
    std::cerr << "corvane: " << failure.what() << '\n';
    if (!failure.Advice().empty()) {
      std::cerr << "  " << failure.Advice() << '\n';
    }
    return static_cast<int>(failure.Code());
  } catch (const std::exception& error) {
    std::cerr << "corvane: " << error.what() << '\n';
    return static_cast<int>(ExitCode::kLibrary);
  }
}
