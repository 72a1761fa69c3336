// set and home: what changes an instrument.
#include <iostream>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Failure.h"
#include "Progress.h"
#include "PropertyArguments.h"
#include "Session.h"

namespace {

/// Runs `change`, which takes the device, and tells what has become of the property.
template <typename Change>
void RunChange(const Options& options, const PropertyArguments& arguments, const char* doing, Change change) {
  const Property& property = arguments.Which();
  const int index = arguments.Index();
  const Session session(options);
  const int device = session.Device();
  arguments.CheckIndex(device);
  RequirePresent(property, device, index);
  {
    const Progress progress(doing + Label(property, index));
    change(device);
  }
  const Json value = ReadProperty(property, device, index);
  if (session.Json()) {
    Print(Json{{Label(property, index), value}});
  } else {
    std::cout << Label(property, index) << " is now " << PlainText(value) << '\n';
  }
  if (session.Simulated() != nullptr && !session.Simulated()->KeepsState(device)) {
    std::cerr << "corvane: this simulated instrument forgets it when the program ends; its scenario has no \"state\"\n";
  }
}

}  // namespace

void RunSet(const Options& options, const Words& words) {
  const PropertyArguments arguments(words, 1);
  const Property& property = arguments.Which();
  if (property.set == nullptr) {
    throw Failure(ExitCode::kUsage, std::string(property.name) + " can only be read",
                  "corvane set --help lists others");
  }
  RunChange(options, arguments, "Setting ",
            [&](int device) { WriteProperty(property, device, arguments.Index(), arguments.Value()); });
}

void RunHome(const Options& options, const Words& words) {
  const PropertyArguments arguments(words, 0);
  const Property& property = arguments.Which();
  if (property.home == nullptr) {
    throw Failure(ExitCode::kUsage, std::string(property.name) + " has no home", "corvane home --help lists what has");
  }
  RunChange(options, arguments, "Homing ", [&](int device) { HomeProperty(property, device, arguments.Index()); });
}
