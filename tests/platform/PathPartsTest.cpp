#include "platform/PathParts.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string>

namespace {

TEST(PathParts, SplitsAtTheLastSlashAndTheLastDot) {
  struct {
    const char* path;
    unsigned int flags;
    std::array<const char*, 6> parts;  // Drive, drive and directory, directory, name and extension, name, extension.
  } const cases[] = {
      {"/data/cfg/spectrograph.ini",
       corvane::kPathDirectory | corvane::kPathFileName | corvane::kPathExtension,
       {"", "/data/cfg/", "/data/cfg/", "spectrograph.ini", "spectrograph", ".ini"}},
      {"..", corvane::kPathDirectory, {"", "../", "../", "", "", ""}},
      {".hidden", corvane::kPathDirectory, {"", "./", "./", "", "", ""}},
      {"C:/a.b.c",
       corvane::kPathDrive | corvane::kPathDirectory | corvane::kPathFileName | corvane::kPathExtension,
       {"C:", "C:/", "/", "a.b.c", "a.b", ".c"}},
      {"C:..", corvane::kPathDrive | corvane::kPathDirectory, {"C:", "C:../", "../", "", "", ""}},
      {"/d*r/?",
       corvane::kPathDirectory | corvane::kPathFileName | corvane::kPathWildName | corvane::kPathWildDirectory,
       {"", "/d*r/", "/d*r/", "?", "?", ""}},
      {"", 0, {"", "", "", "", "", ""}},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.path);
    // As much room as is asked for; the address sanitizer watches the end.
    std::array<std::string, 6> out;
    out.fill(std::string(std::strlen(expected.path) + 2, '#'));
    EXPECT_EQ(expected.flags, fnSplit1(expected.path, out[0].data(), out[1].data(), out[2].data(), out[3].data(),
                                       out[4].data(), out[5].data()));
    for (std::size_t i = 0; i < out.size(); ++i) {
      EXPECT_STREQ(expected.parts[i], out[i].c_str());
    }
  }
}

TEST(PathParts, MergesWithTheSeparatorsThatAreMissing) {
  struct {
    const char *drive, *driveDir, *dir, *nameExt, *name, *ext, *path;
  } const cases[] = {
      {"", nullptr, "/data", nullptr, "x", "ini", "/data/x.ini"},
      {"C:", nullptr, "", nullptr, "x", "", "C:x"},
      {"C:", nullptr, "dir", nullptr, "x", "", "dir/x"},  // The drive is lost.
      {"C:", "/both", "/dir", "n.e", "name", ".ext", "/both/n.e"},
      {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, ""},
  };
  for (const auto& c : cases) {
    std::array<char, 64> out{};
    EXPECT_STREQ(c.path, fnMerge1(out.data(), c.drive, c.driveDir, c.dir, c.nameExt, c.name, c.ext));
  }
}

TEST(PathParts, OutputsMayBeTheBufferOfAnInput) {
  std::array<char, 16> inPlace{"dir/name.ext"};
  fnsplit(inPlace.data(), nullptr, inPlace.data(), nullptr, nullptr);
  EXPECT_STREQ("dir/", inPlace.data());
  EXPECT_STREQ("dir/a.b", fnmerge(inPlace.data(), nullptr, inPlace.data(), "a", "b"));
}

}  // namespace
