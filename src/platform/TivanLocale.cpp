#include "platform/TivanLocale.h"

namespace {

constexpr auto kNone = static_cast<locale_t>(nullptr);

}  // namespace

TivanLocale::TivanLocale() : mCNumeric(kNone), mPrevious(kNone) {
  locale_t copy = duplocale(uselocale(kNone));
  if (copy == kNone) {
    return;
  }
  mCNumeric = newlocale(LC_NUMERIC_MASK, "C", copy);
  if (mCNumeric == kNone) {
    freelocale(copy);
    return;
  }
  mPrevious = uselocale(mCNumeric);
}

TivanLocale::~TivanLocale() {
  if (mCNumeric == kNone) {
    return;
  }
  uselocale(mPrevious);
  freelocale(mCNumeric);
}
