#include "legacy/EECorvData.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <variant>

#include "legacy/CorvDataKeys.h"
#include "legacy/CorvDataPages.h"
#include "platform/HostSystem.h"
#include "platform/PathParts.h"
#include "platform/PrivateProfile.h"
#include "platform/TivanLocale.h"

namespace {

using legacy::kFailure;
using legacy::kSuccess;

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

corvane::CorvDataPlace OpticalParam(Values& values, std::size_t element) {
  const std::array<float*, 3> order{&values.focalLength, &values.angularDeviation, &values.focalTilt};
  return order[element];
}
constexpr std::size_t kOpticalParams = 3;

constexpr corvane::CorvDataPlaces kSlitCoefficient = corvane::places::SlitPoint<0>;
constexpr std::size_t kSlitCoefficients = 4;

int ReadPlaces(LegacyBus& bus, Values& values, corvane::CorvDataPlaces places, std::size_t count) {
  int result = kSuccess;
  for (std::size_t i = 0; result == kSuccess && i < count; ++i) {
    result = corvane::ReadPageValue(bus, values, places(values, i));
  }
  return result;
}

int WritePlaces(LegacyBus& bus, Values& values, corvane::CorvDataPlaces places, std::size_t count) {
  int result = bus.SetWriteMode();
  for (std::size_t i = 0; result == kSuccess && i < count; ++i) {
    result = corvane::WritePageValue(bus, values, places(values, i));
  }
  return result;
}

}  // namespace

EECorvData::EECorvData(TI2CInterface* i2c, bool usb) : LegacyBus(i2c, usb) {
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
    return SetWriteMode();
  }
  const int result = corvane::ReadPageStep(*this, step, values);
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
  return step == kWriteModeStep ? SetWriteMode() : corvane::WritePageStep(*this, step, values);
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

int EECorvData::StoreValue(corvane::CorvDataPlace value) {
  if (values.loadedFromEeprom) {
    return SetWriteMode() == kSuccess ? corvane::WritePageValue(*this, values, value) : kFailure;
  }
  const TivanLocale locale;
  corvane::WriteProfileKeys(values, IntoFile(values.sourcePath), value);
  return kSuccess;
}

int EECorvData::ReadOpticalParamsFromEEPROM(float* focalLength, float* angularDeviation, float* focalTilt) {
  // Into a copy: the record takes all or none.
  Values read = values;
  if (ReadPlaces(*this, read, OpticalParam, kOpticalParams) != kSuccess) {
    return kFailure;
  }
  const std::array<float*, kOpticalParams> outputs{focalLength, angularDeviation, focalTilt};
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const float value = *std::get<float*>(OpticalParam(read, i));
    *std::get<float*>(OpticalParam(values, i)) = value;
    if (outputs[i] != nullptr) {
      *outputs[i] = value;
    }
  }
  return kSuccess;
}

int EECorvData::WriteOpticalParamsToEEPROM(float focalLength, float angularDeviation, float focalTilt) {
  Values written = values;
  written.focalLength = focalLength;
  written.angularDeviation = angularDeviation;
  written.focalTilt = focalTilt;
  const int result = WritePlaces(*this, written, OpticalParam, kOpticalParams);
  if (result == kSuccess) {
    values = written;
  }
  return result;
}

int EECorvData::ReadSlitCoefficients(std::int32_t& steps1, std::int32_t& width1, std::int32_t& steps2,
                                     std::int32_t& width2) {
  Values read = values;
  if (ReadPlaces(*this, read, kSlitCoefficient, kSlitCoefficients) != kSuccess) {
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
  return WritePlaces(*this, written, kSlitCoefficient, kSlitCoefficients);
}
