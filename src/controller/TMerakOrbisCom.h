// Turns one controller into a request and reply service: picks and opens a transport, frames lines, reads and
// classifies replies, strips echoes, keeps the time and traces. TMerakOrbis creates one for each open. It knows no
// command words but the greeting, and takes no locks: one exchange at a time. Results are controller codes.
#pragma once

#include <memory>
#include <string>

#include "controller/ReplyWatch.h"
#include "core/MerakResult.h"

class TI2CInterface;
class TMerakControl;

class TMerakOrbisCom {
 public:
  /// The bus is borrowed and may be null.
  explicit TMerakOrbisCom(TI2CInterface* i2c);
  /// Closes the transport.
  virtual ~TMerakOrbisCom();
  TMerakOrbisCom(const TMerakOrbisCom&) = delete;
  TMerakOrbisCom& operator=(const TMerakOrbisCom&) = delete;

  /// Index 0 with a controller on the I2C bus: that one. Otherwise the index-th bridge, which is greeted with "Hello";
  /// whether it answers is not looked at. So bridge 0 cannot be opened while the bus has a controller. shortTimeouts:
  /// 100 ms for reads and writes, and a second of silence, or 5 s in all, ends a reply; otherwise 100 s and 1 s, and
  /// the first silent read behind two minutes: the second one, 200 s after the request.
  MerakResult Open(int index, bool shortTimeouts);
  /// The transport is gone afterwards, whatever the result. kDeviceNotOpen when there is none.
  MerakResult Close();
  /// Always kSuccess.
  MerakResult RestoreLongTimeouts();
  /// Back to the short ones when the controller no longer answers, for what is said to it before a close.
  void HurryIfSilent();
  /// All bridges in the bridge's list, plus 1 for a controller on the I2C bus. On failure count keeps its value.
  MerakResult GetDeviceCount(int& count);
  /// True when the controller answers "Hello".
  bool IsAvailable();

  /// The exchanges; kDeviceNotOpen without a transport. A command's reply text is dropped, so a late "OK" is as good
  /// as any.
  MerakResult Command(const std::string& word, const std::string& params = {});
  /// A command whose reply does not matter: of a controller that no longer answers it is not waited for.
  void Bid(const std::string& word);
  /// reply: the value text behind the echo, usually beginning with a line feed. A reply without the echo, or with
  /// a pause longer than the read time-out in it, is dropped and the next one read; after three of them the result is
  /// kSuccess and reply is empty. On an error it holds what came.
  MerakResult Query(const std::string& word, const std::string& params, std::string& reply);
  /// Sends the text as a line; reply: everything that came, without the "OK", and a carriage return, also when the
  /// result is an error. A failed write leaves reply alone.
  MerakResult Basic(const std::string& text, std::string& reply);

  /// True when the latest exchange ended without a complete reply: in silence, or in text without end.
  bool IsSilent() const { return mSilent; }
  /// Trace lines to OutputDebugString; off at first. An interactive tool or a test switches them on.
  void SetTrace(bool trace) { mTrace = trace; }

  /// Upper case by the classic locale.
  static std::string ToUpper(const std::string& text);

 private:
  static std::string AddParamsToCommand(const std::string& word, const std::string& params);
  MerakResult SetTimeouts(corvane::ReplyWatch::Patience patience);
  MerakResult GetResponse(std::string& reply);
  /// The line's "C+", "B+" or "Q+" and its sending; failure is the trace line of a failed write.
  MerakResult Send(const char* begin, const std::string& line, const char* failure);
  void Trace(const std::string& line) const;
  /// The time taken since the line was sent, then the mark and the text.
  void TraceDone(const char* mark, const std::string& text) const;

  bool mTrace = false;
  std::unique_ptr<TMerakControl> mTransport;
  TI2CInterface* mI2C;
  corvane::ReplyWatch::Patience mPatience = corvane::ReplyWatch::Patience::kLong;
  bool mSilent = false;
  /// The latest reply holds characters that were not sent, one for each read that ran into its time-out.
  bool mSpoilt = false;
  /// Milliseconds of the monotonic clock: when the current line was sent and when its reply was complete.
  unsigned long long mSent = 0;
  unsigned long long mDone = 0;
};
