// The one bracket around a component's work on its controller: a running acquisition is paused, a component that moves
// is busy, and a failure is thrown when both have ended. Every component of controller instruments uses it; it knows
// none of them.
#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "controller/TMerakOrbis.h"
#include "core/BusyScope.h"
#include "core/MerakResult.h"
#include "core/TCVNAcquisitionAborter.h"
#include "core/TCorvaneException.h"
#include "core/TDeviceServer.h"

namespace corvane {

/// Throws a code other than kSuccess. The code goes along unchanged: 0xFFFFFFFF from a setter arrives as -1.
inline void ThrowOnFailure(MerakResult code) {
  if (code != merak::kSuccess) {
    throw TCorvaneException(static_cast<std::int32_t>(code));
  }
}

/// Has `query` fill in a number that something is moved by. The controller's queries leave their output alone when the
/// reply holds no number; that is a failure here (kIoError), for no motor goes by a number that nobody gave.
template <typename Query>
MerakResult RequireNumber(int& number, Query query) {
  constexpr int kNone = std::numeric_limits<int>::min();
  int given = kNone;
  const MerakResult result = query(given);
  if (result != merak::kSuccess) {
    return result;
  }
  if (given == kNone) {
    return merak::kIoError;
  }
  number = given;
  return merak::kSuccess;
}

/// Calls `operation`, which answers a controller code, with acquisition paused. Throws a failure after the acquisition
/// was resumed.
template <typename Operation>
void RunPaused(TCVNAcquisitionAborter& aborter, Operation operation) {
  MerakResult code = merak::kSuccess;
  {
    const AcquisitionPause pause(aborter);
    code = operation();
  }
  ThrowOnFailure(code);
}

/// The same with the component busy meanwhile: pause, busy, operation, idle, resume, throw.
template <typename Operation>
void RunBusy(TCVNAcquisitionAborter& aborter, TBusyDeviceServer& component, Operation operation) {
  RunPaused(aborter, [&] {
    const BusyScope busy(component);
    return operation();
  });
}

/// Asks the controller for a number with acquisition paused; throws the query's code, or kIoError when it gave none.
template <typename Query>
int ReadNumber(TCVNAcquisitionAborter& aborter, Query query) {
  int number = 0;
  RunPaused(aborter, [&] { return RequireNumber(number, query); });
  return number;
}

/// Runs `read`, which takes values from the EEPROM record, with acquisition paused. Throws kDeviceNotOpen while
/// there is no record, whose getters would answer 0 and "".
template <typename Read>
void ReadRecord(TCVNAcquisitionAborter& aborter, const TMerakOrbis& controller, Read read) {
  RunPaused(aborter, [&] {
    if (!controller.HasEepromRecord()) {
      return merak::kDeviceNotOpen;
    }
    read();
    return merak::kSuccess;
  });
}

/// The same for values of the active turret's gratings, which some instruments have to be asked for; throws what keeps
/// them from being had.
template <typename Read>
void ReadGratings(TCVNAcquisitionAborter& aborter, TMerakOrbis& controller, Read read) {
  RunPaused(aborter, [&] {
    const MerakResult result = controller.LoadActiveTurretGratings();
    if (result == merak::kSuccess) {
      read();
    }
    return result;
  });
}

/// True when the controller's peripheral list covers the tag of a part. False, and nothing thrown, when the list cannot
/// be had.
inline bool ListCoversTag(TCVNAcquisitionAborter& aborter, TMerakOrbis& controller, std::string_view tag) {
  const AcquisitionPause pause(aborter);
  return controller.CountPeripherals({tag}) != 0;
}

/// Asks the controller whether a listed name contains this text, with acquisition paused; throws what keeps the list
/// from being had.
inline bool ReadListContainsText(TCVNAcquisitionAborter& aborter, TMerakOrbis& controller, std::string_view text) {
  bool listed = false;
  RunPaused(aborter, [&] { return controller.FindInPeripheralNames(text, listed); });
  return listed;
}

/// The same; false, and nothing thrown, when the list cannot be had.
inline bool ListContainsText(TCVNAcquisitionAborter& aborter, TMerakOrbis& controller, std::string_view text) {
  const AcquisitionPause pause(aborter);
  bool listed = false;
  return controller.FindInPeripheralNames(text, listed) == merak::kSuccess && listed;
}

/// Throws what an operation on a part that is not fitted is answered with.
inline void RequirePresent(TDeviceServer& component) {
  if (!component.IsPresent()) {
    throw TCorvaneException(TCorvaneException::kFailure);
  }
}

/// Throws what a caller's index outside a table of `size` entries is answered with.
inline void RequireIndex(int index, int size) {
  if (index < 0 || index >= size) {
    throw TCorvaneException(TCorvaneException::kFailure);
  }
}

}  // namespace corvane
