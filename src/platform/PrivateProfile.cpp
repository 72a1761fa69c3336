#include "platform/PrivateProfile.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/ProfileReader.h"

namespace {

using corvane::ProfileReader;

constexpr std::size_t kMaximumPath = 495;

std::ifstream Open(const char* fileName) {
  return std::ifstream(std::string(fileName, strnlen(fileName, kMaximumPath)));
}

unsigned int SetToDefault(const char* defaultValue, char* buffer) {
  std::memcpy(buffer, defaultValue, std::strlen(defaultValue) + 1);
  return 0;
}

/// Texts read end at a zero byte that the file may hold, as they did in the character buffers of old.
std::string_view TextOf(const std::string& read) {
  return read.c_str();
}

/// Names in a caller's buffer, each followed by a zero byte. size is at least 2.
class NameList {
 public:
  NameList(char* buffer, unsigned int size) : mBuffer(buffer), mSize(size) {}

  /// False when the name did not fit: the list has ended.
  bool Append(std::string_view name) {
    const std::size_t room = mStored < mSize - 2 ? mSize - 2 - mStored : 0;
    // A name without characters still takes a byte, and one more has to follow the last name.
    if (name.size() > room || (name.empty() && mStored >= mSize - 1)) {
      std::copy_n(name.data(), std::min(room, name.size()), mBuffer + mStored);
      mBuffer[mSize - 2] = '\0';
      mBuffer[mSize - 1] = '\0';
      return false;
    }
    std::copy(name.begin(), name.end(), mBuffer + mStored);
    mStored += name.size();
    mBuffer[mStored++] = '\0';
    return true;
  }

  unsigned int CutLength() const { return mSize - 2; }

  unsigned int End() {
    mBuffer[mStored] = '\0';
    return static_cast<unsigned int>(mStored) - 1U;
  }

 private:
  char* mBuffer;
  unsigned int mSize;
  std::size_t mStored = 0;
};

unsigned int ListSections(ProfileReader& reader, NameList list) {
  std::string name;
  while (reader.GetNextSection(name)) {
    if (!list.Append(TextOf(name))) {
      return list.CutLength();
    }
  }
  return list.End();
}

unsigned int ListKeys(ProfileReader& reader, NameList list) {
  reader.GotoNextLine();
  std::string name;
  while (reader.GetNextKey(name)) {
    if (!list.Append(TextOf(name))) {
      return list.CutLength();
    }
    reader.GotoNextLine();
  }
  return list.End();
}

bool FindValue(ProfileReader& reader, const char* key, std::string& value) {
  return reader.SearchForKey(key) && reader.ReadValue(value);
}

}  // namespace

unsigned int GetPrivateProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                                     unsigned int size, const char* fileName) {
  if (defaultValue == nullptr || buffer == nullptr || fileName == nullptr || size < 2) {
    return 0;
  }
  std::ifstream file = Open(fileName);
  if (!file.is_open()) {
    return SetToDefault(defaultValue, buffer);
  }
  ProfileReader reader(file);
  if (section == nullptr) {
    return ListSections(reader, NameList(buffer, size));
  }
  if (!reader.SearchForSection(section)) {
    return SetToDefault(defaultValue, buffer);
  }
  if (key == nullptr) {
    return ListKeys(reader, NameList(buffer, size));
  }
  std::string value;
  if (!FindValue(reader, key, value)) {
    return SetToDefault(defaultValue, buffer);
  }
  const std::string_view text = TextOf(value).substr(0, size - 1);
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = '\0';
  return static_cast<unsigned int>(text.size());
}

unsigned int GetPrivateProfileInt(const char* section, const char* key, int defaultValue, const char* fileName) {
  if (section == nullptr || key == nullptr || fileName == nullptr) {
    return 0;
  }
  std::ifstream file = Open(fileName);
  ProfileReader reader(file);
  std::string value;
  if (!file.is_open() || !reader.SearchForSection(section) || !FindValue(reader, key, value)) {
    return static_cast<unsigned int>(defaultValue);
  }
  constexpr int kDetectBase = 0;
  return static_cast<unsigned int>(std::strtol(value.c_str(), nullptr, kDetectBase));
}

int WritePrivateProfileString(const char* /*section*/, const char* /*key*/, const char* /*value*/,
                              const char* /*fileName*/) {
  return 0;
}
