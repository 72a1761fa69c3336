#include "legacy/LegacyBus.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "legacy/LegacyResult.h"
#include "platform/TimeSource.h"

namespace corvane {
namespace {

using legacy::kBusSuccess;
using legacy::kFailure;
using legacy::kSuccess;

constexpr float kStoreMilliseconds = 15.0F;
constexpr std::uint64_t kPollMilliseconds = 10;
constexpr int kMostFailedPolls = 100;

constexpr std::uint8_t kWriteModeRegister = 0xFF;
constexpr std::uint8_t kWriteModeOn = 2;
constexpr std::uint8_t kVersionRegister = 0;
constexpr int kLargestFpgaVersion = 254;
constexpr std::uint8_t kMotorStatusRegister = 0xC3;
/// Where controllers of the first generation behind a USB camera keep it.
constexpr std::uint8_t kUsbMotorStatusRegister = 0xC4;
constexpr std::array<std::uint8_t, 2> kLeaveUsb{0x00, 0xC7};
constexpr std::array<std::uint8_t, 2> kEnterUsb{0x00, 0xC4};

constexpr std::size_t kNumberBytes = 4;
using NumberBytes = std::array<std::uint8_t, kNumberBytes>;

constexpr std::uint8_t Register(std::uint8_t first, std::size_t offset) {
  return static_cast<std::uint8_t>(first + offset);
}

std::uint32_t FromBytes(const NumberBytes& bytes) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < kNumberBytes; ++i) {
    value |= static_cast<std::uint32_t>(bytes[i]) << (8U * i);
  }
  return value;
}

NumberBytes ToBytes(std::uint32_t value) {
  NumberBytes bytes{};
  for (std::size_t i = 0; i < kNumberBytes; ++i) {
    bytes[i] = static_cast<std::uint8_t>(value >> (8U * i));
  }
  return bytes;
}

std::uint8_t BusyMask(int motor) {
  return motor == 1 || motor == 3 || motor == 4 ? 0x1C : 0x03;
}

/// The blaze that an old instrument stored as a float; empty for what is none.
std::string BlazeFromNumber(float blaze) {
  // Tested before the conversion: the bytes may hold anything.
  return blaze >= 1.0F && blaze < 100000.0F ? std::to_string(static_cast<int>(blaze)) : std::string();
}

}  // namespace

LegacyBus::LegacyBus(TI2CInterface* i2c, bool usb) : mI2c(i2c), mUsb(usb) {
}

void LegacyBus::SetControl(TI2CInterface* i2c, bool usb) {
  if (GetFPGAVersion() < kRegisterFpgaVersion && mUsb != usb) {
    const auto& bytes = usb ? kEnterUsb : kLeaveUsb;
    I2CBurstWrite(kStatusDevice, static_cast<int>(bytes.size()), bytes.data());
  }
  mI2c = i2c;
  mUsb = usb;
}

unsigned int LegacyBus::I2CWrite(std::uint8_t device, std::uint8_t reg, std::uint8_t value) {
  return mI2c != nullptr ? mI2c->Write(device, reg, value) : kBusSuccess;
}

unsigned int LegacyBus::I2CRead(std::uint8_t device, std::uint8_t reg, std::uint8_t* out) {
  return mI2c != nullptr ? mI2c->Read(device, reg, out) : kBusSuccess;
}

unsigned int LegacyBus::I2CBurstWrite(std::uint8_t device, int count, const std::uint8_t* data) {
  return mI2c != nullptr ? mI2c->BurstWrite(device, count, data) : kBusSuccess;
}

unsigned int LegacyBus::I2CBurstRead(std::uint8_t device, int count, std::uint8_t* data) {
  return mI2c != nullptr ? mI2c->BurstRead(device, count, data) : kBusSuccess;
}

int LegacyBus::ReadByte(std::uint8_t* out, std::uint8_t device, std::uint8_t reg) {
  std::uint8_t value = 0;
  if (I2CRead(device, reg, &value) != kBusSuccess) {
    return kFailure;
  }
  *out = value;
  return kSuccess;
}

bool LegacyBus::Put(std::uint8_t value, std::uint8_t device, std::uint8_t reg) {
  if (I2CWrite(device, reg, value) != kBusSuccess) {
    return false;
  }
  Delay(kStoreMilliseconds);
  return true;
}

int LegacyBus::WriteByte(std::uint8_t value, std::uint8_t device, std::uint8_t reg) {
  std::uint8_t stored = 0;
  const bool written = Put(value, device, reg) && ReadByte(&stored, device, reg) == kSuccess;
  return written && stored == value ? kSuccess : kFailure;
}

int LegacyBus::ReadInt(std::int32_t* out, std::uint8_t device, std::uint8_t reg) {
  NumberBytes bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (ReadByte(&bytes[i], device, Register(reg, i)) != kSuccess) {
      return kFailure;
    }
  }
  *out = static_cast<std::int32_t>(FromBytes(bytes));
  return kSuccess;
}

int LegacyBus::WriteInt(std::int32_t value, std::uint8_t device, std::uint8_t reg) {
  const NumberBytes bytes = ToBytes(static_cast<std::uint32_t>(value));
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::uint8_t stored = 0;
    if (!Put(bytes[i], device, Register(reg, i)) || ReadByte(&stored, device, Register(reg, i)) != kSuccess) {
      return kFailure;
    }
  }
  std::int32_t stored = 0;
  return ReadInt(&stored, device, reg) == kSuccess && stored == value ? kSuccess : kFailure;
}

int LegacyBus::ReadFloat(float* out, std::uint8_t device, std::uint8_t reg) {
  std::int32_t bits = 0;
  if (ReadInt(&bits, device, reg) != kSuccess) {
    return kFailure;
  }
  *out = std::bit_cast<float>(bits);
  return kSuccess;
}

int LegacyBus::WriteFloat(float value, std::uint8_t device, std::uint8_t reg) {
  const NumberBytes bytes = ToBytes(std::bit_cast<std::uint32_t>(value));
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (!Put(bytes[i], device, Register(reg, i))) {
      return kFailure;
    }
  }
  float stored = 0.0F;
  return ReadFloat(&stored, device, reg) == kSuccess && stored == value ? kSuccess : kFailure;
}

int LegacyBus::ReadString(char* out, int max, std::uint8_t device, std::uint8_t reg) {
  out[0] = '\0';
  for (int i = 0; i < max; ++i) {
    std::uint8_t byte = 0;
    if (ReadByte(&byte, device, Register(reg, static_cast<std::size_t>(i))) != kSuccess) {
      return kFailure;
    }
    out[i] = static_cast<char>(byte);
    out[i + 1] = '\0';
    if (byte == 0) {
      break;
    }
  }
  return kSuccess;
}

int LegacyBus::WriteString(const char* text, int count, std::uint8_t device, std::uint8_t reg) {
  const auto bytes = static_cast<std::size_t>(std::max(count, 0));
  const std::string expected(text, strnlen(text, bytes));
  for (std::size_t i = 0; i < bytes; ++i) {
    const char character = i < expected.size() ? expected[i] : '\0';
    if (!Put(static_cast<std::uint8_t>(character), device, Register(reg, i))) {
      return kFailure;
    }
  }
  std::string stored(bytes + 1, '\0');
  if (ReadString(stored.data(), static_cast<int>(bytes), device, reg) != kSuccess) {
    return kFailure;
  }
  return std::strcmp(stored.c_str(), expected.c_str()) == 0 ? kSuccess : kFailure;
}

int LegacyBus::ReadBlaze(char* out, int count, std::uint8_t device, std::uint8_t reg) {
  const auto bytes = static_cast<std::size_t>(std::clamp(count, 0, kBlazeSlot - 1));
  out[0] = '\0';
  for (std::size_t i = 0; i < bytes; ++i) {
    std::uint8_t byte = 0;
    if (ReadByte(&byte, device, Register(reg, i)) != kSuccess) {
      return kFailure;
    }
    out[i] = static_cast<char>(byte);
    out[i + 1] = '\0';
  }
  if (bytes >= kNumberBytes && out[0] == '\0') {
    NumberBytes number{};
    std::memcpy(number.data(), out, number.size());
    std::snprintf(out, kBlazeSlot, "%s", BlazeFromNumber(std::bit_cast<float>(FromBytes(number))).c_str());
  }
  return kSuccess;
}

int LegacyBus::SetWriteMode() {
  return I2CWrite(kWriteModeDevice, kWriteModeRegister, kWriteModeOn) == kBusSuccess ? kSuccess : kFailure;
}

void LegacyBus::Delay(float milliseconds) {
  constexpr float kLongest = 1e9F;
  const float bounded = milliseconds > 0.0F ? std::min(milliseconds, kLongest) : 0.0F;
  const auto wanted = static_cast<std::uint64_t>(std::ceil(bounded * 1000.0F));
  TimeSource& time = Time();
  const std::uint64_t start = time.MonotonicMicroseconds();
  for (std::uint64_t passed = 0; passed < wanted; passed = time.MonotonicMicroseconds() - start) {
    time.SleepMicroseconds(wanted - passed);
  }
}

std::optional<int> LegacyBus::ReadFpgaVersion() {
  std::uint8_t version = 0;
  if (I2CRead(kMotorController, kVersionRegister, &version) != kBusSuccess) {
    return std::nullopt;
  }
  return version <= kLargestFpgaVersion ? version : 0;
}

int LegacyBus::GetFPGAVersion() {
  return ReadFpgaVersion().value_or(0);
}

int LegacyBus::EngineMoving(int motor) {
  const std::optional<std::uint8_t> status = ReadMotorStatus();
  SleepMilliseconds(kPollMilliseconds);
  if (!status) {
    return kUnreadable;
  }
  return (*status & BusyMask(motor)) != 0 ? kMoving : kStanding;
}

std::optional<std::uint8_t> LegacyBus::ReadMotorStatus() {
  const std::optional<int> version = ReadFpgaVersion();
  if (!version) {
    return std::nullopt;  // The register of another generation may read as standing.
  }
  const bool byRegister = *version >= kRegisterFpgaVersion;
  const std::uint8_t reg = !byRegister && mUsb ? kUsbMotorStatusRegister : kMotorStatusRegister;
  const bool selected = byRegister || I2CBurstWrite(kStatusDevice, 1, &reg) == kBusSuccess;
  std::uint8_t status = 0;
  const bool read = I2CRead(kStatusDevice, reg, &status) == kBusSuccess;
  return selected && read ? std::optional(status) : std::nullopt;
}

int LegacyBus::WaitForStandstill(int motor) {
  int failedPolls = 0;
  while (failedPolls < kMostFailedPolls) {
    const int moving = EngineMoving(motor);
    if (moving == kStanding) {
      return kSuccess;
    }
    failedPolls = moving == kUnreadable ? failedPolls + 1 : 0;
  }
  return kFailure;
}

int LegacyBus::StartRampedMove(std::uint8_t address, const RampedMove& move) {
  const auto bytes = EncodeRampedMove(move);
  if (!bytes || WaitForStandstill(move.motor) != kSuccess) {
    return kFailure;
  }
  const unsigned int status = I2CBurstWrite(address, static_cast<int>(bytes->size()), bytes->data());
  return status == kBusSuccess ? kSuccess : kFailure;
}

}  // namespace corvane
