// Exported functions of the filter wheel.
#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "api/ApiFrame.h"

using corvane::ApiCall;
using corvane::Argument;

namespace {

constexpr auto kFilter = &TSpectrographHardware::GetFilterInterface;
constexpr int kFilters = 6;

ApiCall FilterCall(int device, int filter) {
  ApiCall call(device);
  call.Require(filter >= 1 && filter <= kFilters, Argument::kSecond);
  return call;
}

}  // namespace

unsigned int CorvaneSetFilter(int device, int filter) {
  return FilterCall(device, filter)
      .On(kFilter, [&](ISpectrographFilter& wheel) { wheel.SetFilter(filter - 1); })
      .Status();
}

unsigned int CorvaneGetFilter(int device, int* filter) {
  int value = 0;
  return ApiCall(device)
      .On(kFilter, [&](ISpectrographFilter& wheel) { value = wheel.GetFilter() + 1; })
      .Store(filter, value)
      .Status();
}

unsigned int CorvaneFilterReset(int device) {
  return ApiCall(device).On(kFilter, [](ISpectrographFilter& wheel) { wheel.Reset(); }).Status();
}

unsigned int CorvaneGetFilterInfo(int device, int filter, char* info) {
  std::array<char, CORVANE_FILTER_INFO_LENGTH> label{};
  ApiCall call = FilterCall(device, filter);
  call.On(kFilter, [&](ISpectrographFilter& wheel) {
    wheel.GetFilterInfo(filter - 1, label.data(), CORVANE_FILTER_INFO_LENGTH - 1);
  });
  label.back() = '\0';
  if (call.Good() && info != nullptr) {
    std::copy_n(label.begin(), std::strlen(label.data()) + 1, info);
  }
  return call.Status();
}

unsigned int CorvaneSetFilterInfo(int device, int filter, const char* info) {
  return FilterCall(device, filter)
      .Require(info != nullptr, Argument::kThird)
      .On(kFilter,
          [&](ISpectrographFilter& wheel) {
            const std::string copy(info);
            wheel.SetFilterInfo(filter - 1, copy.c_str());
          })
      .Status();
}

unsigned int CorvaneFilterIsPresent(int device, int* present) {
  int value = 0;
  return ApiCall(device)
      .On(kFilter, [&](ISpectrographFilter& wheel) { value = wheel.IsPresent() ? 1 : 0; })
      .Store(present, value)
      .Status();
}
