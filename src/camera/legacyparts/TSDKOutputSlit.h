// The output slit of an older instrument.
#pragma once

#include "camera/legacyparts/TSDKSlit.h"

class TSDKOutputSlit final : public TSDKSlit {
 public:
  /// Borrowed; outlives the component. Without one the slit is one that this model does not have.
  explicit TSDKOutputSlit(Corvane* driver) : TSDKSlit(driver, 1, Corvane::kOutputSlit) {}
};
