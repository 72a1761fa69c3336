// Copies dense text data. Not for anything else: see below.
#pragma once

/// Copies from into to, which is made or emptied first, leaving out white space (blanks, tabs, line ends) and writing
/// the last character a second time: "a b\nc" arrives as "abcc". Readers of these files rely on neither, and copies
/// made so far look like this. A source that cannot be read, or has no characters, leaves an empty copy.
/// failIfExists is ignored. Always 1.
int CopyFile(const char* from, const char* to, bool failIfExists);
