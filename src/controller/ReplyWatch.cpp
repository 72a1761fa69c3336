#include "controller/ReplyWatch.h"

#include "platform/TimeSource.h"

namespace corvane {

namespace {

constexpr std::uint64_t kMillisecond = 1'000;
constexpr std::uint64_t kLongReplyLimit = 120'000 * kMillisecond;
// From a line's first character to its end. It bounds a controller that lets its characters drip. An honest line may
// pause for the whole reply limit and one read's time-out of 100 s more.
constexpr std::uint64_t kLongLineLimit = 240'000 * kMillisecond;
constexpr std::uint64_t kShortReplyLimit = 5'000 * kMillisecond;
constexpr std::uint64_t kShortSilenceLimit = 1'000 * kMillisecond;

std::uint64_t Now() {
  return Time().MonotonicMicroseconds();
}

}  // namespace

ReplyWatch::ReplyWatch(Patience patience) : mPatience(patience), mStart(Now()), mLatest(mStart), mHeard(mStart) {
}

bool ReplyWatch::GoOn(bool broughtCharacter) {
  std::uint64_t now = Now();
  if (!broughtCharacter && now - mLatest < kMillisecond) {
    SleepMilliseconds(1);
    now = Now();
  }
  mLatest = now;
  if (broughtCharacter) {
    mHeard = now;
    if (!mLineBegun) {
      mLineBegun = true;
      mLineStart = now;
    }
    mGaveUp = mPatience == Patience::kShort ? IsOverdueAt(now) : now - mLineStart > kLongLineLimit;
  } else {
    mHadPause = true;
    const bool silent = mPatience == Patience::kShort && now - mHeard >= kShortSilenceLimit;
    mGaveUp = silent || IsOverdueAt(now);
  }
  return !mGaveUp;
}

bool ReplyWatch::IsOverdue() const {
  return IsOverdueAt(Now());
}

bool ReplyWatch::IsOverdueAt(std::uint64_t now) const {
  return now - mStart > (mPatience == Patience::kShort ? kShortReplyLimit : kLongReplyLimit);
}

}  // namespace corvane
