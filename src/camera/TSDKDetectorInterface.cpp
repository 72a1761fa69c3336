#include "camera/TSDKDetectorInterface.h"

#include "camera/TivanSdk.h"

TSDKDetectorInterface::TSDKDetectorInterface(TGetDetector getDetector, TGetPixelSize getPixelSize)
    : mGetDetector(getDetector), mGetPixelSize(getPixelSize) {
}

unsigned int TSDKDetectorInterface::GetPixelWidth(float& width) {
  float w = 0.0F;
  float h = 0.0F;
  if (mGetPixelSize(&w, &h) != corvane::kTivanSuccess) {
    return kFailure;
  }
  width = w;
  return kSuccess;
}

unsigned int TSDKDetectorInterface::GetPixelHeight(float& height) {
  float w = 0.0F;
  float h = 0.0F;
  if (mGetPixelSize(&w, &h) != corvane::kTivanSuccess) {
    return kFailure;
  }
  height = h;
  return kSuccess;
}

unsigned int TSDKDetectorInterface::GetNumberOfPixels(int& count) {
  int x = 0;
  int y = 0;
  if (mGetDetector(&x, &y) != corvane::kTivanSuccess) {
    return kFailure;
  }
  count = x;
  return kSuccess;
}
