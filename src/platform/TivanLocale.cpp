#include "platform/TivanLocale.h"

namespace {

constexpr auto kNone = static_cast<locale_t>(nullptr);

/// Made once and kept: the scopes inside are short and many.
locale_t CLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", kNone);
  return locale;
}

}  // namespace

TivanLocale::TivanLocale() : mPrevious(uselocale(CLocale())) {
}

TivanLocale::~TivanLocale() {
  uselocale(mPrevious);
}
