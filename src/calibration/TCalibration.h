// The pixel calibration of one instrument: takes its optical constants, grating and centre wavelength from the
// instrument's components and the geometry from the camera's detector or from the application. Each list item has one.
#pragma once

#include "calibration/TCalibrationAlgorithm.h"
#include "camera/TDetectorInterface.h"
#include "core/TSpectrographHardware.h"

class TCalibration {
 public:
  enum TResult : unsigned int {
    kSuccess = 0,
    kNoPixelWidth = 1,
    kNoNumberPixels = 2,
    kNoCalibration = 3,
  };

  /// Both are borrowed for this object's life; detector may be null. With a detector its geometry is asked at each use,
  /// until the application sets a value of its own.
  TCalibration(TDetectorInterface* detector, TSpectrographHardware* hardware);

  /// Width of a pixel in µm, number of pixels along x. A value that is not above 0 is ignored; 0 until set.
  void SetPixelWidth(float width);
  void SetNumberPixels(int count);
  /// kSuccess; or kNoPixelWidth, kNoNumberPixels when the detector fails, with the output left alone.
  unsigned int GetPixelWidth(float& width);
  unsigned int GetNumberPixels(int& count);

  /// Wavelengths (nm) of the first n pixels, at most the number of pixels there are; out[0] belongs to pixel 1.
  /// kSuccess; or kNoCalibration, with out left alone, when an input is missing or no monotonic cubic fits. Components
  /// may throw TCorvaneException.
  unsigned int GetCalibration(float* out, int n);
  /// The cubic's constants, likewise: nm at pixel p = c0 + c1·p + c2·p² + c3·p³. A null output is not written.
  unsigned int GetCalibrationConstants(float* c0, float* c1, float* c2, float* c3);

 private:
  /// False when any input is missing or no monotonic cubic fits. numberPixels is what the constants were fitted for.
  bool SetupCalibration(TCalibrationAlgorithm::TConstants& constants, int& numberPixels);

  TDetectorInterface* mDetector;
  TSpectrographHardware* mHardware;
  bool mAskDetectorForPixelWidth;
  bool mAskDetectorForNumberPixels;
  float mPixelWidth = 0.0F;
  int mNumberPixels = 0;
};
