#include "platform/PathParts.h"

#include <cstddef>
#include <cstring>

#include "platform/TivanStrings.h"

namespace corvane {
namespace {

constexpr std::size_t kDriveLength = 2;

}  // namespace

unsigned int SplitPath(std::string_view path, PathParts& parts) {
  parts = PathParts{};
  unsigned int flags = 0;
  if (path.size() >= kDriveLength && path[1] == ':') {
    parts.drive = path.substr(0, kDriveLength);
    path.remove_prefix(kDriveLength);
    flags |= kPathDrive;
  }

  const std::size_t lastSlash = path.rfind('/');
  if (lastSlash != std::string_view::npos) {
    parts.dir = path.substr(0, lastSlash + 1);
    path.remove_prefix(lastSlash + 1);
    flags |= kPathDirectory;
    flags |= has_wild(parts.dir.c_str()) ? kPathWildDirectory : 0U;
  } else if (!path.empty() && path.front() == '.') {
    // npos means that there is nothing but dots, and substr takes it as such.
    parts.dir = std::string(path.substr(0, path.find_first_not_of('.'))) + '/';
    parts.driveDir = parts.drive + parts.dir;
    return flags | kPathDirectory;
  }
  parts.driveDir = parts.drive + parts.dir;

  parts.nameExt = path;
  flags |= parts.nameExt.empty() ? 0U : kPathFileName;
  flags |= has_wild(parts.nameExt.c_str()) ? kPathWildName : 0U;

  const std::size_t lastDot = path.rfind('.');
  parts.name = path.substr(0, lastDot);
  if (lastDot != std::string_view::npos) {
    parts.ext = path.substr(lastDot);
    flags |= kPathExtension;
  }
  return flags;
}

std::string MergePath(const PathParts& parts) {
  std::string path = parts.driveDir;
  if (path.empty()) {
    path = parts.dir.empty() ? parts.drive : parts.dir;
  }
  if (!path.empty() && path.back() != '/' && path.back() != ':') {
    path += '/';
  }
  if (!parts.nameExt.empty()) {
    return path + parts.nameExt;
  }
  path += parts.name;
  if (!parts.ext.empty()) {
    if (parts.ext.front() != '.') {
      path += '.';
    }
    path += parts.ext;
  }
  return path;
}

}  // namespace corvane

namespace {

void Store(const std::string& text, char* out) {
  if (out != nullptr) {
    std::memcpy(out, text.c_str(), text.size() + 1);
  }
}

std::string TextOf(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

unsigned int fnSplit1(const char* path, char* drive, char* driveDir, char* dir, char* nameExt, char* name, char* ext) {
  // The parts are copies, so an output may be the path's own buffer.
  corvane::PathParts parts;
  const unsigned int flags = corvane::SplitPath(path, parts);
  Store(parts.drive, drive);
  Store(parts.driveDir, driveDir);
  Store(parts.dir, dir);
  Store(parts.nameExt, nameExt);
  Store(parts.name, name);
  Store(parts.ext, ext);
  return flags;
}

unsigned int fnsplit(const char* path, char* drive, char* dir, char* name, char* ext) {
  return fnSplit1(path, drive, nullptr, dir, nullptr, name, ext);
}

char* fnMerge1(char* out, const char* drive, const char* driveDir, const char* dir, const char* nameExt,
               const char* name, const char* ext) {
  Store(corvane::MergePath({TextOf(drive), TextOf(driveDir), TextOf(dir), TextOf(nameExt), TextOf(name), TextOf(ext)}),
        out);
  return out;
}

char* fnmerge(char* out, const char* drive, const char* dir, const char* name, const char* ext) {
  return fnMerge1(out, drive, nullptr, dir, nullptr, name, ext);
}
