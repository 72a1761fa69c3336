// A directory of a test's own, removed with all it holds; and the working directory put there and back.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      std::abort();
    }
    mPath = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& Path() const { return mPath; }

  /// Writes a file of that name and answers its path.
  std::string Write(const std::string& name, std::string_view content) const {
    const std::filesystem::path file = mPath / name;
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
  }

 private:
  std::filesystem::path mPath;
};

/// Makes a directory the working directory for its lifetime.
class ScopedWorkingDirectory {
 public:
  explicit ScopedWorkingDirectory(const std::filesystem::path& directory) : mPrevious(std::filesystem::current_path()) {
    std::filesystem::current_path(directory);
  }
  ~ScopedWorkingDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(mPrevious, ignored);
  }
  ScopedWorkingDirectory(const ScopedWorkingDirectory&) = delete;
  ScopedWorkingDirectory& operator=(const ScopedWorkingDirectory&) = delete;

 private:
  std::filesystem::path mPrevious;
};
