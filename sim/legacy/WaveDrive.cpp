#include "legacy/WaveDrive.h"

#include <algorithm>

namespace corvane::sim {
namespace {

struct Hole {
  int first;
  int end;
};

// The search for the coarse hole goes once around, so the hole may lie anywhere; it is wide enough for the way into it,
// and the fine hole begins within the short search that follows.
constexpr Hole kCoarse{-1500, 2500};
constexpr Hole kFine{0, 60};

int Wrapped(long long position) {
  const long long inTurn = position % WaveDrive::kTurn;
  return static_cast<int>(inTurn < 0 ? inTurn + WaveDrive::kTurn : inTurn);
}

bool IsIn(const Hole& hole, int position) {
  return Wrapped(static_cast<long long>(position) - hole.first) < hole.end - hole.first;
}

}  // namespace

WaveDrive::WaveDrive(int position, int backlash) : mPosition(Wrapped(position)), mBacklash(backlash) {
}

void WaveDrive::Step(bool forward) {
  if (forward && mSlack > 0) {
    --mSlack;
  } else if (!forward && mSlack < mBacklash) {
    ++mSlack;
  } else {
    mPosition = Wrapped(static_cast<long long>(mPosition) + (forward ? 1 : -1));
  }
}

int WaveDrive::Move(bool forward, int steps, HoleMode mode) {
  if (steps > 0) {
    mLastForward = forward;
  }
  const Hole* const startedIn = IsIn(kFine, mPosition) ? &kFine : IsIn(kCoarse, mPosition) ? &kCoarse : nullptr;
  for (int made = 0; made < steps; ++made) {
    const int before = mPosition;
    Step(forward);
    if (mPosition == before) {
      continue;
    }
    const auto enters = [&](const Hole& hole) { return !IsIn(hole, before) && IsIn(hole, mPosition); };
    if (mode == HoleMode::kStopAtHole && (enters(kFine) || enters(kCoarse))) {
      return made + 1;
    }
    if (mode == HoleMode::kStopAtEdge && startedIn != nullptr && !IsIn(*startedIn, mPosition)) {
      mPosition = before;
      return made;
    }
  }
  return steps;
}

}  // namespace corvane::sim
