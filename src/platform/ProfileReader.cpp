#include "platform/ProfileReader.h"

#include "platform/TivanStrings.h"

namespace corvane {
namespace {

constexpr char kSectionStart = '[';
constexpr char kSectionEnd = ']';
constexpr char kKeyEnd = '=';
constexpr char kComment = ';';
constexpr char kBlank = ' ';
constexpr char kLineFeed = '\n';
constexpr char kCarriageReturn = '\r';

void Keep(char character, std::string& text) {
  if (text.size() < ProfileReader::kMaximumText) {
    text += character;
  }
}

}  // namespace

ProfileReader::ProfileReader(std::istream& stream) : mStream(stream) {
}

// False on a read error too (a directory opens, but does not read), so no loop outlasts the stream.
bool ProfileReader::Get(char& character) {
  return static_cast<bool>(mStream.get(character));
}

bool ProfileReader::GotoNextLine() {
  char character = '\0';
  while (Get(character)) {
    if (character == kLineFeed) {
      return true;
    }
  }
  return false;
}

bool ProfileReader::MoveToNextSection() {
  char character = '\0';
  while (Get(character)) {
    if (character == kSectionStart) {
      return true;
    }
    if (character == kComment && !GotoNextLine()) {
      return false;
    }
  }
  return false;
}

bool ProfileReader::ReadNameUpTo(char end, std::string& name) {
  name.clear();
  char character = '\0';
  while (Get(character)) {
    if (character == end) {
      return true;
    }
    if (character != kBlank) {
      Keep(character, name);
    }
  }
  return false;
}

bool ProfileReader::ReadSectionName(std::string& name) {
  return ReadNameUpTo(kSectionEnd, name);
}

bool ProfileReader::GetNextSection(std::string& name) {
  return MoveToNextSection() && ReadSectionName(name);
}

bool ProfileReader::SearchForSection(const char* wanted) {
  std::string name;
  while (GetNextSection(name)) {
    if (stricmp(name.c_str(), wanted) == 0) {
      return true;
    }
  }
  return false;
}

bool ProfileReader::MoveToNextKey() {
  char character = '\0';
  while (Get(character)) {
    switch (character) {
      case kComment:
        if (!GotoNextLine()) {
          return false;
        }
        break;
      case kLineFeed:
      case kCarriageReturn:
      case kBlank:
        break;
      default:
        mStream.unget();
        return character != kSectionStart;
    }
  }
  return false;
}

bool ProfileReader::ReadKeyName(std::string& name) {
  return ReadNameUpTo(kKeyEnd, name);
}

bool ProfileReader::GetNextKey(std::string& name) {
  return MoveToNextKey() && ReadKeyName(name);
}

bool ProfileReader::SearchForKey(const char* wanted) {
  std::string name;
  while (GetNextKey(name)) {
    if (stricmp(name.c_str(), wanted) == 0) {
      return true;
    }
    GotoNextLine();
  }
  return false;
}

bool ProfileReader::ReadValue(std::string& value) {
  value.clear();
  char character = '\0';
  while (Get(character)) {
    switch (character) {
      case kComment:
        GotoNextLine();
        return true;
      case kCarriageReturn:
      case kLineFeed:
        return true;
      case '"':
      case '\'':
      case kBlank:
        break;
      default:
        Keep(character, value);
    }
  }
  return false;
}

}  // namespace corvane
