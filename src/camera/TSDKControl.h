// Loads and initialises the camera SDK and offers its one camera. Where the SDK is missing, foreign or broken it simply
// has no device; nothing here throws.
#pragma once

#include <array>
#include <memory>

#include "camera/TI2CController.h"
#include "camera/TSDKDetectorInterface.h"
#include "camera/TSDKI2CInterface.h"
#include "camera/TTivanDynamicLoader.h"

class TSDKControl final : public TI2CController {
 public:
  static constexpr int kMaximumDevices = 128;

  /// Loads library ("./" first, then as the system searches), and only if it has all entry points calls its
  /// "Initialize" with directory, the caller's own pointer (whether null will do is the camera SDK's business). When
  /// that throws, the library is shut down and unloaded, and a std::runtime_error thrown in its place.
  TSDKControl(char* directory, const char* library);
  /// Drops the interfaces, calls "ShutDown" where the library has it, even if "Initialize" was never called or failed,
  /// and unloads the library.
  ~TSDKControl() override;
  TSDKControl(const TSDKControl&) = delete;
  TSDKControl& operator=(const TSDKControl&) = delete;

  /// 1 once the camera SDK is initialised, else 0.
  int GetNumberDevices() override { return mCount; }
  /// Borrowed until this object goes; null for an index outside 0..GetNumberDevices()-1.
  TI2CInterface* GetI2CInterface(int index) override;
  TDetectorInterface* GetDetectorInterface(int index) override;

  /// Why the camera SDK could not be loaded, or "No Error".
  const char* GetErrorText() const { return mLoader.GetErrorText(); }

 private:
  using TInitialize = unsigned int (*)(char* directory);
  using TShutDown = unsigned int (*)();

  bool ResolveEntryPoints();
  unsigned int Initialize(char* directory);
  void ShutDown();
  template <typename Function>
  bool Resolve(const char* name, Function& function);

  TivanUtility::TTivanDynamicLoader mLoader;
  int mCount = 0;
  TSDKI2CInterface::TEntryPoints mI2C;
  TInitialize mInitialize = nullptr;
  TShutDown mShutDown = nullptr;
  TSDKDetectorInterface::TGetDetector mGetDetector = nullptr;
  TSDKDetectorInterface::TGetPixelSize mGetPixelSize = nullptr;
  std::array<std::unique_ptr<TI2CInterface>, kMaximumDevices> mI2CInterfaces;
  std::array<std::unique_ptr<TDetectorInterface>, kMaximumDevices> mDetectorInterfaces;
};
