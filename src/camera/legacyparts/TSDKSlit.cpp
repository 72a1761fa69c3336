#include "camera/legacyparts/TSDKSlit.h"

#include "camera/legacyparts/TSDKOperation.h"

using corvane::RunCommand;
using corvane::RunQuery;

bool TSDKSlit::IsPresent() {
  return corvane::SdkPartFitted(mDriver, mPart);
}

void TSDKSlit::SetSlit(float width) {
  RunCommand(*this, mDriver, &Corvane::SetSlit, mSlit, width);
}

float TSDKSlit::GetSlit() {
  return RunQuery<float>(*this, mDriver,
                         [this](Corvane& driver, float& width) { return driver.GetSlit(mSlit, &width); });
}

void TSDKSlit::SetSlitMode(const char* /*mode*/) {
  throw TCorvaneException(TCorvaneException::kFailure);
}

const char* TSDKSlit::GetSlitMode() {
  throw TCorvaneException(TCorvaneException::kFailure);
}

void TSDKSlit::Reset() {
  RunCommand(*this, mDriver, &Corvane::ResetSlit, mSlit, true);
}

void TSDKSlit::UnsafeReset() {
  RunCommand(*this, mDriver, &Corvane::ResetSlit, mSlit, false);
}

int TSDKSlit::GetSlitStep() {
  return RunQuery<int>(*this, mDriver, [this](Corvane& driver, int& steps) {
    const corvane::BusyScope busy(*this);
    return driver.GetCurrentSlitSteps(mSlit, &steps);
  });
}
