#include <iostream>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "PropertyArguments.h"
#include "Session.h"

namespace {

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

}  // namespace

void RunGet(const Options& options, const Words& words) {
  if (words.empty()) {
    const Session session(options);
    const Json all = ReadAll(session.Device());
    if (session.Json()) {
      Print(all);
      return;
    }
    for (const auto& item : all.items()) {
      PrintField(item.key(), item.value().is_null() ? "cannot be read" : PlainText(item.value()));
    }
    return;
  }
  const PropertyArguments arguments(words, 0);
  const Session session(options);
  const int device = session.Device();
  arguments.CheckIndex(device);
  RequirePresent(arguments.Which(), device, arguments.Index());
  const Json value = ReadProperty(arguments.Which(), device, arguments.Index());
  if (session.Json()) {
    Print(Json{{Label(arguments.Which(), arguments.Index()), value}});
  } else {
    std::cout << PlainText(value) << '\n';
  }
}
