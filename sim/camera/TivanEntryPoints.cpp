// The C face of the simulated camera SDK: the eight entry points of a camera SDK, and those of TivanSimulation.h. Each
// checks its pointers, lets no exception out and calls CameraSimulation.
#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "camera/CameraSimulation.h"
#include "camera/TivanSimulation.h"

namespace {

using corvane::sim::CameraSimulation;

/// Never destroyed: a host may close the library from an exit handler, behind this library's static destructors.
CameraSimulation& Camera() {
  static CameraSimulation& camera = *std::make_unique<CameraSimulation>().release();
  return camera;
}

/// Runs an operation; an exception (memory, a broken mutex) becomes the given answer.
template <typename Answer, typename Operation>
Answer Guarded(Answer onException, const Operation& operation) {
  try {
    return operation();
  } catch (...) {
    return onException;
  }
}

template <typename Operation>
unsigned int Status(const Operation& operation) {
  return Guarded<unsigned int>(corvane::sim::kTivanFailure, operation);
}

template <typename Operation>
int Extra(const Operation& operation) {
  return Guarded<int>(CORVANE_SIM_OUT_OF_RANGE, [&] { return static_cast<int>(operation()); });
}

/// Copies what fits; the length of the whole.
template <typename Operation>
size_t Text(char* text, size_t length, const Operation& operation) {
  return Guarded<size_t>(0, [&] {
    const std::string whole = operation();
    if (text != nullptr && length > 0) {
      const size_t count = std::min(length - 1, whole.size());
      std::copy_n(whole.data(), count, text);
      text[count] = '\0';
    }
    return whole.size();
  });
}

}  // namespace

#define TIVAN_API extern "C" __attribute__((visibility("default")))

// The camera SDK's own header is the maker's; these are its entry points as hosts use them.

TIVAN_API unsigned int Initialize(char* directory) {
  return Status([&] { return Camera().Initialize(directory == nullptr ? "" : directory); });
}

TIVAN_API unsigned int ShutDown() {
  return Status([] { return Camera().ShutDown(); });
}

TIVAN_API unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data) {
  if (data == nullptr || count < 1) {
    return corvane::sim::kTivanBadParameter;
  }
  return Status([&] { return Camera().BurstWrite(address, {data, static_cast<std::size_t>(count)}); });
}

TIVAN_API unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data) {
  if (data == nullptr || count < 1) {
    return corvane::sim::kTivanBadParameter;
  }
  return Status([&] { return Camera().BurstRead(address, {data, static_cast<std::size_t>(count)}); });
}

TIVAN_API unsigned int I2CWrite(unsigned char address, unsigned char reg, unsigned char data) {
  return Status([&] { return Camera().Write(address, reg, data); });
}

TIVAN_API unsigned int I2CRead(unsigned char address, unsigned char reg, unsigned char* data) {
  if (data == nullptr) {
    return corvane::sim::kTivanBadParameter;
  }
  return Status([&] { return Camera().Read(address, reg, *data); });
}

TIVAN_API unsigned int GetDetector(int* xPixels, int* yPixels) {
  if (xPixels == nullptr || yPixels == nullptr) {
    return corvane::sim::kTivanBadParameter;
  }
  return Status([&] { return Camera().GetDetector(*xPixels, *yPixels); });
}

TIVAN_API unsigned int GetPixelSize(float* width, float* height) {
  if (width == nullptr || height == nullptr) {
    return corvane::sim::kTivanBadParameter;
  }
  return Status([&] { return Camera().GetPixelSize(*width, *height); });
}

TIVAN_API int CorvaneSimIsInitialized() {
  return Guarded<int>(0, [] { return static_cast<int>(Camera().IsInitialized()); });
}

TIVAN_API int CorvaneSimKeepsState(int instrument) {
  return Guarded<int>(0, [&] { return static_cast<int>(Camera().KeepsState(instrument)); });
}

TIVAN_API int CorvaneSimNumberUsb() {
  return Guarded<int>(0, [] { return Camera().NumberUsb(); });
}

TIVAN_API int CorvaneSimTrueWavelength(int instrument, double pixel, double* nanometres) {
  return nanometres == nullptr ? CORVANE_SIM_OUT_OF_RANGE
                               : Extra([&] { return Camera().TrueWavelength(instrument, pixel, *nanometres); });
}

TIVAN_API int CorvaneSimTrueCentre(int instrument, double* nanometres) {
  return nanometres == nullptr ? CORVANE_SIM_OUT_OF_RANGE
                               : Extra([&] { return Camera().TrueCentre(instrument, *nanometres); });
}

TIVAN_API int CorvaneSimPeek(int instrument, int address, unsigned char* value) {
  return value == nullptr ? CORVANE_SIM_OUT_OF_RANGE
                          : Extra([&] { return Camera().Peek(instrument, address, *value); });
}

TIVAN_API size_t CorvaneSimState(int instrument, char* text, size_t length) {
  return Text(text, length, [&] { return Camera().State(instrument); });
}

TIVAN_API size_t CorvaneSimParameter(int instrument, int number, char* text, size_t length) {
  return Text(text, length, [&] { return Camera().Parameter(instrument, number); });
}

TIVAN_API void CorvaneSimKeepPower(int on) {
  Guarded<bool>(false, [&] {
    Camera().KeepPower(on != 0);
    return true;
  });
}

TIVAN_API size_t CorvaneSimLog(char* text, size_t length) {
  return Text(text, length, [] { return Camera().Log(); });
}

TIVAN_API unsigned long long CorvaneSimLines(int instrument) {
  return Guarded<unsigned long long>(0, [&] { return Camera().Lines(instrument); });
}

TIVAN_API unsigned long long CorvaneSimOperations() {
  return Guarded<unsigned long long>(0, [] { return Camera().Operations(); });
}

TIVAN_API void CorvaneSimArmFault(unsigned long long operation, int fromThenOn, unsigned int status) {
  Guarded<bool>(false, [&] {
    Camera().ArmFault({operation, fromThenOn != 0, status});
    return true;
  });
}

TIVAN_API unsigned long long CorvaneSimFaultHits() {
  return Guarded<unsigned long long>(0, [] { return Camera().FaultHits(); });
}

TIVAN_API int CorvaneSimArmReplyFault(int instrument, const char* json) {
  return json == nullptr ? CORVANE_SIM_OUT_OF_RANGE : Extra([&] { return Camera().ArmReplyFault(instrument, json); });
}

TIVAN_API int CorvaneSimClearReplyFaults(int instrument) {
  return Extra([&] { return Camera().ClearReplyFaults(instrument); });
}
