// What the library asks the host computer about itself.
#pragma once

/// Writes the host name into buffer, which holds *size bytes; *size becomes the name's length. 1, or 0 on failure (also
/// when name and terminator do not fit), with both left alone.
int GetComputerName(char* buffer, unsigned int* size);

/// Writes the working directory, without a trailing separator, into buffer, which holds size bytes. Its length, or 0 on
/// failure (also when it does not fit).
unsigned int GetCurrentDirectory(unsigned int size, char* buffer);
