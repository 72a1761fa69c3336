// Reads sections, keys and values of an INI file from a stream, one character at a time, with bounded memory whatever
// the file holds. For the profile functions; knows nothing of defaults and caller's buffers.
#pragma once

#include <cstddef>
#include <istream>
#include <string>

namespace corvane {

/// A section is "[" name "]" and what follows up to the next "["; an entry is key "=" value up to the end of the line;
/// ";" starts a comment up to the end of the line. Blanks are dropped everywhere, also inside names and values.
class ProfileReader {
 public:
  /// Characters kept of a section name, a key name or a value; more are read and discarded.
  static constexpr std::size_t kMaximumText = 255;

  /// The stream is borrowed. Reading starts where it stands.
  explicit ProfileReader(std::istream& stream);

  /// Reads up to and including the next line feed; false at the end of the file. A carriage return alone ends no line.
  bool GotoNextLine();

  /// Moves behind the next "[" outside a comment, passing over entries; false at the end of the file.
  bool MoveToNextSection();
  /// Reads a name up to "]"; false if the file ends first.
  bool ReadSectionName(std::string& name);
  bool GetNextSection(std::string& name);
  /// Moves behind the header of the first section of that name, in either case; false if there is none.
  bool SearchForSection(const char* wanted);

  /// Moves to the next character that can start a key; false at the end of the section (before its "[") or file.
  bool MoveToNextKey();
  /// Reads a name up to "="; false if the file ends first. A line without "=" runs into the next line's key.
  bool ReadKeyName(std::string& name);
  bool GetNextKey(std::string& name);
  /// Moves behind the "=" of the section's first key of that name, in either case; false if there is none.
  bool SearchForKey(const char* wanted);

  /// Reads a value up to the end of the line or a comment, dropping quotes as well as blanks; false if the file ends
  /// first, so a value needs a line end (or a comment) behind it.
  bool ReadValue(std::string& value);

 private:
  bool Get(char& character);
  bool ReadNameUpTo(char end, std::string& name);

  std::istream& mStream;
};

}  // namespace corvane
