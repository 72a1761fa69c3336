// Counts the operations of a virtual bus and tells which of them the fault in force strikes. The bus locks.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "bridge/UsbFault.h"

class UsbFaultPlan {
 public:
  void Set(const UsbFault& fault);
  void Clear();
  /// Counts one operation of this kind; answers the fault if it strikes here, else null.
  const UsbFault* Strikes(unsigned kind);
  std::uint64_t Hits() const { return mHits; }
  std::uint64_t Operations(unsigned kinds) const;
  void ForgetOperations();

 private:
  std::optional<UsbFault> mFault;
  std::uint64_t mCounted = 0;
  std::uint64_t mHits = 0;
  std::array<std::uint64_t, 3> mOperations{};
};
