// Puts a locale with a decimal comma in force in the whole process for its lifetime, built with localedef into a
// temporary folder: a plain system has none. Tests of number texts assert IsInForce() first.
#pragma once

#include <clocale>
#include <cstdlib>
#include <string>

#include "support/TemporaryDirectory.h"

class CommaLocale {
 public:
  CommaLocale() {
    const std::string folder = mFolder.Path().string();
    const std::string command = "localedef -i de_DE -f ISO-8859-1 " + folder + "/de_DE >/dev/null 2>&1";
    // The exit status also tells of warnings; whether the locale can be used is what counts.
    [[maybe_unused]] const int status = std::system(command.c_str());
    setenv("LOCPATH", folder.c_str(), 1);
    std::setlocale(LC_ALL, "de_DE");
    // Not needed any more, and glibc's newlocale loses a copy of the path at every call while it is set.
    unsetenv("LOCPATH");
  }
  ~CommaLocale() { std::setlocale(LC_ALL, "C"); }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  bool IsInForce() const { return std::string(std::localeconv()->decimal_point) == ","; }

 private:
  TemporaryDirectory mFolder;
};
