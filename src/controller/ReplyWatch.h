// How long one reply may take. TMerakControl's line reader asks it after every read; without it a controller that
// falls silent, or talks without end, would hold its caller for ever. It waits only to keep a dead line from spinning.
#pragma once

#include <cstddef>
#include <cstdint>

namespace corvane {

class ReplyWatch {
 public:
  /// How a line without an answer is taken. kShort: gone after a second without a byte, or 5 s after the reply was
  /// asked for, whatever came. kLong: gone at the first silent read or line end behind the reply's two minutes, since
  /// a move may take minutes before its answer comes; a line that has begun may take 4 minutes to its end.
  enum class Patience { kShort, kLong };

  /// A line, and a whole reply, longer than this is given up.
  static constexpr std::size_t kMaxLength = 65536;

  /// The clock starts now.
  explicit ReplyWatch(Patience patience);

  /// A new line is expected.
  void LineBegins() { mLineBegun = false; }
  /// Called after every read, with whether it brought a character. False: give the reply up. A read that came back
  /// at once without a character is made to last a millisecond.
  bool GoOn(bool broughtCharacter);
  /// True once the time of the whole reply has passed.
  bool IsOverdue() const;
  /// The reply is too long to be one.
  void GiveUp() { mGaveUp = true; }
  /// True when the reply was given up for its time or its length, as against ended by an answer or a transport error.
  bool GaveUp() const { return mGaveUp; }
  /// True when a read brought nothing: the text then holds a character that was not sent.
  bool HadPause() const { return mHadPause; }

 private:
  bool IsOverdueAt(std::uint64_t now) const;

  Patience mPatience;
  std::uint64_t mStart;
  /// End of the latest read, and of the latest one that brought a character.
  std::uint64_t mLatest;
  std::uint64_t mHeard;
  std::uint64_t mLineStart = 0;
  bool mLineBegun = false;
  bool mGaveUp = false;
  bool mHadPause = false;
};

}  // namespace corvane
