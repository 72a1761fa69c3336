// The only file that knows CLI11, whose templates take the compiler longer than all commands together.
#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "PropertyArguments.h"

namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 the instrument could not be reached, refused, or lacks the part; 2 wrong command line or\n"
    "value; 3 no such instrument; 4 the simulation could not be set up; 5 the library or the output failed.\n"
    "Without hardware: corvane --simulate lx info";

/// What the words on the command line go into; each command has one set of them.
struct Wanted {
  Options options;
  Words words;
  CalibrateOptions calibrate;
};

struct PropertyCommand {
  const char* name;
  const char* help;
  const char* words;
  const char* wordsHelp;
  int fewest;
  int most;
  bool (*listed)(const Property&);
  void (*run)(const Options& options, const Words& words);
};

constexpr PropertyCommand kPropertyCommands[] = {
    {"get", "Read a property, or all of them", "PROPERTY [INDEX]", "Its name and, where it has several, which one", 0,
     2, [](const Property&) { return true; }, RunGet},
    {"set", "Set a property and wait until it is done", "PROPERTY [INDEX] VALUE",
     "Its name, where it has several which one, and the new value", 2, 3,
     [](const Property& property) { return property.set != nullptr; }, RunSet},
    {"home", "Send a drive to its reference and wait until it is there", "PROPERTY [INDEX]",
     "What the drive sets and, where it has several, which one", 1, 2,
     [](const Property& property) { return property.home != nullptr; }, RunHome}};

void AddPropertyCommand(CLI::App& app, const PropertyCommand& command, Wanted& wanted) {
  CLI::App* const added = app.add_subcommand(command.name, command.help);
  added->add_option("property", wanted.words, command.wordsHelp)
      ->expected(command.fewest, command.most)
      ->required(command.fewest > 0)
      ->type_name(command.words);
  added->footer(PropertyHelp(command.listed));
  added->callback([run = command.run, &wanted] { run(wanted.options, wanted.words); });
}

void AddCalibrate(CLI::App& app, Wanted& all) {
  CalibrateOptions& wanted = all.calibrate;
  CLI::App* const calibrate = app.add_subcommand("calibrate", "Give a wavelength to every detector pixel");
  calibrate->add_option("--format", wanted.format, "text (an overview), csv or json")
      ->check(CLI::IsMember({"text", "csv", "json"}));
  calibrate->add_flag_callback(
      "--csv", [&wanted] { wanted.format = "csv"; }, "The same as --format csv");
  calibrate->add_option("--centre,--center", wanted.centre, "Move to this wavelength (nm) first")
      ->check(CLI::NonNegativeNumber);
  calibrate->add_option("--pixels", wanted.pixels, "Pixels of the detector, where no camera tells")
      ->check(CLI::PositiveNumber);
  calibrate->add_option("--pixel-width", wanted.pixelWidth, "Width of a pixel in um, where no camera tells")
      ->check(CLI::PositiveNumber);
  CLI::Option* const range =
      calibrate->add_option("--range", wanted.range, "First and last pixel to show, from 1")->expected(2);
  calibrate->add_option("--pixel", wanted.only, "Show these pixels only")->delimiter(',')->excludes(range);
  calibrate->add_flag("--truth", wanted.truth, "Beside it, where the light of the simulated instrument really falls");
  calibrate->callback([&all] { RunCalibrate(all.options, all.calibrate); });
}

}  // namespace

ExitCode RunCommandLine(int argc, char** argv) {
  Wanted wanted;
  Options& options = wanted.options;
  CLI::App app("Drives Corvane spectrographs.", "corvane");
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(kExitCodes);
  CLI::Option* const simulate =
      app.add_option("--simulate", options.simulate,
                     "Use a simulated instrument: a shipped scenario (lx, mx, sx, ...) or a directory");
  app.add_option("--directory", options.directory, "Configuration directory of the camera SDK")->excludes(simulate);
  app.add_option("--device", options.device, "Instrument, counted from 0 as list shows them");
  app.add_flag("--json", options.json, "Print JSON");
  app.add_subcommand("list", "List the instruments found")->callback([&options] { RunList(options); });
  app.add_subcommand("info", "Show an instrument: where it stands, its gratings, optics and parts")
      ->callback([&options] { RunInfo(options); });
  for (const PropertyCommand& command : kPropertyCommands) {
    AddPropertyCommand(app, command, wanted);
  }
  AddCalibrate(app, wanted);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? ExitCode::kSuccess : ExitCode::kUsage;
  }
  return ExitCode::kSuccess;
}
