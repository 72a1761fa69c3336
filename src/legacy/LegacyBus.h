// The I2C transfers of one older instrument: bytes, numbers and texts of its EEPROM pages with verified writing, and
// the registers of its motor controller. The record reads and writes its pages through it, the driver moves motors
// through it. Knows no field of the record.
//
// Results are legacy::kSuccess or legacy::kFailure where nothing else is said; any bus status but legacy::kBusSuccess
// is a failure, and an operation ends at its first one, with its outputs untouched. Register addresses count on modulo
// 256. Waits block the calling thread.
#pragma once

#include <cstdint>
#include <optional>

#include "camera/TI2CInterface.h"
#include "legacy/RampedMoveFormat.h"

namespace corvane {

class LegacyBus {
 public:
  /// Device addresses: page 0 of the EEPROM and the device that switches its write mode.
  static constexpr std::uint8_t kEepromBase = 0x68;
  static constexpr std::uint8_t kWriteModeDevice = kEepromBase + 7;
  static constexpr std::uint8_t kMotorController = 0x10;
  static constexpr std::uint8_t kStatusDevice = 0x11;
  /// From this FPGA version on registers are addressed directly; below it through a burst write first.
  static constexpr int kRegisterFpgaVersion = 23;
  static constexpr int kBlazeSlot = 32;
  /// What a motor does.
  static constexpr int kStanding = 0;
  static constexpr int kMoving = 1;
  static constexpr int kUnreadable = -1;

  /// The bus is borrowed and may be null: transfers then succeed without doing anything.
  LegacyBus(TI2CInterface* i2c, bool usb);

  /// Changes to another bus. With an FPGA version below 23, leaving a USB camera first sends 0x00 0xC7 and going to
  /// one 0x00 0xC4 to the status device, on the old bus; what becomes of that is not looked at.
  void SetControl(TI2CInterface* i2c, bool usb);

  /// One transfer each, with the bus status as result; legacy::kBusSuccess without a bus, and the output is then left
  /// alone.
  unsigned int I2CWrite(std::uint8_t device, std::uint8_t reg, std::uint8_t value);
  unsigned int I2CRead(std::uint8_t device, std::uint8_t reg, std::uint8_t* out);
  unsigned int I2CBurstWrite(std::uint8_t device, int count, const std::uint8_t* data);
  unsigned int I2CBurstRead(std::uint8_t device, int count, std::uint8_t* data);

  /// Numbers are least significant byte first, floats IEEE 754 single precision. Every write waits 15 ms a byte and
  /// fails when the value read back differs (a NaN always does). Call SetWriteMode before writing.
  int ReadByte(std::uint8_t* out, std::uint8_t device, std::uint8_t reg);
  int WriteByte(std::uint8_t value, std::uint8_t device, std::uint8_t reg);
  int ReadInt(std::int32_t* out, std::uint8_t device, std::uint8_t reg);
  int WriteInt(std::int32_t value, std::uint8_t device, std::uint8_t reg);
  int ReadFloat(float* out, std::uint8_t device, std::uint8_t reg);
  int WriteFloat(float value, std::uint8_t device, std::uint8_t reg);
  /// Reads up to a zero byte, at most max bytes. out holds max + 1 bytes; it is terminated also on failure, behind what
  /// was read.
  int ReadString(char* out, int max, std::uint8_t device, std::uint8_t reg);
  /// Writes count bytes: text's characters, then zeros. A longer text is cut.
  int WriteString(const char* text, int count, std::uint8_t device, std::uint8_t reg);
  /// Reads a blaze text of count bytes, at most kBlazeSlot - 1. A first byte of zero means that an old instrument
  /// stored a float there: its whole part comes out as decimal text if it lies in 1 to 99999, else the text is empty.
  /// out holds kBlazeSlot bytes and is always terminated.
  int ReadBlaze(char* out, int count, std::uint8_t device, std::uint8_t reg);

  /// Puts the EEPROM into write mode; comes before every transfer of the whole record and before every write.
  int SetWriteMode();
  /// Blocks for at least this many milliseconds.
  void Delay(float milliseconds);

  /// 0 to 254; 0 also for 255 and when it cannot be read.
  int GetFPGAVersion();
  /// kMoving, kStanding, or kUnreadable when the state of the motor (0 to 4), or the FPGA version that says where it
  /// lies, cannot be read. Sleeps 10 ms.
  int EngineMoving(int motor);
  /// Waits until the motor stands, without a time limit: a stuck motor is waited for. A bus on which 100 polls in a row
  /// fail is not: kFailure.
  int WaitForStandstill(int motor);
  /// Waits until the motor stands, then starts the move with one burst write to the motor controller at `address`, and
  /// does not wait for its end. kFailure also for a move that has no encoding (RampedMoveFormat.h).
  int StartRampedMove(std::uint8_t address, const RampedMove& move);

 private:
  /// As GetFPGAVersion, but nothing when it cannot be read.
  std::optional<int> ReadFpgaVersion();
  /// Nothing when it cannot be read, or the version that says where it lies.
  std::optional<std::uint8_t> ReadMotorStatus();
  /// Writes one byte and gives the EEPROM the time to store it.
  bool Put(std::uint8_t value, std::uint8_t device, std::uint8_t reg);

  TI2CInterface* mI2c;
  bool mUsb;
};

}  // namespace corvane
