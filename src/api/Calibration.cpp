// Exported functions of the stored optical constants and the pixel calibration.
#include "api/ApiFrame.h"
#include "calibration/TCalibration.h"

using corvane::ApiCall;
using corvane::Argument;

unsigned int CorvaneEepromGetOpticalParams(int device, float* focalLength, float* angularDeviation, float* focalTilt) {
  return ApiCall(device)
      .On(&TSpectrographHardware::GetEepromInterface,
          [&](ISpectrographEEPROM& eeprom) {
            // Straight into the caller's variables; a place of our own where the caller gave none.
            float unwanted = 0.0F;
            eeprom.GetOpticalParams(focalLength != nullptr ? *focalLength : unwanted,
                                    angularDeviation != nullptr ? *angularDeviation : unwanted,
                                    focalTilt != nullptr ? *focalTilt : unwanted);
          })
      .Status();
}

unsigned int CorvaneSetPixelWidth(int device, float width) {
  return ApiCall(device)
      .Require(width >= 1.0F, Argument::kSecond)
      .OnCalibration([&](TCalibration& calibration) {
        calibration.SetPixelWidth(width);
        return TCalibration::kSuccess;
      })
      .Status();
}

unsigned int CorvaneGetPixelWidth(int device, float* width) {
  float value = 0.0F;
  return ApiCall(device)
      .OnCalibration([&](TCalibration& calibration) { return calibration.GetPixelWidth(value); })
      .Store(width, value)
      .Status();
}

unsigned int CorvaneSetNumberPixels(int device, int count) {
  return ApiCall(device)
      .Require(count >= 1, Argument::kSecond)
      .OnCalibration([&](TCalibration& calibration) {
        calibration.SetNumberPixels(count);
        return TCalibration::kSuccess;
      })
      .Status();
}

unsigned int CorvaneGetNumberPixels(int device, int* count) {
  int value = 0;
  return ApiCall(device)
      .OnCalibration([&](TCalibration& calibration) { return calibration.GetNumberPixels(value); })
      .Store(count, value)
      .Status();
}

unsigned int CorvaneGetCalibration(int device, float* wavelengths, int count) {
  return ApiCall(device)
      .Require(wavelengths != nullptr, Argument::kSecond)
      .Require(count >= 1, Argument::kThird)
      .OnCalibration([&](TCalibration& calibration) { return calibration.GetCalibration(wavelengths, count); })
      .Status();
}

unsigned int CorvaneGetPixelCalibrationCoefficients(int device, float* a, float* b, float* c, float* d) {
  float constants[4] = {};
  return ApiCall(device)
      .Require(a != nullptr, Argument::kSecond)
      .Require(b != nullptr, Argument::kThird)
      .Require(c != nullptr, Argument::kFourth)
      .Require(d != nullptr, Argument::kFifth)
      .OnCalibration([&](TCalibration& calibration) {
        return calibration.GetCalibrationConstants(&constants[0], &constants[1], &constants[2], &constants[3]);
      })
      .Store(a, constants[0])
      .Store(b, constants[1])
      .Store(c, constants[2])
      .Store(d, constants[3])
      .Status();
}
