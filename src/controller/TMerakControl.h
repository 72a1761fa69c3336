// Byte transport to one motion controller, with the line reader and reply assembler that sit on any transport. The
// transaction layer (TMerakOrbisCom) creates and owns transports; TMerakOrbis asks one whether its bus has a
// controller.
#pragma once

#include <string>

#include "controller/ReplyWatch.h"
#include "core/MerakResult.h"

class TMerakControl {
 public:
  /// Status of a transport operation, in the number space of FT_STATUS (usbserial/ftd2xx.h); FT_OK is success.
  using Status = unsigned int;
  /// Ends every line, either way.
  static constexpr char kLineEnd = '\r';

  TMerakControl() = default;
  virtual ~TMerakControl() = default;
  TMerakControl(const TMerakControl&) = delete;
  TMerakControl& operator=(const TMerakControl&) = delete;

  /// Whether this kind of transport can be used at all.
  virtual bool IsAvailable() = 0;
  /// The FT_ListDevices contract.
  virtual Status ListDevices(void* arg1, void* arg2, unsigned int flags) = 0;
  virtual Status Open(int index) = 0;
  virtual Status Close() = 0;
  /// received: how many bytes came. Fewer than count, or none, is no error.
  virtual Status Read(void* buffer, unsigned int count, unsigned int* received) = 0;
  virtual Status Write(const void* buffer, unsigned int count, unsigned int* written) = 0;
  virtual Status SetTimeouts(unsigned int readTimeoutMs, unsigned int writeTimeoutMs) = 0;
  /// mask: 1 receive buffer, 2 transmit buffer.
  virtual Status Purge(unsigned int mask) = 0;

  /// Sends a line as it stands; the caller brings the carriage return.
  MerakResult WriteString(const std::string& line);
  /// Reads lines until the text they make up ends in "OK", which is taken off, or in an error word, whose code is
  /// returned. Line feeds stay in the text, empty lines add nothing. kIoError when the watch gives up; text then
  /// holds what came.
  MerakResult GetResponse(std::string& text, corvane::ReplyWatch& watch);

  /// Controller code of a transport status.
  static MerakResult TranslateError(Status status);
  /// Controller code of an error word; kUnknownError for any other text. "Tivan_E14" is success.
  static MerakResult TranslateStringError(const std::string& text);
  /// True when the text ends in "OK".
  static bool CheckForOK(const std::string& text);
  /// True when the text ends in an error word: "E" and two digits, at the end of its last 3 characters, or of its last
  /// 9 when "Tivan_E" occurs anywhere. code is that of these last characters, kSuccess when the result is false.
  static bool CheckForError(const std::string& text, MerakResult& code);

 private:
  /// Reads into c. brought: a character came. A read that brings none succeeds and leaves c as it was.
  MerakResult ReadChar(char& c, bool& brought);
  /// Characters up to a carriage return, which is left out.
  MerakResult ReadString(std::string& line, corvane::ReplyWatch& watch);
  MerakResult ReadAndAppendString(std::string& text, corvane::ReplyWatch& watch);
};
