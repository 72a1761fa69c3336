// Reads the library's configuration files under the classic profile call names, with simpler rules. Each call opens the
// file and scans it from its beginning; nothing is shared between calls. The syntax is that of ProfileReader.
#pragma once

/// The value of the first matching key in the first matching section, in either case, into buffer, which holds size
/// bytes. Answers its length; a value that does not fit is cut to size - 1 characters.
///
/// - File, section, key or a complete value missing: the default is copied and the answer is 0. The default is copied
///   whole, without regard to size, so buffer must hold it.
/// - key null: lists the section's key names, each followed by a zero byte, with one more zero byte behind the last.
///   Answers the bytes before that one, less one; so a list of nothing answers all ones (0xFFFFFFFF). A list that does
///   not fit is cut, ends in two zero bytes and answers size - 2.
/// - section null: lists the file's section names in the same way.
/// - defaultValue, buffer or fileName null, or size below 2: 0, and buffer is left alone.
unsigned int GetPrivateProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                                     unsigned int size, const char* fileName);

/// The value as a number: 0x starts a hexadecimal one, 0 an octal one; text that is none is 0. defaultValue when file,
/// section, key or a complete value is missing; 0 when section, key or fileName is null.
unsigned int GetPrivateProfileInt(const char* section, const char* key, int defaultValue, const char* fileName);

/// Configuration files are never written: changes nothing, and answers 0 whatever its arguments.
int WritePrivateProfileString(const char* section, const char* key, const char* value, const char* fileName);
