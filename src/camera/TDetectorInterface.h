// Geometry of a camera's detector. The base class knows none and answers failure.
#pragma once

class TDetectorInterface {
 public:
  /// Width and height of a pixel in micrometres; number of pixels along x. 0 is success; on failure the output keeps
  /// its value.
  virtual unsigned int GetPixelWidth(float& /*width*/) { return 1; }
  virtual unsigned int GetPixelHeight(float& /*height*/) { return 1; }
  virtual unsigned int GetNumberOfPixels(int& /*count*/) { return 1; }
  virtual ~TDetectorInterface() = default;
};
