#include "components/TCorvaneMerakFilter.h"

#include <algorithm>
#include <string>

#include "components/MerakOperation.h"
#include "controller/TMerakOrbis.h"

bool TCorvaneMerakFilter::IsPresent() {
  return corvane::ListContainsText(mAborter, mController, "FIL");
}

void TCorvaneMerakFilter::SetFilter(int filter) {
  if (IsPresent()) {
    corvane::RunBusy(mAborter, *this, [&] { return mController.SetFilter(filter + 1); });
  }
}

int TCorvaneMerakFilter::GetFilter() {
  if (!IsPresent()) {
    return 0;
  }
  return corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetFilter(given); }) - 1;
}

void TCorvaneMerakFilter::Reset() {
  if (IsPresent()) {
    corvane::RunBusy(mAborter, *this, [&] { return mController.FilterHome(); });
  }
}

void TCorvaneMerakFilter::GetFilterInfo(int filter, char* text, int /*maxLength*/) {
  corvane::ReadRecord(mAborter, mController, [&] {
    const std::string label = mController.GetFilterString(filter);
    std::copy_n(label.c_str(), label.size() + 1, text);
  });
}

void TCorvaneMerakFilter::SetFilterInfo(int filter, const char* text) {
  corvane::RunPaused(mAborter, [&] {
    const MerakResult result = mController.SetFilterString(filter, text);
    StateChanged();
    return result;
  });
}
