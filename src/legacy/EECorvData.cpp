#include "legacy/EECorvData.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <span>

#include "legacy/CorvDataKeys.h"
#include "legacy/CorvDataPages.h"
#include "platform/HostSystem.h"
#include "platform/PathParts.h"
#include "platform/PrivateProfile.h"
#include "platform/TivanLocale.h"

namespace {

using corvane::CorvField;
using corvane::CorvValueId;
using corvane::legacy::kFailure;
using corvane::legacy::kSuccess;

constexpr int kWriteModeStep = 0;
static_assert(EECorvData::kLastStep == corvane::kLastPageStep);
constexpr std::size_t kPathBuffer = 240;
constexpr char kDefaultName[] = "spectrograph";
constexpr char kDefaultExtension[] = ".ini";

/// The working directory without a trailing separator; empty when it is unknown or too long.
std::string WorkingDirectory() {
  std::array<char, kPathBuffer> directory{};
  return {directory.data(), GetCurrentDirectory(static_cast<unsigned int>(directory.size()), directory.data())};
}

corvane::ProfileSink IntoFile(const std::string& path) {
  return [path](const char* section, const char* key, const char* text) {
    WritePrivateProfileString(section, key, text, path.c_str());
  };
}

/// The resolved path, also in the caller's buffer when that can take it.
std::string ResolveInPlace(char* path) {
  std::string resolved = EECorvData::ResolvePath(path);
  if (path != nullptr && !resolved.empty()) {
    std::memcpy(path, resolved.c_str(), resolved.size() + 1);
  }
  return resolved;
}

using Values = corvane::CorvDataValues;

constexpr std::array<CorvValueId, 3> kOpticalParams{{
    {CorvField::kFocalLength},
    {CorvField::kAngularDeviation},
    {CorvField::kFocalTilt},
}};

constexpr std::array<CorvValueId, 4> kSlitCoefficients{{
    {CorvField::kSlitPoint, 0},
    {CorvField::kSlitPoint, 1},
    {CorvField::kSlitPoint, 2},
    {CorvField::kSlitPoint, 3},
}};

void StoreResult(float* output, float value) {
  if (output != nullptr) {
    *output = value;
  }
}

int ReadValues(corvane::LegacyBus& bus, Values& values, std::span<const CorvValueId> ids) {
  int result = kSuccess;
  for (auto id = ids.begin(); result == kSuccess && id != ids.end(); ++id) {
    result = corvane::ReadPageValue(bus, values, *id);
  }
  return result;
}

int WriteValues(corvane::LegacyBus& bus, Values& values, std::span<const CorvValueId> ids) {
  int result = bus.SetWriteMode();
  for (auto id = ids.begin(); result == kSuccess && id != ids.end(); ++id) {
    result = corvane::WritePageValue(bus, values, *id);
  }
  return result;
}

}  // namespace

EECorvData::EECorvData(TI2CInterface* i2c, bool usb) : mBus(i2c, usb) {
}

void EECorvData::SetStructureVersionInfo(const char* version) {
  if (version != nullptr) {
    values.structureVersion.assign(version, strnlen(version, corvane::CorvDataValues::kMaxText));
    SplitVersionString(values.structureVersion.c_str(), &values.structureMajor, &values.structureMinor);
  }
}

void EECorvData::Notify() {
  if (mListener != nullptr) {
    mListener->OnDataLoaded(this);
  }
}

int EECorvData::ReadFromEEPROMLoop(int step) {
  if (step == kWriteModeStep) {
    return mBus.SetWriteMode();
  }
  const int result = corvane::ReadPageStep(mBus, step, values);
  if (result != kSuccess) {
    return result;
  }
  if (step == corvane::kFilterPageStep) {
    values.loadedFromEeprom = true;
    values.loadedFromFile = false;
    values.sourcePath.clear();
  }
  if (step == kLastStep) {
    Notify();
  }
  return kSuccess;
}

int EECorvData::WriteToEEPROMLoop(int step) {
  return step == kWriteModeStep ? mBus.SetWriteMode() : corvane::WritePageStep(mBus, step, values);
}

int EECorvData::ReadFromEEPROM() {
  int result = kSuccess;
  for (int step = 0; result == kSuccess && step <= kLastStep; ++step) {
    result = ReadFromEEPROMLoop(step);
  }
  return result;
}

int EECorvData::WriteToEEPROM() {
  int result = kSuccess;
  for (int step = 0; result == kSuccess && step <= kLastStep; ++step) {
    result = WriteToEEPROMLoop(step);
  }
  return result;
}

int EECorvData::Execute(int step) {
  if (step == kWriteModeStep) {
    mTaskError = kSuccess;
  }
  if (mTaskError == kSuccess && mTaskMode == kReadTask) {
    mTaskError = ReadFromEEPROMLoop(step);
  } else if (mTaskError == kSuccess && mTaskMode == kWriteTask) {
    mTaskError = WriteToEEPROMLoop(step);
  }
  return mTaskError;
}

std::string EECorvData::ResolvePath(const char* path) {
  const std::string working = WorkingDirectory();
  corvane::PathParts parts;
  if (path == nullptr) {
    parts.dir = working;
  } else {
    corvane::SplitPath(path, parts);
  }
  if (parts.dir.empty()) {
    // The last component of the working directory goes for a file name here, so this is its parent. Data files of bare
    // names have always been looked for there.
    corvane::PathParts ofWorking;
    corvane::SplitPath(working, ofWorking);
    parts.dir = ofWorking.dir;
  }
  if (parts.dir.empty()) {
    return {};
  }
  parts.driveDir.clear();
  parts.nameExt.clear();
  parts.name = parts.name.empty() ? kDefaultName : parts.name;
  parts.ext = parts.ext.empty() ? kDefaultExtension : parts.ext;
  const std::string resolved = corvane::MergePath(parts);
  return resolved.size() < kPathBuffer ? resolved : std::string();
}

int EECorvData::ReadFromFile(char* path) {
  const std::string resolved = ResolveInPlace(path);
  const TivanLocale locale;
  corvane::ReadProfileKeys(resolved.c_str(), values);
  values.sourcePath = resolved;
  values.loadedFromFile = true;
  values.loadedFromEeprom = false;
  Notify();
  return kSuccess;
}

int EECorvData::WriteToFile(char* path) {
  const std::string resolved = ResolveInPlace(path);
  const TivanLocale locale;
  corvane::WriteProfileKeys(values, IntoFile(resolved));
  return kSuccess;
}

int EECorvData::StoreValue(CorvValueId id) {
  if (values.loadedFromEeprom) {
    return WriteValues(mBus, values, std::array{id});
  }
  const TivanLocale locale;
  corvane::WriteProfileKeys(values, IntoFile(values.sourcePath), id);
  return kSuccess;
}

int EECorvData::ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation, float* focalTilt) {
  // Into a copy: the record takes all or none.
  Values read = values;
  if (ReadValues(mBus, read, kOpticalParams) != kSuccess) {
    return kFailure;
  }
  values = read;
  StoreResult(focalLength, read.focalLength);
  StoreResult(angularDeviation, read.angularDeviation);
  StoreResult(focalTilt, read.focalTilt);
  return kSuccess;
}

int EECorvData::WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) {
  Values written = values;
  written.focalLength = focalLength;
  written.angularDeviation = angularDeviation;
  written.focalTilt = focalTilt;
  const int result = WriteValues(mBus, written, kOpticalParams);
  if (result == kSuccess) {
    values = written;
  }
  return result;
}

int EECorvData::ReadSlitCoefficients(std::int32_t& steps1, std::int32_t& width1, std::int32_t& steps2,
                                     std::int32_t& width2) {
  Values read = values;
  if (ReadValues(mBus, read, kSlitCoefficients) != kSuccess) {
    return kFailure;
  }
  const auto& [first, second] = read.slits[0].points;
  steps1 = first.steps;
  width1 = first.width;
  steps2 = second.steps;
  width2 = second.width;
  return kSuccess;
}

int EECorvData::WriteSlitCoefficients(std::int32_t steps1, std::int32_t width1, std::int32_t steps2,
                                      std::int32_t width2) {
  Values written = values;
  written.slits[0].points = {{{steps1, width1}, {steps2, width2}}};
  return WriteValues(mBus, written, kSlitCoefficients);
}
