// The busy bracket around a component's work: components of every kind of instrument use it.
#pragma once

#include "core/TDeviceServer.h"

namespace corvane {

/// Keeps a component busy for its lifetime; its clients are told of both ends.
class BusyScope {
 public:
  explicit BusyScope(TBusyDeviceServer& component) : mComponent(component) { mComponent.SetBusy(true); }
  ~BusyScope() { mComponent.SetBusy(false); }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

 private:
  TBusyDeviceServer& mComponent;
};

}  // namespace corvane
