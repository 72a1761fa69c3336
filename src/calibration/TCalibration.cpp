#include "calibration/TCalibration.h"

#include <algorithm>

TCalibration::TCalibration(TDetectorInterface* detector, TSpectrographHardware* hardware)
    : mDetector(detector),
      mHardware(hardware),
      mAskDetectorForPixelWidth(detector != nullptr),
      mAskDetectorForNumberPixels(detector != nullptr) {
}

void TCalibration::SetPixelWidth(float width) {
  if (width > 0.0F) {
    mPixelWidth = width;
    mAskDetectorForPixelWidth = false;
  }
}

void TCalibration::SetNumberPixels(int count) {
  if (count > 0) {
    mNumberPixels = count;
    mAskDetectorForNumberPixels = false;
  }
}

unsigned int TCalibration::GetPixelWidth(float& width) {
  if (mAskDetectorForPixelWidth) {
    return mDetector->GetPixelWidth(width) == TDetectorInterface::kSuccess ? kSuccess : kNoPixelWidth;
  }
  width = mPixelWidth;
  return kSuccess;
}

unsigned int TCalibration::GetNumberPixels(int& count) {
  if (mAskDetectorForNumberPixels) {
    return mDetector->GetNumberOfPixels(count) == TDetectorInterface::kSuccess ? kSuccess : kNoNumberPixels;
  }
  count = mNumberPixels;
  return kSuccess;
}

bool TCalibration::SetupCalibration(TCalibrationAlgorithm::TConstants& constants, int& numberPixels) {
  float pixelWidth = 0.0F;
  if (GetPixelWidth(pixelWidth) != kSuccess || GetNumberPixels(numberPixels) != kSuccess || mHardware == nullptr) {
    return false;
  }
  ISpectrographWavelength* wavelength = mHardware->GetWavelengthInterface();
  ISpectrographEEPROM* eeprom = mHardware->GetEepromInterface();
  ISpectrographGrating* gratings = mHardware->GetGratingInterface();
  if (wavelength == nullptr || eeprom == nullptr || gratings == nullptr) {
    return false;
  }

  const float centre = wavelength->GetWavelength();
  float focalLength = 0.0F;
  float angularDeviation = 0.0F;
  float tilt = 0.0F;
  eeprom->GetOpticalParams(focalLength, angularDeviation, tilt);
  float lines = 0.0F;
  const char* blaze = nullptr;
  float home = 0.0F;
  float offset = 0.0F;
  gratings->GetGratingInfo(gratings->GetGrating(), lines, blaze, home, offset);

  constexpr float kNoExcitation = 0.0F;
  constexpr int kNoDetectorOffset = 0;
  constexpr bool kReverse = false;
  return TCalibrationAlgorithm::GetConstants(constants, centre, TWavelengthConversion::kWavelength,
                                             TWavelengthConversion::kNanometres, kNoExcitation, kNoDetectorOffset,
                                             pixelWidth, numberPixels, focalLength, tilt, angularDeviation, lines,
                                             kReverse) == TCalibrationAlgorithm::kSuccess;
}

unsigned int TCalibration::GetCalibration(float* out, int n) {
  TCalibrationAlgorithm::TConstants constants;
  int numberPixels = 0;
  if (!SetupCalibration(constants, numberPixels)) {
    return kNoCalibration;
  }
  if (out == nullptr) {
    return kSuccess;
  }
  // A copy of its own, which the stores to out cannot reach, stays in registers.
  const TCalibrationAlgorithm::TConstants cubic = constants;
  const int count = std::min(numberPixels, n);
  for (int i = 0; i < count; ++i) {
    out[i] = cubic.ValueFor(static_cast<float>(i + 1));
  }
  return kSuccess;
}

unsigned int TCalibration::GetCalibrationConstants(float* c0, float* c1, float* c2, float* c3) {
  TCalibrationAlgorithm::TConstants constants;
  int numberPixels = 0;
  if (!SetupCalibration(constants, numberPixels)) {
    return kNoCalibration;
  }
  const auto store = [](float value, float* output) {
    if (output != nullptr) {
      *output = value;
    }
  };
  store(constants.c0, c0);
  store(constants.c1, c1);
  store(constants.c2, c2);
  store(constants.c3, c3);
  return kSuccess;
}
