// Geometry of a camera's detector, asked of the camera SDK at every call.
#pragma once

#include "camera/TDetectorInterface.h"

/// Operations answer kSuccess, or kFailure with the output left alone.
class TSDKDetectorInterface final : public TDetectorInterface {
 public:
  static constexpr unsigned int kFailure = 2;

  using TGetDetector = unsigned int (*)(int* xPixels, int* yPixels);
  using TGetPixelSize = unsigned int (*)(float* width, float* height);

  /// Entry points of a camera SDK, which must stay loaded for this object's life.
  TSDKDetectorInterface(TGetDetector getDetector, TGetPixelSize getPixelSize);

  unsigned int GetPixelWidth(float& width) override;
  unsigned int GetPixelHeight(float& height) override;
  /// Pixels in the x direction.
  unsigned int GetNumberOfPixels(int& count) override;

 private:
  TGetDetector mGetDetector;
  TGetPixelSize mGetPixelSize;
};
