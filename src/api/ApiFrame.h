// The frame that every exported operation on a device runs in: initialised? known device? arguments good? then one
// guarded component call, whose failure of any kind becomes a status number. While a frame lives no cancellation ends
// the thread. An exported function names its checks and its call:
//
//   return ApiCall(device).Require(turret >= 1 && turret <= 3, Argument::kSecond)
//       .On(&TSpectrographHardware::GetGratingInterface, [&](auto& grating) { grating.SetTurret(turret - 1); })
//       .Status();
#pragma once

#include <utility>

#include "api/CorvaneCIF.h"
#include "calibration/TCalibration.h"
#include "core/TCorvaneException.h"
#include "core/TSpectrographHardware.h"
#include "platform/CancellationBlock.h"

namespace corvane {

/// An argument by its place in the function called, as the status that rejects it.
enum class Argument : unsigned int {
  kFirst = CORVANE_P1_INVALID,
  kSecond = CORVANE_P2_INVALID,
  kThird = CORVANE_P3_INVALID,
  kFourth = CORVANE_P4_INVALID,
  kFifth = CORVANE_P5_INVALID
};

/// Writes a result unless the caller gave no place for it.
template <typename T>
void StoreResult(T* output, const T& value) {
  if (output != nullptr) {
    *output = value;
  }
}

/// Throws for what is not there: a part that this instrument does not have is a failure like any other.
template <typename T>
T& RequireNotNull(T* object) {
  if (object == nullptr) {
    throw TCorvaneException(TCorvaneException::kFailure);
  }
  return *object;
}

class ApiCall {
 public:
  /// Checks that the library is initialised and knows the device.
  explicit ApiCall(int device);

  /// Each step does nothing once the status is no longer CORVANE_SUCCESS.
  ApiCall& Require(bool good, Argument argument) {
    if (Good() && !good) {
      mStatus = static_cast<unsigned int>(argument);
    }
    return *this;
  }

  /// Asks the device how many gratings it has and rejects a number outside 1 to that.
  ApiCall& RequireGrating(int grating, Argument argument = Argument::kSecond);

  /// For checks that are themselves exported functions: anything but success is a communication error.
  ApiCall& RequireSuccess(unsigned int status) {
    if (Good() && status != CORVANE_SUCCESS) {
      mStatus = CORVANE_COMMUNICATION_ERROR;
    }
    return *this;
  }

  /// Runs body(TSpectrographHardware&) for the device, guarded.
  template <typename Body>
  ApiCall& OnHardware(Body&& body) {
    return Guarded([&] { std::forward<Body>(body)(Hardware()); });
  }

  /// Runs body(component&) for a component of the device, guarded.
  template <typename Interface, typename Body>
  ApiCall& On(Interface* (TSpectrographHardware::*get)() const, Body&& body) {
    return Guarded([&] { std::forward<Body>(body)(RequireNotNull((Hardware().*get)())); });
  }

  /// Runs body(TCalibration&) for the device, guarded; a code other than TCalibration::kSuccess is a failure.
  template <typename Body>
  ApiCall& OnCalibration(Body&& body) {
    return Guarded([&] {
      if (std::forward<Body>(body)(Calibration()) != TCalibration::kSuccess) {
        throw TCorvaneException(TCorvaneException::kFailure);
      }
    });
  }

  /// Writes a result if all went well and the caller gave a place for it.
  template <typename T>
  ApiCall& Store(T* output, const T& value) {
    if (Good()) {
      StoreResult(output, value);
    }
    return *this;
  }

  bool Good() const { return mStatus == CORVANE_SUCCESS; }
  unsigned int Status() const { return mStatus; }

 private:
  template <typename Body>
  ApiCall& Guarded(Body&& body) {
    if (Good()) {
      try {
        std::forward<Body>(body)();
      } catch (...) {
        mStatus = CORVANE_COMMUNICATION_ERROR;
      }
    }
    return *this;
  }

  TSpectrographHardware& Hardware() const;
  TCalibration& Calibration() const;

  CancellationBlock mCancellation;
  int mDevice;
  unsigned int mStatus;
};

}  // namespace corvane
