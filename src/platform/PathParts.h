// Splits a path into its parts and puts one together. Only "/" separates directories; a drive is a letter and ":" as
// the first two characters. The library uses the std::string forms; the forms with character buffers are the same
// under their old names.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// What a path has, as the splitters answer it.
enum PathFlag : unsigned int {
  kPathExtension = 1,
  kPathFileName = 2,
  kPathDirectory = 4,
  kPathDrive = 8,
  kPathWildName = 16,
  kPathWildDirectory = 32,
};

/// A path has a drive, then a directory with its trailing "/", then a name, then an extension with its leading ".".
/// driveDir is drive and directory, nameExt name and extension.
struct PathParts {
  std::string drive;
  std::string driveDir;
  std::string dir;
  std::string nameExt;
  std::string name;
  std::string ext;
};

/// Splits path into parts and answers its PathFlags. Without a "/", leading dots are a directory and what follows them
/// is dropped: ".." gives directory "../", and so does "..x".
unsigned int SplitPath(std::string_view path, PathParts& parts);

/// Joins drive and directory (or driveDir), and name and extension (or nameExt), with the "/" and "." that are missing.
/// driveDir and nameExt come before the parts they stand for. With drive and directory both given the drive is lost:
/// drives do not occur on this platform.
std::string MergePath(const PathParts& parts);

}  // namespace corvane

/// SplitPath into character buffers; a null output is not written. Every other output must hold two characters more
/// than strlen(path), and may be the path's own buffer.
unsigned int fnSplit1(const char* path, char* drive, char* driveDir, char* dir, char* nameExt, char* name, char* ext);
/// fnSplit1 without driveDir and nameExt.
unsigned int fnsplit(const char* path, char* drive, char* dir, char* name, char* ext);

/// MergePath into a character buffer; a null part is empty. out must hold three characters more than all parts
/// together, and may be the buffer of a part. Answers out.
char* fnMerge1(char* out, const char* drive, const char* driveDir, const char* dir, const char* nameExt,
               const char* name, const char* ext);
/// fnMerge1 without driveDir and nameExt.
char* fnmerge(char* out, const char* drive, const char* dir, const char* name, const char* ext);
