#include "camera/TSDKControl.h"

#include <cstddef>
#include <stdexcept>

#include "camera/TivanSdk.h"

TSDKControl::TSDKControl(char* directory, const char* library) : mLoader(library) {
  if (mLoader.Open() != TivanUtility::TTivanDynamicLoader::kOpened || !ResolveEntryPoints()) {
    return;
  }
  // Made first: nothing may throw once the camera SDK runs, or it would never be shut down.
  mI2CInterfaces.front() = std::make_unique<TSDKI2CInterface>(mI2C);
  mDetectorInterfaces.front() = std::make_unique<TSDKDetectorInterface>(mGetDetector, mGetPixelSize);
  mCount = Initialize(directory) == corvane::kTivanSuccess ? 1 : 0;
}

unsigned int TSDKControl::Initialize(char* directory) {
  try {
    return mInitialize(directory);
  } catch (...) {
    // It may be of a type that only the camera SDK knows, so it must not outlive that library.
  }
  ShutDown();
  throw std::runtime_error("the camera SDK failed to initialise");
}

void TSDKControl::ShutDown() {
  try {
    mShutDown();
  } catch (...) {
    // Nothing is left to be done about it.
  }
}

TSDKControl::~TSDKControl() {
  // The interfaces call into the library, so they go while it is still there.
  mI2CInterfaces.front().reset();
  mDetectorInterfaces.front().reset();
  if (mShutDown != nullptr) {
    ShutDown();
  }
  mLoader.Close();
}

template <typename Function>
bool TSDKControl::Resolve(const char* name, Function& function) {
  function = reinterpret_cast<Function>(mLoader.GetFunction(name));
  return function != nullptr;
}

bool TSDKControl::ResolveEntryPoints() {
  // All are looked up even when one is missing: a library that has "ShutDown" gets it called.
  bool complete = Resolve("I2CWrite", mI2C.write);
  complete &= Resolve("I2CRead", mI2C.read);
  complete &= Resolve("I2CBurstWrite", mI2C.burstWrite);
  complete &= Resolve("I2CBurstRead", mI2C.burstRead);
  complete &= Resolve("Initialize", mInitialize);
  complete &= Resolve("ShutDown", mShutDown);
  complete &= Resolve("GetDetector", mGetDetector);
  complete &= Resolve("GetPixelSize", mGetPixelSize);
  return complete;
}

TI2CInterface* TSDKControl::GetI2CInterface(int index) {
  return index >= 0 && index < mCount ? mI2CInterfaces[static_cast<std::size_t>(index)].get() : nullptr;
}

TDetectorInterface* TSDKControl::GetDetectorInterface(int index) {
  return index >= 0 && index < mCount ? mDetectorInterfaces[static_cast<std::size_t>(index)].get() : nullptr;
}
