// The filter wheel of an older instrument.
#pragma once

#include "core/ISpectrographFilter.h"

class Corvane;

/// A wheel that is not fitted and every failure throw TCorvaneException(TCorvaneException::kFailure).
class TSDKFilter final : public ISpectrographFilter {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKFilter(Corvane* driver) : mDriver(driver) {}

  bool IsPresent() override;
  void SetFilter(int filter) override;
  int GetFilter() override;
  void Reset() override;
  /// Labels have at most CorvDataValues::kMaxLabel characters; a longer one is cut.
  void GetFilterInfo(int filter, char* text, int maxLength) override;
  void SetFilterInfo(int filter, const char* text) override;

 private:
  Corvane* mDriver;
};
