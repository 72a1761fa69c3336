#include "bridge/UsbFaultPlan.h"

#include <bit>
#include <cstddef>

void UsbFaultPlan::Set(const UsbFault& fault) {
  mFault = fault;
  mCounted = 0;
  mHits = 0;
}

void UsbFaultPlan::Clear() {
  mFault.reset();
}

const UsbFault* UsbFaultPlan::Strikes(unsigned kind) {
  ++mOperations.at(static_cast<std::size_t>(std::countr_zero(kind)));
  if (!mFault || (mFault->kinds & kind) == 0) {
    return nullptr;
  }
  ++mCounted;
  if (mCounted != mFault->operation && (mCounted < mFault->operation || !mFault->fromThenOn)) {
    return nullptr;
  }
  ++mHits;
  return &*mFault;
}

std::uint64_t UsbFaultPlan::Operations(unsigned kinds) const {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < mOperations.size(); ++i) {
    sum += (kinds >> i & 1U) != 0 ? mOperations[i] : 0;
  }
  return sum;
}

void UsbFaultPlan::ForgetOperations() {
  mOperations.fill(0);
}
