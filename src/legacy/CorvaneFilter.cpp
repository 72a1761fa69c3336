// Corvane: the filter wheel. This library's own sequence.
//
// The wheel turns forward to a filter. Its sensor shows a pattern of three bits for each filter, over a stretch of the
// wheel whose middle lies FILTERRESETOFFSET before the place where the filter stands in the beam. A reset looks for the
// pattern of filter 1 in sixths of a turn and, where a turn of these stepped over it, in small steps. It finds both
// ends of the stretch and goes from its middle to the filter, so the wheel ends at the same place however often it is
// reset.
#include <string>

#include "legacy/Corvane.h"

using corvane::CorvDataValues;
using corvane::CorvField;

namespace {

constexpr int kMotor = corvane::kFilterMotor;
/// Nobody knows which filter is in the beam.
constexpr int kNoFilter = 0;
constexpr std::uint8_t kSensorSelector = 64;
/// Bit 0 of the selector says whether there is a wheel.
constexpr std::uint8_t kSensorMask = 0x0E;
constexpr int kSixths = 6;
/// Small steps in a sixth of a turn, and how many of them an end of the stretch is looked for.
constexpr int kFineMoves = 20;
constexpr int kEdgeMoves = 2 * kFineMoves;

}  // namespace

bool Corvane::IsFilter(int filter) const {
  return filter >= 1 && filter <= static_cast<int>(mData.values.FilterCount());
}

unsigned int Corvane::SetFilter(int filter) {
  int now = 0;
  const unsigned int known = GetFilter(&now);
  if (known != kSuccess) {
    return known;
  }
  CorvDataValues& values = mData.values;
  const std::int64_t turn = values.motors[kMotor].maxSteps;
  if (!IsFilter(filter) || turn < 1) {
    return kFailure;
  }
  const auto delta = [&](int number) -> std::int64_t {
    return values.filterDelta[static_cast<std::size_t>(number - 1)];
  };
  const auto onTheWheel = [&](int number) { return delta(number) >= 0 && delta(number) < turn; };
  // Filters outside the turn, or in one place, cannot be told apart.
  if (!onTheWheel(filter) || !onTheWheel(now) || (filter != now && delta(filter) == delta(now))) {
    return kFailure;
  }
  const std::int64_t steps = (delta(filter) - delta(now) + turn) % turn;
  unsigned int result = kSuccess;
  values.currentFilter = kNoFilter;
  if (steps != 0 && (!Travel(kMotor, true, steps, result) || result != kSuccess)) {
    return kFailure;
  }
  values.currentFilter = filter;
  return Store({CorvField::kCurrentFilter});
}

unsigned int Corvane::GetFilter(int* filter) {
  const int held = mData.values.currentFilter;
  return OnRecord(held >= 1 && held <= static_cast<int>(CorvDataValues::kFilters), [&](auto&) {
    *filter = held;
    return kSuccess;
  });
}

bool Corvane::AtFilterOne(bool& at) {
  std::uint8_t status = 0;
  if (!ReadSelector(kSensorSelector, status)) {
    return false;
  }
  at = (status & kSensorMask) == (mData.values.filterSensorBits[0] & kSensorMask);
  return true;
}

std::optional<int> Corvane::SearchFilterOne(bool forward, bool wanted, std::int64_t stride, int limit) {
  for (int moves = 0;; ++moves) {
    bool at = false;
    unsigned int result = kSuccess;
    if (!AtFilterOne(at)) {
      return std::nullopt;
    }
    if (at == wanted) {
      return moves;
    }
    if (moves == limit || !Travel(kMotor, forward, stride, result) || result != kSuccess) {
      return std::nullopt;
    }
  }
}

unsigned int Corvane::ResetFilter() {
  return OnRecord([&](CorvDataValues& values) -> unsigned int {
    values.currentFilter = kNoFilter;
    if (!TurnToFilterOne()) {
      return kFailure;
    }
    values.currentFilter = 1;
    return Store({CorvField::kCurrentFilter});
  });
}

bool Corvane::TurnToFilterOne() {
  const std::int64_t sixth = mData.values.motors[kMotor].maxSteps / kSixths;
  const std::int64_t fine = sixth / kFineMoves;
  const bool found =
      SearchFilterOne(true, true, sixth, kSixths) || SearchFilterOne(true, true, fine, kSixths * kFineMoves);
  std::optional<int> across;
  if (found && SearchFilterOne(false, false, fine, kEdgeMoves) && SearchFilterOne(true, true, fine, kEdgeMoves)) {
    across = SearchFilterOne(true, false, fine, kEdgeMoves);
  }
  if (!across) {
    return false;
  }
  // Back beyond the middle, to arrive forward, whatever the offset: at least a step, at most a turn.
  const std::int64_t turn = mData.values.motors[kMotor].maxSteps;
  const std::int64_t last = ((sixth + mData.values.filterResetOffset - 1) % turn + turn) % turn + 1;
  unsigned int result = kSuccess;
  return Travel(kMotor, false, sixth + *across * fine / 2, result) && Travel(kMotor, true, last, result) &&
         result == kSuccess;
}

unsigned int Corvane::GetFilterInfo(int filter, char* text, int maxLength) {
  return OnRecord(IsFilter(filter) && text != nullptr && maxLength >= 1, [&](const CorvDataValues& values) {
    const std::string& label = values.filterLabels[static_cast<std::size_t>(filter - 1)];
    const std::size_t length = label.copy(text, static_cast<std::size_t>(maxLength - 1));
    text[length] = '\0';
    return kSuccess;
  });
}

unsigned int Corvane::SetFilterInfo(int filter, const char* text) {
  return OnRecord(IsFilter(filter) && text != nullptr, [&](CorvDataValues& values) {
    const auto index = static_cast<std::size_t>(filter - 1);
    values.filterLabels[index] = std::string(text).substr(0, CorvDataValues::kMaxLabel);
    return Store({CorvField::kFilterLabel, index});
  });
}
