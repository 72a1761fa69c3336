#include "controller/TMerakOrbis.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "controller/MerakEepromFactory.h"
#include "controller/MerakWords.h"
#include "controller/ReplyText.h"
#include "controller/TMerakControlI2C.h"
#include "controller/TMerakOrbisCom.h"

namespace words = corvane::words;

namespace {

constexpr const char* kFieldDelimiters = ",\n";
constexpr unsigned int kNeverExpires = 0;
constexpr unsigned int kGratingsLifetimeMs = 3000;

/// By result code; the codes beyond have no text of their own.
constexpr std::array kErrorStrings = {
    "Success",
    "Unknown Error",
    "Device Not Found",
    "Device Not Open",
    "IO Error",
    "Out Of Memory",
    "Invalid Parameter",
    "Illegal Access Error",
    "EEPROM Error",
    "Command Not Supported",
    "Coarse Turret Position Error",
    "Fine Turret Position Error",
    "Illegal Command",
};
static_assert(kErrorStrings.size() == merak::kIllegalCommand + 1);

MerakResult TranslateError(MerakResult code) {
  return code <= merak::kNoText ? code : merak::kUnknownError;
}

/// Into a buffer of kMaxSystemInfoLength + 1 bytes.
void CopyField(const std::string& field, char* out) {
  const std::size_t length = std::min(field.size(), TMerakOrbis::kMaxSystemInfoLength);
  std::copy_n(field.data(), length, out);
  out[length] = '\0';
}

}  // namespace

TMerakOrbis::TMerakOrbis(TI2CInterface* i2c) : mI2C(i2c) {
}

TMerakOrbis::~TMerakOrbis() {
  try {
    Close();
  } catch (...) {
    // Out of memory on the way out: what is left lets go of the device all the same.
  }
  DropConnection();
}

MerakResult TMerakOrbis::GetDeviceCount(int& count) {
  TMerakOrbisCom com(mI2C);
  com.SetTrace(mTrace);
  return TranslateError(com.GetDeviceCount(count));
}

bool TMerakOrbis::ProbeI2C() {
  return TMerakControlI2C(mI2C).IsAvailable();
}

MerakResult TMerakOrbis::Open(int index) {
  return DoOpen(index, false);
}

MerakResult TMerakOrbis::OpenShortTimeouts(int index) {
  return DoOpen(index, true);
}

MerakResult TMerakOrbis::DoOpen(int index, bool shortTimeouts) {
  DropConnection();
  mCom = std::make_unique<TMerakOrbisCom>(mI2C);
  mCom->SetTrace(mTrace);
  if (const MerakResult result = mCom->Open(index, shortTimeouts); result != merak::kSuccess) {
    DropConnection();
    return TranslateError(result);
  }
  if (!mCom->IsAvailable()) {
    // Opened, and silent: the device is closed although the open succeeded.
    DropConnection();
    return merak::kSuccess;
  }
  mSystemType = GetSystemType();
  if (mSystemType == kTypeSx) {
    mCache.EnableCache(eCachePeripherals, true, kNeverExpires);
    mCache.EnableCache(eCacheGratings, true, kGratingsLifetimeMs);
  }
  mRecord = corvane::CreateMerakEeprom(mSystemType, *this);
  return mSystemType == kTypeUnknown ? merak::kUnknownError : merak::kSuccess;
}

void TMerakOrbis::DropConnection() {
  mRecord.reset();
  mCom.reset();
}

MerakResult TMerakOrbis::RestoreLongTimeouts() {
  return IsOpen() ? TranslateError(mCom->RestoreLongTimeouts()) : merak::kDeviceNotOpen;
}

MerakResult TMerakOrbis::Close() {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  mCom->HurryIfSilent();
  if (mRecord != nullptr) {
    mRecord->WriteIfDirty();
  }
  if (mSystemType == kTypeSx) {
    mCom->HurryIfSilent();
    mCom->Bid(words::kFarewell);
  }
  const MerakResult result = TranslateError(mCom->Close());
  if (result == merak::kSuccess) {
    DropConnection();
  }
  return result;
}

void TMerakOrbis::SetTrace(bool trace) {
  mTrace = trace;
  if (mCom != nullptr) {
    mCom->SetTrace(trace);
  }
}

bool TMerakOrbis::IsSilent() const {
  return mCom != nullptr && mCom->IsSilent();
}

int TMerakOrbis::GetSystemType() {
  SystemInfo info;
  if (GetSystemInfoEx(info) != merak::kSuccess) {
    return kTypeUnknown;
  }
  const auto has = [&info](const char* code) { return info.model.find(code) != std::string::npos; };
  if (has("LX") || has("MX")) {
    return kTypeLxMx;
  }
  return has("SX") ? kTypeSx : kTypeOther;
}

const char* TMerakOrbis::GetErrorString(int code) {
  return code >= 0 && static_cast<std::size_t>(code) < kErrorStrings.size()
             ? kErrorStrings.at(static_cast<std::size_t>(code))
             : kErrorStrings[merak::kUnknownError];
}

MerakResult TMerakOrbis::GetSystemInfo(std::string& text) {
  return Query(words::kSystemInfo, {}, text);
}

MerakResult TMerakOrbis::GetSystemInfoEx(SystemInfo& info) {
  info = {};
  mFirmwareVersion = 0.0F;
  std::string text;
  if (const MerakResult result = GetSystemInfo(text); result != merak::kSuccess) {
    return result;
  }
  corvane::ReplyTokens tokens(text, kFieldDelimiters);
  for (std::string* field : {&info.manufacturer, &info.model, &info.serialNumber, &info.fourth, &info.firmware}) {
    *field = tokens.Next().value_or("");
  }
  if (info.firmware.starts_with('V')) {
    corvane::ScanFloat(info.firmware.substr(1), mFirmwareVersion);
  }
  mLatestInfo = info;
  return merak::kSuccess;
}

MerakResult TMerakOrbis::GetSystemInfoEx(char* manufacturer, char* model, char* third, char* fourth, char* firmware) {
  SystemInfo info;
  const MerakResult result = GetSystemInfoEx(info);
  CopyField(info.manufacturer, manufacturer);
  CopyField(info.model, model);
  CopyField(info.serialNumber, third);
  CopyField(info.fourth, fourth);
  CopyField(info.firmware, firmware);
  return result;
}

MerakResult TMerakOrbis::GetRawGratings(std::string& text) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  if (std::string cached = mCache.GetCacheValue(eCacheGratings); !cached.empty()) {
    text = std::move(cached);
    return merak::kSuccess;
  }
  const MerakResult result = Query(words::kGratings, {}, text);
  if (result == merak::kSuccess) {
    mCache.SetCacheValue(eCacheGratings, text);
  }
  return result;
}

MerakResult TMerakOrbis::GetGratings(std::vector<float>& lines, std::vector<std::string>& blazes) {
  if (mRecord == nullptr) {
    return merak::kDeviceNotOpen;
  }
  std::string text;
  if (const MerakResult result = GetRawGratings(text); result != merak::kSuccess) {
    return result;
  }
  lines.clear();
  blazes.clear();
  corvane::ReplyTokens tokens(text, kFieldDelimiters);
  tokens.Next();
  for (int i = 0; i < mRecord->GetMaxNoGratings(); ++i) {
    lines.push_back(corvane::FloatOf(tokens.Next()));
    blazes.emplace_back(tokens.Next().value_or(""));
    tokens.Next();
  }
  return merak::kSuccess;
}

MerakResult TMerakOrbis::GetEepromInfo(std::array<int, kInfoGroups>& first, std::array<float, kInfoGroups>& second,
                                       std::array<int, kInfoGroups>& third) {
  std::string text;
  if (const MerakResult result = Query(words::kEepromInfo, {}, text); result != merak::kSuccess) {
    return result;
  }
  corvane::ReplyTokens tokens(text, kFieldDelimiters);
  tokens.Next();
  for (std::size_t i = 0; i < kInfoGroups; ++i) {
    std::optional<std::string_view> token = tokens.Next();
    if (!token) {
      return merak::kEepromError;
    }
    first[i] = corvane::IntOf(token);
    if (token = tokens.Next(); !token) {
      return merak::kEepromError;
    }
    second[i] = corvane::FloatOf(token);
    if (token = tokens.Next(); !token) {
      return merak::kEepromError;
    }
    third[i] = corvane::IntOf(token);
    // A fourth value of each group is skipped; the last group need not have one.
    if (!tokens.Next() && i + 1 < kInfoGroups) {
      return merak::kEepromError;
    }
  }
  return merak::kSuccess;
}

std::string_view TMerakOrbis::PeripheralText(const PeripheralName& name) {
  return {name.data(), strnlen(name.data(), name.size())};
}

MerakResult TMerakOrbis::GetPeripherals(PeripheralName* names, int& count) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  std::string text = mCache.GetCacheValue(eCachePeripherals);
  if (text.empty()) {
    if (const MerakResult result = Query(words::kPeripheral, {}, text); result != merak::kSuccess) {
      return result;
    }
    mCache.SetCacheValue(eCachePeripherals, text);
  }
  corvane::ReplyTokens tokens(text, kFieldDelimiters);
  int filled = 0;
  while (filled < count) {
    const std::optional<std::string_view> token = tokens.Next();
    if (!token) {
      break;
    }
    PeripheralName& name = names[filled++];
    name.fill('\0');
    std::copy_n(token->data(), std::min(token->size(), name.size()), name.data());
  }
  count = filled;
  return merak::kSuccess;
}

MerakResult TMerakOrbis::SetPeripherals(const std::vector<std::string>& names) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  std::string joined;
  for (const std::string& name : names) {
    joined += (joined.empty() ? "" : ",") + name;
  }
  mCache.SetCacheValue(eCachePeripherals, joined);
  return Command(words::kPeripheral, joined);
}

MerakResult TMerakOrbis::ReadPeripheralNames(std::vector<std::string>& names) {
  std::array<PeripheralName, kMaxPeripherals> listed{};
  int count = kMaxPeripherals;
  if (const MerakResult result = GetPeripherals(listed.data(), count); result != merak::kSuccess) {
    return result;
  }
  names.resize(static_cast<std::size_t>(count));
  std::transform(listed.begin(), listed.begin() + count, names.begin(), PeripheralText);
  return merak::kSuccess;
}

int TMerakOrbis::CountPeripherals(std::initializer_list<std::string_view> wanted) {
  std::vector<std::string> names;
  ReadPeripheralNames(names);
  const auto covered = [&names](std::string_view tag) {
    return std::any_of(names.begin(), names.end(),
                       [tag](const std::string& name) { return tag.find(name) != std::string_view::npos; });
  };
  return static_cast<int>(std::count_if(wanted.begin(), wanted.end(), covered));
}

MerakResult TMerakOrbis::FindInPeripheralNames(std::string_view text, bool& found) {
  std::vector<std::string> names;
  const MerakResult result = ReadPeripheralNames(names);
  found = std::any_of(names.begin(), names.end(),
                      [text](const std::string& name) { return name.find(text) != std::string::npos; });
  return result;
}

int TMerakOrbis::GetInputSlitCount() {
  return CountPeripherals({"SI1", "SI2"});
}

int TMerakOrbis::GetOutputSlitCount() {
  return CountPeripherals({"SO1", "SO2"});
}

MerakResult TMerakOrbis::Command(const char* word, const std::string& params) {
  return IsOpen() ? TranslateError(mCom->Command(word, params)) : merak::kDeviceNotOpen;
}

MerakResult TMerakOrbis::Query(const char* word, const std::string& params, std::string& value) {
  if (!IsOpen()) {
    return merak::kDeviceNotOpen;
  }
  std::string reply;
  const MerakResult result = TranslateError(mCom->Query(word, params, reply));
  if (result == merak::kSuccess) {
    value = std::move(reply);
  }
  return result;
}

MerakResult TMerakOrbis::RawCommand(const std::string& text, std::string& reply) {
  return IsOpen() ? TranslateError(mCom->Basic(text, reply)) : merak::kDeviceNotOpen;
}

MerakResult TMerakOrbis::QueryInt(const char* word, const std::string& params, int& value) {
  std::string reply;
  const MerakResult result = Query(word, params, reply);
  if (result == merak::kSuccess) {
    corvane::ScanInt(reply, value);
  }
  return result;
}
