#include <iostream>
#include <memory>

#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "PropertyArguments.h"
#include "Session.h"

namespace {

std::string Text(const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? "on" : "off";
  }
  std::string text;
  if (value.is_structured()) {
    for (const auto& item : value.items()) {
      text += (text.empty() ? "" : ", ") + (value.is_object() ? item.key() + " " : "") + item.value().dump();
    }
    return text;
  }
  return value.dump();
}

/// Everything that the instrument has; what it has but cannot tell is null.
Json ReadAll(int device) {
  Json all = Json::object();
  for (const Property& property : Properties()) {
    const int last = Indices(property, device);
    for (int index = property.index == nullptr ? 0 : 1; index <= last; ++index) {
      if (!IsPresent(property, device, index)) {
        continue;
      }
      try {
        all[Label(property, index)] = ReadProperty(property, device, index);
      } catch (const Failure&) {
        all[Label(property, index)] = nullptr;
      }
    }
  }
  return all;
}

void RunGet(const Options& options, const std::vector<std::string>& words) {
  if (words.empty()) {
    const Session session(options);
    const Json all = ReadAll(session.Device());
    if (session.Json()) {
      Print(all);
      return;
    }
    for (const auto& item : all.items()) {
      PrintField(item.key(), item.value().is_null() ? "cannot be read" : Text(item.value()));
    }
    return;
  }
  const PropertyArguments arguments(words, 0);
  const Session session(options);
  const int device = session.Device();
  arguments.CheckIndex(device);
  const Json value = ReadProperty(arguments.Which(), device, arguments.Index());
  if (session.Json()) {
    Print(Json{{Label(arguments.Which(), arguments.Index()), value}});
  } else {
    std::cout << Text(value) << '\n';
  }
}

}  // namespace

void AddGetCommand(CLI::App& app, const Options& options) {
  CLI::App* const get = app.add_subcommand("get", "Read a property, or all of them");
  const auto words = std::make_shared<std::vector<std::string>>();
  get->add_option("property", *words, "Its name and, where it has several, which one")
      ->expected(0, 2)
      ->type_name("PROPERTY [INDEX]");
  get->footer(PropertyHelp(false));
  get->callback([&options, words] { RunGet(options, *words); });
}
