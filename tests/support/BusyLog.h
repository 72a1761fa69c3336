// What tests see of a component from outside: its notifications and what it throws.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/TCorvaneException.h"
#include "core/TDeviceServer.h"

using Lines = std::vector<std::string>;

/// Writes down "busy" or "idle" for every notification of a component.
class BusyLog : public TDeviceClient {
 public:
  explicit BusyLog(TBusyDeviceServer& component) : mComponent(component) { component.Connect(this); }
  ~BusyLog() override { mComponent.Disconnect(this); }
  BusyLog(const BusyLog&) = delete;
  BusyLog& operator=(const BusyLog&) = delete;
  void OnStateChanged(TDeviceServer* /*server*/) override { mLog.emplace_back(mComponent.IsBusy() ? "busy" : "idle"); }
  Lines Take() { return std::exchange(mLog, {}); }

 private:
  TBusyDeviceServer& mComponent;
  Lines mLog;
};

/// The code that a call throws; 0 for none.
inline int ThrownBy(const std::function<void()>& call) {
  try {
    call();
  } catch (const TCorvaneException& failure) {
    return failure.Code();
  }
  return 0;
}
