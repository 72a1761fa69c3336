#include "camera/legacyparts/TSDKFilter.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

using corvane::PresentDriver;
using corvane::RunCommand;
using corvane::RunQuery;

bool TSDKFilter::IsPresent() {
  return corvane::SdkPartFitted(mDriver, Corvane::kFilterWheel);
}

void TSDKFilter::SetFilter(int filter) {
  RunCommand(*this, mDriver, &Corvane::SetFilter, Corvane::FromZeroBased(filter));
}

int TSDKFilter::GetFilter() {
  return RunQuery<int>(*this, mDriver, [](Corvane& driver, int& filter) { return driver.GetFilter(&filter); }) - 1;
}

void TSDKFilter::Reset() {
  RunCommand(*this, mDriver, &Corvane::ResetFilter);
}

void TSDKFilter::GetFilterInfo(int filter, char* text, int maxLength) {
  corvane::ThrowOnDriverFailure(
      PresentDriver(*this, mDriver).GetFilterInfo(Corvane::FromZeroBased(filter), text, maxLength));
}

void TSDKFilter::SetFilterInfo(int filter, const char* text) {
  RunCommand(*this, mDriver, &Corvane::SetFilterInfo, Corvane::FromZeroBased(filter), text);
}
