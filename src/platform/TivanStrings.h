// Text helpers under their old runtime-library names. None of them depends on the length of its input; none takes null
// but where it says so.
#pragma once

/// Compares as strcmp does, with the ASCII letters A to Z taken for a to z and no other letter folded. Independent of
/// the locale.
int stricmp(const char* a, const char* b);

/// Converts the text in place with toupper or tolower, and answers it.
char* strupr(char* text);
char* strlwr(char* text);

/// Writes the value in decimal, whatever the radix: radix is ignored. At most 12 bytes with the terminator. With a null
/// buffer, one of 256 bytes is allocated, which the caller releases with free (null when there is no memory).
char* itoa(int value, char* buffer, int radix);

/// True when the text contains "*" or "?".
bool has_wild(const char* text);
