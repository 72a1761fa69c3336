#include "controller/TMerakControl.h"

#include <array>
#include <string_view>

#include "platform/TimeSource.h"
#include "usbserial/ftd2xx.h"

namespace {

constexpr std::string_view kOk = "OK";
constexpr std::string_view kLongErrorMark = "Tivan_E";
constexpr std::size_t kShortErrorLength = 3;
constexpr std::size_t kLongErrorLength = 9;

struct ErrorWord {
  std::string_view text;
  MerakResult code;
};

constexpr std::array kErrorWords = {
    ErrorWord{"E00", merak::kDeviceNotFound},
    ErrorWord{"E01", merak::kIllegalCommand},
    ErrorWord{"E02", merak::kEepromError},
    ErrorWord{"E03", merak::kInvalidParameter},
    ErrorWord{"E04", merak::kUnknownError},
    ErrorWord{"E05", merak::kDeviceNotFound},
    ErrorWord{"E06", merak::kInvalidParameter},
    ErrorWord{"E07", merak::kInvalidParameter},
    ErrorWord{"E08", merak::kInvalidParameter},
    ErrorWord{"E09", merak::kDeviceNotFound},
    ErrorWord{"E10", merak::kCoarseTurretError},
    ErrorWord{"E11", merak::kFineTurretError},
    ErrorWord{"E12", merak::kDeviceNotFound},
    ErrorWord{"Tivan_E13", merak::kNoText},
    // The controller says "error" and means that the work is done.
    ErrorWord{"Tivan_E14", merak::kSuccess},
};

/// Controller codes by transport status, from 0 on; any status beyond is an unknown error.
constexpr std::array kStatusCodes = {
    merak::kSuccess,           // FT_OK
    merak::kUnknownError,      // FT_INVALID_HANDLE
    merak::kDeviceNotFound,    // FT_DEVICE_NOT_FOUND
    merak::kDeviceNotOpen,     // FT_DEVICE_NOT_OPENED
    merak::kIoError,           // FT_IO_ERROR
    merak::kOutOfMemory,       // FT_INSUFFICIENT_RESOURCES
    merak::kInvalidParameter,  // FT_INVALID_PARAMETER
    merak::kUnknownError,      // FT_INVALID_BAUD_RATE
    merak::kIllegalAccess,     // FT_DEVICE_NOT_OPENED_FOR_ERASE
    merak::kIllegalAccess,     // FT_DEVICE_NOT_OPENED_FOR_WRITE
    merak::kIllegalAccess,     // FT_FAILED_TO_WRITE_DEVICE
    merak::kEepromError,       // FT_EEPROM_READ_FAILED
    merak::kEepromError,       // FT_EEPROM_WRITE_FAILED
    merak::kEepromError,       // FT_EEPROM_ERASE_FAILED
    merak::kEepromError,       // FT_EEPROM_NOT_PRESENT
    merak::kEepromError,       // FT_EEPROM_NOT_PROGRAMMED
    merak::kInvalidParameter,  // FT_INVALID_ARGS
    merak::kNotSupported,      // FT_NOT_SUPPORTED
    merak::kUnknownError,      // FT_OTHER_ERROR
};
static_assert(kStatusCodes.size() == FT_OTHER_ERROR + 1);

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

MerakResult TMerakControl::WriteString(const std::string& line) {
  unsigned int written = 0;
  return TranslateError(Write(line.data(), static_cast<unsigned int>(line.size()), &written));
}

MerakResult TMerakControl::GetResponse(std::string& text, corvane::ReplyWatch& watch) {
  text.clear();
  for (;;) {
    if (const MerakResult result = ReadAndAppendString(text, watch); result != merak::kSuccess) {
      return result;
    }
    if (CheckForOK(text)) {
      text.resize(text.size() - kOk.size());
      return merak::kSuccess;
    }
    MerakResult code = merak::kSuccess;
    if (CheckForError(text, code)) {
      // Of the whole text, not of its end: an error word behind anything else is an unknown error.
      return TranslateStringError(text);
    }
    if (watch.IsOverdue()) {
      watch.GiveUp();
      return merak::kIoError;
    }
    corvane::SleepMilliseconds(1);
  }
}

MerakResult TMerakControl::ReadChar(char& c, bool& brought) {
  unsigned int received = 0;
  const Status status = Read(&c, 1, &received);
  // The I2C transport counts the characters before a carriage return, so it delivers one with a count of 0.
  brought = received > 0 || c == kLineEnd;
  return TranslateError(status);
}

MerakResult TMerakControl::ReadString(std::string& line, corvane::ReplyWatch& watch) {
  line.clear();
  watch.LineBegins();
  char c = 0;
  for (;;) {
    bool brought = false;
    if (const MerakResult result = ReadChar(c, brought); result != merak::kSuccess) {
      return result;
    }
    if (!watch.GoOn(brought)) {
      return merak::kIoError;
    }
    if (c == kLineEnd) {
      return merak::kSuccess;
    }
    if (line.size() == corvane::ReplyWatch::kMaxLength) {
      watch.GiveUp();
      return merak::kIoError;
    }
    // A read that brought nothing adds the character before once more (a zero byte at the start of a line): the line
    // ends only with a carriage return, and a reply with so long a pause in it is spoilt.
    line += c;
  }
}

MerakResult TMerakControl::ReadAndAppendString(std::string& text, corvane::ReplyWatch& watch) {
  std::string line;
  const MerakResult result = ReadString(line, watch);
  if (result != merak::kSuccess) {
    return result;
  }
  if (line.size() > corvane::ReplyWatch::kMaxLength - text.size()) {
    watch.GiveUp();
    return merak::kIoError;
  }
  text += line;
  return merak::kSuccess;
}

bool TMerakControl::CheckForOK(const std::string& text) {
  return std::string_view(text).ends_with(kOk);
}

bool TMerakControl::CheckForError(const std::string& text, MerakResult& code) {
  code = merak::kSuccess;
  const std::size_t length = text.find(kLongErrorMark) != std::string::npos ? kLongErrorLength : kShortErrorLength;
  // Also a long word of which only the beginning has come: the rest is awaited.
  if (text.size() < length) {
    return false;
  }
  const std::string suffix = text.substr(text.size() - length);
  if (suffix[length - 3] != 'E' || !IsDigit(suffix[length - 2]) || !IsDigit(suffix[length - 1])) {
    return false;
  }
  code = TranslateStringError(suffix);
  return true;
}

MerakResult TMerakControl::TranslateError(Status status) {
  return status < kStatusCodes.size() ? kStatusCodes.at(status) : merak::kUnknownError;
}

MerakResult TMerakControl::TranslateStringError(const std::string& text) {
  for (const ErrorWord& word : kErrorWords) {
    if (word.text == text) {
      return word.code;
    }
  }
  return merak::kUnknownError;
}
