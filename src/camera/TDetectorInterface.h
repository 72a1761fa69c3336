// Geometry of a camera's detector. The base class knows none and answers failure.
#pragma once

class TDetectorInterface {
 public:
  static constexpr unsigned int kSuccess = 0;
  static constexpr unsigned int kNotKnown = 1;

  /// Width and height of a pixel in micrometres; number of pixels along x. On anything but kSuccess the output keeps
  /// its value.
  virtual unsigned int GetPixelWidth(float& /*width*/) { return kNotKnown; }
  virtual unsigned int GetPixelHeight(float& /*height*/) { return kNotKnown; }
  virtual unsigned int GetNumberOfPixels(int& /*count*/) { return kNotKnown; }
  virtual ~TDetectorInterface() = default;
};
