// Numbers in protocol lines and configuration text use "." whatever the host program's locale. A TivanLocale puts the
// "C" rules in force on the calling thread for its lifetime; other threads and the process's own locale are never
// touched (setlocale is process-wide and not for a library). One "C" locale serves all scopes: they hold nothing but
// the formatting and parsing of numbers, and making a locale for each would cost an allocation a number.
#pragma once

#include <clocale>

class TivanLocale {
 public:
  TivanLocale();
  ~TivanLocale();
  TivanLocale(const TivanLocale&) = delete;
  TivanLocale& operator=(const TivanLocale&) = delete;

 private:
  locale_t mPrevious;
};
