// The driver of one older instrument on a camera's I2C bus: its motors, presence bits and output lines. It owns the
// instrument's record (EECorvData), which converts into motor steps and whose bus every transfer takes. The components
// of older instruments call it; it knows none of them.
//
// The sequences of homing, slits, filter wheel and flipper mirror, the use of the output lines and the format of a
// motor move (RampedMoveFormat.h) are this library's own definition. Each stands in one file, so that it can be
// replaced when an instrument needs another: CorvaneHoming, CorvaneSlits, CorvaneFilter, CorvaneFlipper,
// CorvaneOutputs.
//
// Nothing here throws. Operations answer a TResult; outputs are written on success only. A motor that does not stop is
// waited for without a limit, a bus that answers no more is given up after 100 failed polls. What an operation changes
// is stored where the record came from, after the motion; a failure to store it is reported, and the record in memory
// keeps the new value all the same. So it does where the EEPROM's structure version has no place for the value, which
// is a success.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "camera/TI2CInterface.h"
#include "core/StepPosition.h"
#include "legacy/EECorvData.h"
#include "legacy/LegacyResult.h"

class Corvane {
 public:
  enum TResult : unsigned int {
    kSuccess = corvane::legacy::kSuccess,
    /// A transfer, a lookup or a part of the operation failed, or a target lies outside the step range.
    kFailure = corvane::legacy::kFailure,
    /// The wavelength lies outside the limits of the grating; of ReadSpectCfg: the record's structure is newer.
    kBeyondLimits = corvane::legacy::kBeyondLimits,
    /// The record holds no instrument data. Nothing moves on invented data.
    kNoData = corvane::legacy::kNoData,
  };

  enum TPart : int {
    kShutter = 0,
    kInputSlit = 1,
    kFilterWheel = 2,
    kFlipperMirror = 3,
    kOutputSlit = 4,
    kAccessory = 5,
    kFocusMirror = 6,
  };

  /// No step position is known: the wave drive is homed before it moves.
  static constexpr int kNoStepPosition = corvane::kNoStepPosition;
  /// Stands for the grating in use where limits are asked for.
  static constexpr int kActiveGrating = -1;
  /// Task of Execute that ends a transfer of the record.
  static constexpr int kOutputTask = 99;

  /// The bus is borrowed, answers the camera SDK's own status codes, and outlives the driver. usb: it is behind a USB
  /// camera. Drives and reads nothing.
  Corvane(TI2CInterface* i2c, bool usb);
  Corvane(const Corvane&) = delete;
  Corvane& operator=(const Corvane&) = delete;
  ~Corvane() = default;

  const EECorvData& GetData() const { return mData; }
  /// A component's index from 0 as the driver counts; a negative one becomes 0, which is no grating, filter or turret.
  static int FromZeroBased(int index);

  // --- Corvane.cpp: presence, output lines, motors ---

  /// Whether the part (a TPart; false for any other number) is fitted. Asking for one from kShutter to kOutputSlit
  /// drops the output lines of shutter and accessory. The focus mirror is never fitted.
  bool DeviceExists(int part);
  /// The same for the accessory; leaves the output lines alone.
  bool IsAccessoryAttached();
  /// Sends an output line (0 to 4) with its stored value.
  unsigned int SendData(int line);
  /// The direction and enable flag that the motor's next Pulse goes by. A motor outside 0 to 4 is ignored.
  void SetDirection(int motor, bool forward, bool enable = true);
  /// Starts a move of a motor by at least 1 step with its stored ramp; mode is a corvane::MoveMode's number. Does not
  /// wait for its end. A move of the wave drive by 11 to 29 steps is made in tens and a remainder, and the remainder
  /// alone decides the result where there is one.
  unsigned int Pulse(int motor, int steps, int mode);

  // --- CorvaneSetup.cpp: the record ---

  /// One step of the record's transfer. kOutputTask marks the record as loaded if no step failed, and resets the output
  /// lines, ending at the first that fails.
  unsigned int Execute(int task);
  /// Reads the record. Without a path from the EEPROM, or where that fails (but not where its structure is newer) from
  /// the data file "spectrograph.ini" if it exists; with a path from that file. A record that could not be read whole
  /// counts as none. kBeyondLimits for a newer structure.
  unsigned int ReadSpectCfg(const char* path);
  /// The serial number straight from the EEPROM; "" when it cannot be read.
  std::string QuickReadSerialNumber();
  /// Focal length in m, angular deviation and focal tilt in degrees; from the EEPROM if the record is.
  unsigned int GetOpticalParams(float* focalLength, float* angularDeviation, float* focalTilt);

  // --- CorvaneWaveDrive.cpp: wavelength. nm; steps of a drive that turns through 480000 ---

  /// Moves the drive so that the wavelength falls on the detector behind the port in use. kFailure before anything
  /// moves for one that the drive does not reach, and for any but zero order in a record without a polynomial.
  unsigned int SetWavelength(float nm);
  /// Moves the drive to a grating (1 to 3), keeping the wavelength; to zero order for a mirror (blaze "MIRR").
  unsigned int SetGrating(int grating);
  /// Moves the drive to a grating's zero order; a grating outside 1 to 3 is the one in use.
  unsigned int GotoZeroOrder(int grating);
  /// kFailure while the stored wavelength is no finite number; so does AtZeroOrder.
  unsigned int GetWavelength(float* nm);
  unsigned int AtZeroOrder(bool* atZeroOrder);
  /// 0 to the greatest wavelength of a grating (1 to 3, or kActiveGrating).
  unsigned int GetWavelengthLimits(int grating, float* min, float* max);
  /// Where the drive was sent last, or kNoStepPosition.
  unsigned int GetCurrentWaveSteps(int* steps);
  unsigned int SaveCurrentWaveSteps(int steps);

  // --- CorvaneHoming.cpp ---

  /// Homes the wave drive by its coarse and its fine hole, or by the fine hole alone; its position is then 0. A hole
  /// that was not found goes unnoticed. kFailure before anything moves where the record's lengths describe no search.
  unsigned int ResetWavelength(bool full);

  // --- CorvaneGratings.cpp: gratings, turrets, offsets ---

  /// 1 to 3.
  unsigned int GetGrating(int* grating);
  /// Of the turret in use.
  unsigned int GetNumberGratings(int* count);
  /// grating counts from 0. home and offset in steps; blaze belongs to the record and holds until its next load.
  unsigned int GetGratingInfoEx(int grating, float* lines, const char** blaze, float* home, float* offset);
  /// turret: 1 to the number of turrets. The grating in use is 1 from then on; moves nothing.
  unsigned int SetTurret(int turret);
  unsigned int GetTurret(int& turret);
  /// Detector offset in steps of entrance port 0 and exit port 0 or 1. Takes the drive along if that exit is in use and
  /// the drive's position is known.
  unsigned int ModifyDetectorOffset(int entrance, int exit, int offset);
  /// The same for exit port 0.
  unsigned int ModifyDetectorOffset(int offset);
  unsigned int GetDetectorOffset(int entrance, int exit, int* offset);
  /// Offset in steps of a grating, which counts from 0, on the turret in use. Takes the drive along if the grating is
  /// the one in use and the drive's position is known.
  unsigned int ModifyGratingOffset(int grating, int offset);
  /// Held in the record, whether or not anything was loaded.
  int HeldDetectorOffset() const { return mData.values.detectorOffset[0]; }
  unsigned int HeldGratingOffset(int grating, int* offset) const;

  // --- CorvaneSlits.cpp: slit 0 is the input slit, 1 the output slit; widths in um ---
  // After a move that failed, or whose end was not seen, nobody knows where the slit stands: SetSlit, GetSlit and
  // GetCurrentSlitSteps answer kFailure until ResetSlit succeeded. The EEPROM keeps the width from before, and the next
  // load believes it.

  unsigned int SetSlit(int slit, float width);
  unsigned int GetSlit(int slit, float* width);
  /// Closes the slit against its stop, whose width is that of its first calibration point; twice if `twice`.
  unsigned int ResetSlit(int slit, bool twice);
  unsigned int GetCurrentSlitSteps(int slit, int* steps);
  /// Steps and width of the input slit's two calibration points: those in the EEPROM, or where the record came from a
  /// file those of the record. Writing reaches the EEPROM alone: from the next load on the slit moves by the new
  /// points, and wrongly until it is reset, since its stored width then stands for another place. Points of the same
  /// width are refused, and so is writing where the record did not come from the EEPROM.
  unsigned int ReadSlitCoefficients(int& steps1, int& width1, int& steps2, int& width2);
  unsigned int WriteSlitCoefficients(int steps1, int width1, int steps2, int width2);

  // --- CorvaneFilter.cpp: filters count from 1 ---
  // After a move that failed, or whose end was not seen, no filter is known: SetFilter and GetFilter answer kFailure
  // until ResetFilter succeeded. The EEPROM keeps the filter from before, and the next load believes it.

  /// kFailure before anything moves where the record has one of the two filters outside the wheel's turn, or both in
  /// one place.
  unsigned int SetFilter(int filter);
  /// kFailure while the stored filter is none of 1 to 6.
  unsigned int GetFilter(int* filter);
  /// Finds filter 1 by the wheel's sensor.
  unsigned int ResetFilter();
  /// Copies the label into text, which holds maxLength bytes with the terminator.
  unsigned int GetFilterInfo(int filter, char* text, int maxLength);
  /// Keeps at most CorvDataValues::kMaxLabel characters.
  unsigned int SetFilterInfo(int filter, const char* text);

  // --- CorvaneFlipper.cpp: the mirror is set while the light goes to port 0 ---

  /// Moves the mirror even where it is thought to stand there already.
  unsigned int SetMirrorPosition(bool mirror);
  unsigned int GetMirrorPosition(bool& mirror);
  /// Sends the mirror to port 0, wherever it is thought to be.
  unsigned int ResetMirror();
  /// Wavelengths (nm) for a detector behind port 0 (mirror set) or 1; limited for port 0.
  unsigned int GetPortCCDLimits(bool mirror, float& low, float& high, bool& limited);

  // --- CorvaneOutputs.cpp: shutter, accessory; and the focus mirror that there is not, which always fails ---

  /// 0 or 1.
  unsigned int SetShutter(int mode);
  /// line 1 or 2.
  unsigned int SetAccessoryState(int line, bool state);
  /// As last sent.
  unsigned int GetAccessoryState(int line, bool& state);
  unsigned int SetMirrorFocus(int steps);
  unsigned int GetMirrorFocus(int* steps);
  unsigned int GetFocusMirrorMaxSteps(int* steps);
  unsigned int ResetFocusMirror();

 private:
  static constexpr std::size_t kMotors = corvane::CorvDataValues::kMotors;
  static constexpr std::size_t kLines = 5;

  struct TMotor {
    bool forward = true;
    bool enable = false;
  };

  static bool IsGrating(int grating);
  static bool IsSlit(int slit);
  static bool IsPort(int entrance, int exit);
  bool IsFilter(int filter) const;
  bool HasData() const { return mData.values.loadedFromEeprom || mData.values.loadedFromFile; }
  /// The frame of every operation that goes by the record: kNoData without instrument data, kFailure for arguments that
  /// are not good, else what body(corvane::CorvDataValues&) answers. Both kinds of results are the same numbers.
  template <typename Body>
  unsigned int OnRecord(bool argumentsGood, Body body) {
    if (!HasData()) {
      return kNoData;
    }
    return argumentsGood ? static_cast<unsigned int>(body(mData.values)) : kFailure;
  }
  template <typename Body>
  unsigned int OnRecord(Body body) {
    return OnRecord(true, body);
  }
  /// The record's entry for a grating from 1 to 3 of the turret in use.
  const corvane::CorvDataValues::Grating& Grating(int grating) const;
  /// Exit port 0 or 1.
  int PortInUse() const { return mData.values.currentMirror == 0 ? 0 : 1; }

  corvane::LegacyBus& Bus() { return mData.Bus(); }

  /// Stores one of the record's values where it came from.
  unsigned int Store(corvane::CorvValueId id);
  unsigned int StoreWave(float wave);

  unsigned int ReadDataFile(const char* path);

  /// Reads the status byte of a selector; false when it cannot be read.
  bool ReadSelector(std::uint8_t selector, std::uint8_t& status);
  unsigned int SwitchOutput(std::uint8_t bit, bool on);
  /// Sends all lines, the switched ones with 0, ending at the first that fails.
  unsigned int ResetOutputs();

  /// Starts a move with the motor's direction and enable flag.
  unsigned int StartMove(int motor, int steps, corvane::MoveMode mode, const corvane::StepRamp& ramp);
  /// Moves a motor and waits for its end. A failed move leaves kFailure in result and the sequence goes on as if it had
  /// been made; false, which ends the sequence, when the bus is gone.
  bool Travel(int motor, bool forward, std::int64_t steps, unsigned int& result);

  /// Moves the wave drive to a wavelength of a grating and stores the one it reached. False when there was no move.
  bool MoveToWavelength(float nm, int grating, unsigned int& result);
  /// Moves the wave drive to a position and keeps the position. As Travel; false also when the drive cannot be homed
  /// first or the position is no number of steps.
  bool MoveWaveDrive(std::int64_t target, unsigned int& result);
  /// Turns it by a number of steps, ending forward. As Travel.
  bool TurnWaveDrive(std::int64_t distance, unsigned int& result);
  /// Moves the drive to a grating's zero order, and makes the grating the one in use.
  unsigned int MoveToZeroOrder(int grating);
  unsigned int FindHole(const corvane::CorvDataValues::Hole& hole);
  /// Gives an offset of the record its new value, takes the drive along if it is in use, and stores it.
  unsigned int ModifyOffset(corvane::CorvValueId which, int offset, bool inUse);

  /// Holds and stores the width at which a slit stands.
  unsigned int KeepSlit(int slit, float width);

  /// Whether the sensor shows filter 1; false when it cannot be read.
  bool AtFilterOne(bool& at);
  /// Moves the wheel by strides until the sensor shows filter 1, or no longer does; the moves made. Nothing when the
  /// sensor has not changed after `limit` of them, or when one failed.
  std::optional<int> SearchFilterOne(bool forward, bool wanted, std::int64_t stride, int limit);
  /// Finds filter 1 by the sensor and turns it into the beam.
  bool TurnToFilterOne();
  unsigned int SendMirror(int port);

  EECorvData mData;
  std::array<TMotor, kMotors> mMotors{};
  std::array<std::uint8_t, kLines> mLines{};
  std::uint8_t mMotorController;
  int mGrating = 1;
  int mWaveSteps = kNoStepPosition;
};
