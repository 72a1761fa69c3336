// The one frame of the exported functions: finds the device of a handle, lets no exception out and no cancellation of
// the thread in. Used by the Ftd2xx*.cpp files only.
#pragma once

#include <exception>
#include <new>
#include <utility>

#include "usbserial/BridgeLibrary.h"
#include "usbserial/CancelShield.h"
#include "usbserial/FtFailure.h"

namespace corvane {

template <class Body>
FT_STATUS Guarded(Body&& body) {
  const CancelShield shield;
  try {
    return std::forward<Body>(body)();
  } catch (const FtFailure& failure) {
    return failure.Status();
  } catch (const std::bad_alloc&) {
    return FT_INSUFFICIENT_RESOURCES;
  } catch (const std::exception&) {  // all that is thrown here; the unwinding of a cancelled FT_Read must pass
    return FT_OTHER_ERROR;
  }
}

/// Runs the body on the device of the handle, 1 if there is none.
template <class Body>
FT_STATUS OnDevice(FT_HANDLE handle, Body&& body) {
  return Guarded([&] {
    const auto device = BridgeLibrary::Instance().Find(handle);
    return device == nullptr ? FT_INVALID_HANDLE : std::forward<Body>(body)(*device);
  });
}

/// Runs the body on the device of the handle, 1 if there is none, 6 if one of the pointers is null.
template <class Body, class... Pointers>
FT_STATUS OnDeviceWith(FT_HANDLE handle, Body&& body, const Pointers*... pointers) {
  return OnDevice(handle, [&](BridgeDevice& device) {
    const bool complete = (true && ... && (pointers != nullptr));
    if (!complete) {
      return FT_INVALID_PARAMETER;
    }
    return std::forward<Body>(body)(device);
  });
}

/// Stores through an output pointer that may be null.
template <class T>
void Store(T* output, T value) {
  if (output != nullptr) {
    *output = value;
  }
}

}  // namespace corvane
