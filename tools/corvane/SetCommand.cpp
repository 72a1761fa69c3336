#include <iostream>
#include <memory>

#include "Commands.h"
#include "Failure.h"
#include "Progress.h"
#include "PropertyArguments.h"
#include "Session.h"

namespace {

void RunSet(const Options& options, const std::vector<std::string>& words) {
  const PropertyArguments arguments(words, 1);
  const Property& property = arguments.Which();
  if (property.set == nullptr) {
    throw Failure(ExitCode::kUsage, std::string(property.name) + " can only be read");
  }
  const Session session(options);
  const int device = session.Device();
  arguments.CheckIndex(device);
  if (!IsPresent(property, device, arguments.Index())) {
    throw Failure(ExitCode::kInstrument, "the instrument has no " + Label(property, arguments.Index()),
                  "corvane info lists its parts");
  }
  {
    const Progress progress("Setting " + Label(property, arguments.Index()));
    WriteProperty(property, device, arguments.Index(), arguments.Value());
  }
  const Json value = ReadProperty(property, device, arguments.Index());
  if (session.Json()) {
    Print(Json{{Label(property, arguments.Index()), value}});
  } else {
    std::cout << Label(property, arguments.Index()) << " is now "
              << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
  }
  if (session.Simulated() != nullptr && !session.Simulated()->KeepsState()) {
    std::cerr << "corvane: this simulated instrument forgets it when the program ends; its scenario has no \"state\"\n";
  }
}

}  // namespace

void AddSetCommand(CLI::App& app, const Options& options) {
  CLI::App* const set = app.add_subcommand("set", "Set a property and wait until it is done");
  const auto words = std::make_shared<std::vector<std::string>>();
  set->add_option("property", *words, "Its name, where it has several which one, and the new value")
      ->expected(2, 3)
      ->required()
      ->type_name("PROPERTY [INDEX] VALUE");
  set->footer(PropertyHelp(true));
  set->callback([&options, words] { RunSet(options, *words); });
}
