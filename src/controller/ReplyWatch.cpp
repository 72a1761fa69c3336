#include "controller/ReplyWatch.h"

#include "controller/TimeLimits.h"
#include "platform/TimeSource.h"

namespace corvane {

namespace {

constexpr std::uint64_t kMillisecond = 1'000;
constexpr std::uint64_t kLongReplyLimit = kLongReplyMs * kMillisecond;
constexpr std::uint64_t kLongLineLimit = kLongLineMs * kMillisecond;
constexpr std::uint64_t kShortReplyLimit = kShortReplyMs * kMillisecond;
constexpr std::uint64_t kShortSilenceLimit = kShortSilenceMs * kMillisecond;

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
