// Puts a locale with a decimal comma in force in the whole process for its lifetime, built with localedef into a
// temporary folder: a plain system has none. Tests of number texts assert IsInForce() first.
#pragma once

#include <array>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

class CommaLocale {
 public:
  CommaLocale() {
    std::array<char, 64> folder{"/tmp/comma-locale-XXXXXX"};
    if (mkdtemp(folder.data()) == nullptr) {
      return;
    }
    mFolder = folder.data();
    const std::string command = "localedef -i de_DE -f ISO-8859-1 " + mFolder + "/de_DE >/dev/null 2>&1";
    // The exit status also tells of warnings; whether the locale can be used is what counts.
    [[maybe_unused]] const int status = std::system(command.c_str());
    setenv("LOCPATH", mFolder.c_str(), 1);
    std::setlocale(LC_ALL, "de_DE");
    // Not needed any more, and glibc's newlocale loses a copy of the path at every call while it is set.
    unsetenv("LOCPATH");
  }
  ~CommaLocale() {
    std::setlocale(LC_ALL, "C");
    std::error_code ignored;
    std::filesystem::remove_all(mFolder, ignored);
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  bool IsInForce() const { return std::string(std::localeconv()->decimal_point) == ","; }

 private:
  std::string mFolder;
};
