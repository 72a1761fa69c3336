// Corvane: how its record is loaded, and what it answers from the instrument's EEPROM directly.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "legacy/Corvane.h"
#include "platform/PrivateProfile.h"
#include "platform/TivanLocale.h"

namespace {

constexpr int kSerialLength = 10;
constexpr std::uint8_t kSerialRegister = 31;
/// What EECorvData::ReadFromFile wants of its buffer.
constexpr std::size_t kPathSize = 240;

}  // namespace

unsigned int Corvane::Execute(int task) {
  const int result = mData.Execute(task);
  if (task == kOutputTask) {
    if (mData.GetTaskError() == corvane::legacy::kSuccess) {
      mData.values.loadedFromEeprom = true;
    }
    mMotorController = mData.values.commAdd;
    if (ResetOutputs() != kSuccess) {
      return kFailure;
    }
  }
  return static_cast<unsigned int>(result);
}

unsigned int Corvane::ReadSpectCfg(const char* path) {
  unsigned int result = kFailure;
  if (path == nullptr) {
    mData.SetTaskMode(EECorvData::kReadTask);
    for (int step = 0; step <= EECorvData::kLastStep; ++step) {
      Execute(step);
    }
    // A failure to reset the outputs is reported, but the data are good.
    result = Execute(kOutputTask);
    if (mData.GetTaskError() == corvane::legacy::kSuccess) {
      return result;
    }
    // Half a record must not move motors.
    mData.values.loadedFromEeprom = false;
    mData.values.loadedFromFile = false;
    result = static_cast<unsigned int>(mData.GetTaskError());
  }
  if (result == kFailure) {
    result = ReadDataFile(path);
  }
  return result;
}

unsigned int Corvane::ReadDataFile(const char* path) {
  // The record's own answer to a missing file are defaults, which would move this instrument on invented data.
  const std::string resolved = EECorvData::ResolvePath(path);
  std::error_code error;
  if (resolved.empty() || resolved.size() >= kPathSize || !std::filesystem::is_regular_file(resolved, error)) {
    return kFailure;
  }
  // What an older file has no key for must not be left over from an EEPROM that was read in part.
  mData.values = corvane::CorvDataValues();
  std::array<char, kPathSize> buffer{};
  if (path == nullptr) {
    return static_cast<unsigned int>(mData.ReadFromFile(nullptr));
  }
  std::snprintf(buffer.data(), buffer.size(), "%s", path);
  return static_cast<unsigned int>(mData.ReadFromFile(buffer.data()));
}

std::string Corvane::QuickReadSerialNumber() {
  std::array<char, kSerialLength + 1> text{};
  const int result = Bus().ReadString(text.data(), kSerialLength, corvane::LegacyBus::kEepromBase, kSerialRegister);
  return result == corvane::legacy::kSuccess ? text.data() : "";
}

unsigned int Corvane::GetOpticalParams(float* focalLength, float* angularDeviation, float* focalTilt) {
  return OnRecord([&](const corvane::CorvDataValues& values) -> int {
    if (values.loadedFromEeprom) {
      return mData.ReadOpticalParamsFromEEPROM(focalLength, angularDeviation, focalTilt);
    }
    *focalLength = values.focalLength;
    *angularDeviation = values.angularDeviation;
    *focalTilt = values.focalTilt;
    return corvane::legacy::kSuccess;
  });
}

unsigned int Corvane::Store(corvane::CorvValueId id) {
  return mData.StoreValue(id) == corvane::legacy::kSuccess ? kSuccess : kFailure;
}

unsigned int Corvane::StoreWave(float wave) {
  corvane::CorvDataValues& values = mData.values;
  values.currentWave = wave;
  if (values.loadedFromEeprom) {
    return Store({corvane::CorvField::kCurrentWave});
  }
  const TivanLocale locale;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%8g", static_cast<double>(wave));
  WritePrivateProfileString("general", "CURRWAVE", text.data(), values.sourcePath.c_str());
  return kSuccess;
}
