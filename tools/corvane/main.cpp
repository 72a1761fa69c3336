// corvane: finds spectrographs and drives them from the command line, through the library's exported functions only.
#include <iostream>

#include "Commands.h"
#include "Failure.h"

namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 the instrument could not be reached, refused, or lacks the part; 2 wrong command line or\n"
    "value; 3 no such instrument; 4 the simulation could not be set up; 5 the library or the output failed.\n"
    "Without hardware: corvane --simulate lx info";

int Run(int argc, char** argv) {
  Options options;
  CLI::App app("Drives Corvane spectrographs.", "corvane");
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(kExitCodes);
  CLI::Option* const simulate = app.add_option(
      "--simulate", options.simulate, "Use a simulated instrument: a shipped scenario (lx, mx, ...) or a directory");
  app.add_option("--directory", options.directory, "Configuration directory of the camera SDK")->excludes(simulate);
  app.add_option("--device", options.device, "Instrument, counted from 0 as list shows them");
  app.add_flag("--json", options.json, "Print JSON");
  AddListCommand(app, options);
  AddInfoCommand(app, options);
  AddGetCommand(app, options);
  AddSetCommand(app, options);
  AddCalibrateCommand(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const int code = app.exit(error);
    return static_cast<int>(code == 0 ? ExitCode::kSuccess : ExitCode::kUsage);
  }
  std::cout.flush();
  return static_cast<int>(std::cout ? ExitCode::kSuccess : ExitCode::kLibrary);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
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
