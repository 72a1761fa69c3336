// The one bracket around what a component of an older instrument asks of the driver: a command or a query. Every TSDK
// component uses it; it knows none of them. A part that is not fitted, and every failure of the driver, throws
// TCorvaneException(TCorvaneException::kFailure).
#pragma once

#include <cstdint>
#include <functional>
#include <type_traits>

#include "core/BusyScope.h"
#include "core/TCorvaneException.h"
#include "core/TDeviceServer.h"
#include "legacy/Corvane.h"

namespace corvane {

/// Whether `part` is fitted; a component without a driver stands for a part that this model does not have.
inline bool SdkPartFitted(Corvane* driver, Corvane::TPart part) {
  return driver != nullptr && driver->DeviceExists(part);
}

/// The driver behind a component that is present. Throws before anything else happens, so no client is told.
inline Corvane& PresentDriver(TDeviceServer& component, Corvane* driver) {
  if (!component.IsPresent() || driver == nullptr) {
    throw TCorvaneException(TCorvaneException::kFailure);
  }
  return *driver;
}

inline void ThrowOnDriverFailure(unsigned int result) {
  if (result != Corvane::kSuccess) {
    throw TCorvaneException(TCorvaneException::kFailure);
  }
}

/// Runs a driver operation, with the component busy meanwhile if it has a busy flag. Throws when it is idle again.
template <typename Component, typename Operation, typename... Arguments>
void RunCommandUntold(Component& component, Corvane* driver, Operation operation, Arguments... arguments) {
  Corvane& present = PresentDriver(component, driver);
  unsigned int result = Corvane::kSuccess;
  if constexpr (std::is_base_of_v<TBusyDeviceServer, Component>) {
    const BusyScope busy(component);
    result = std::invoke(operation, present, arguments...);
  } else {
    result = std::invoke(operation, present, arguments...);
  }
  ThrowOnDriverFailure(result);
}

/// The same; a success is told to the component's clients.
template <typename Component, typename Operation, typename... Arguments>
void RunCommand(Component& component, Corvane* driver, Operation operation, Arguments... arguments) {
  RunCommandUntold(component, driver, operation, arguments...);
  component.StateChanged();
}

/// The value that a driver operation query(driver, value) gives.
template <typename Value, typename Query>
Value RunQuery(TDeviceServer& component, Corvane* driver, Query query) {
  Value value{};
  ThrowOnDriverFailure(std::invoke(query, PresentDriver(component, driver), value));
  return value;
}

}  // namespace corvane
