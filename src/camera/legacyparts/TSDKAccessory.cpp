#include "camera/legacyparts/TSDKAccessory.h"

#include "camera/legacyparts/TSDKOperation.h"
#include "legacy/Corvane.h"

bool TSDKAccessory::IsPresent() {
  return corvane::SdkPartFitted(mDriver, Corvane::kAccessory);
}

void TSDKAccessory::SetAccessory(int line, bool state) {
  corvane::RunCommand(*this, mDriver, &Corvane::SetAccessoryState, line, state);
}

bool TSDKAccessory::GetAccessoryState(int line) {
  return corvane::RunQuery<bool>(
      *this, mDriver, [line](Corvane& driver, bool& state) { return driver.GetAccessoryState(line, state); });
}
