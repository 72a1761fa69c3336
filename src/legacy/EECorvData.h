// The record of one older instrument: its stored parameters in memory, read from and written to the instrument's EEPROM
// or a data file, and the conversions between physical units and motor steps. Owns the instrument's bus, which the
// driver moves motors through. It moves nothing on its own account.
//
// Used from the driver's thread; no locks. Results are those of LegacyResult.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "camera/TI2CInterface.h"
#include "legacy/CorvDataField.h"
#include "legacy/CorvDataValues.h"
#include "legacy/LegacyBus.h"
#include "legacy/LegacyResult.h"

class EECorvData;

namespace corvane {

/// Is told of every successful load of a record.
class IEECorvDataListener {
 public:
  virtual ~IEECorvDataListener() = default;
  virtual void OnDataLoaded(EECorvData* record) = 0;
};

}  // namespace corvane

class EECorvData final {
 public:
  /// Which transfer Execute makes.
  enum TaskMode : std::int32_t { kReadTask = 0, kWriteTask = 1 };
  /// Steps of a transfer: 0 sets the write mode, 11 checks the address and the version, 12 to kLastStep move the
  /// fields; all others do nothing.
  static constexpr int kLastStep = 25;
  /// What ConvertWaveToSteps answers for a wavelength out of reach.
  static constexpr int kOutOfReach = 1;
  static constexpr int kStepsPerTurn = 480000;

  /// The bus is borrowed and may be null. usb: the instrument is reached through a USB camera.
  EECorvData(TI2CInterface* i2c, bool usb);
  EECorvData(const EECorvData&) = delete;
  EECorvData& operator=(const EECorvData&) = delete;
  ~EECorvData() = default;

  /// The bus that the record reads and writes its EEPROM through.
  corvane::LegacyBus& Bus() { return mBus; }

  /// The parameters, free to read and to change; what is changed here reaches the instrument with StoreValue or a
  /// write of the whole record.
  corvane::CorvDataValues values;

  /// Replaces the structure version and splits it; null is ignored.
  void SetStructureVersionInfo(const char* version);
  /// Borrowed; null detaches.
  void SetListener(corvane::IEECorvDataListener* listener) { mListener = listener; }

  /// Reads the record from the EEPROM; writes nothing but the write mode. A version text that is no version leaves the
  /// version's numbers as they are. kFailure when a transfer fails (fields already read keep their new values) or the
  /// EEPROM does not hold a record; kBeyondLimits when the structure is newer than 3.0, with nothing changed but the
  /// version text and its numbers.
  int ReadFromEEPROM();
  /// Writes every field of the latest layout with read-back, whatever the version; takes many seconds. The first
  /// failure ends it with kFailure.
  int WriteToEEPROM();
  /// One step of the same transfers. All steps from 0 to kLastStep in their order make the whole.
  int ReadFromEEPROMLoop(int step);
  int WriteToEEPROMLoop(int step);

  void SetTaskMode(std::int32_t mode) { mTaskMode = mode; }
  /// One step of the transfer that the task mode selects; another mode does nothing. Step 0 clears the task error.
  /// Answers the task error: the first result other than kSuccess, after which nothing is transferred any more.
  int Execute(int step);
  int GetTaskError() const { return mTaskError; }

  /// Reads the data file; what is missing in it becomes the file's default. Without a directory the file lies in the
  /// parent of the working directory; the name is "spectrograph" and the extension ".ini" where the path has none; null
  /// is "spectrograph.ini" in the working directory. path holds 240 bytes and receives the resolved path; one that does
  /// not fit names no file, and path is left alone. Always kSuccess.
  int ReadFromFile(char* path);
  /// Hands every key to the profile writer, which leaves files as they are. The path as in ReadFromFile. Always
  /// kSuccess.
  int WriteToFile(char* path);
  /// The path that ReadFromFile would open; empty when it is too long.
  static std::string ResolvePath(const char* path);

  /// Writes one of `values` where it came from. Loaded from the EEPROM: write mode, then the value with read-back;
  /// kFailure when that fails or no EEPROM has a place for it. A value that is newer than the EEPROM's structure
  /// version stays in memory alone, and the result is kSuccess: its place holds other bytes there. Otherwise the
  /// profile writer gets it, and the result is kSuccess.
  int StoreValue(corvane::CorvValueId id);

  /// The three floats of page 0; only when all are read or written do the record and the outputs (null is skipped)
  /// take them.
  int ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation, float* focalTilt);
  int WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt);
  /// Steps and width of the first slit's two points in the EEPROM. Outputs only change when all are read; the record
  /// in memory never does.
  int ReadSlitCoefficients(std::int32_t& steps1, std::int32_t& width1, std::int32_t& steps2, std::int32_t& width2);
  int WriteSlitCoefficients(std::int32_t steps1, std::int32_t width1, std::int32_t steps2, std::int32_t width2);

  /// slit 0 or 1, width in um, steps of its motor. False when the slit is none, has no usable calibration, or the
  /// steps are no 32-bit number; ConvertSlitToSteps answers 0 then.
  bool SlitConverts(int slit, float width) const;
  int ConvertSlitToSteps(int slit, float width) const;
  /// 0 when no positive width belongs to the steps, or the slit is none. A calibration without slope gives 0 as well;
  /// without curvature the width may be negative.
  float ConvertStepsToSlit(int slit, int steps) const;

  /// Position of the wave drive for a wavelength in nm on grating 1 to 3 of the current turret, with detector offset
  /// 0 or 1. kOutOfReach for a wavelength, grating or offset that has no position.
  int ConvertWaveToSteps(float wavelength, int grating, int detector) const;
  /// The same to move by: nothing for what has no position, which kOutOfReach may be for something else, and nothing
  /// for any wavelength but zero order where the polynomial does not tell them apart (POLY1 to POLY4 all 0).
  std::optional<int> WavePosition(float wavelength, int grating, int detector) const;
  /// The wavelength at which the drive then really stands: the centre of the band, in steps of 0.01 nm, that
  /// ConvertWaveToSteps takes to the same position. 0 for 0; the wavelength rounded to 0.01 nm where the band has no
  /// end within 1000 nm.
  float GetActualWavelength(float wavelength, int grating, int detector) const;
  /// Periodic correction of the wave drive at a position, in steps; 0 when amplitude or frequency is 0.
  long double GetSinCorrection(long double steps) const;

 private:
  void Notify();
  /// Nothing where ConvertWaveToSteps answers kOutOfReach.
  std::optional<int> WaveSteps(float wavelength, int grating, int detector) const;

  corvane::LegacyBus mBus;
  corvane::IEECorvDataListener* mListener = nullptr;
  std::int32_t mTaskMode = kReadTask;
  std::int32_t mTaskError = corvane::legacy::kSuccess;
};
