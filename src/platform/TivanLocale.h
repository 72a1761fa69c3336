// Numbers in protocol lines and configuration text use "." whatever the host program's locale. A TivanLocale puts the
// "C" numeric rules in force on the calling thread for its lifetime; other threads and the process's own locale are
// never touched (setlocale is process-wide and not for a library).
#pragma once

#include <locale.h>

class TivanLocale {
 public:
  TivanLocale();
  ~TivanLocale();
  TivanLocale(const TivanLocale&) = delete;
  TivanLocale& operator=(const TivanLocale&) = delete;

 private:
  locale_t mCNumeric;
  locale_t mPrevious;
};
