#include "controller/MotionController.h"

#include <algorithm>
#include <cmath>

#include "controller/CommandSet.h"
#include "controller/StateFile.h"

namespace corvane::sim {
namespace {

constexpr char kCarriageReturn = '\r';
constexpr std::size_t kLongestLine = 512;
constexpr std::size_t kKeptLines = 100000;
/// A host that never reads loses replies, as with a real controller's output buffer.
constexpr std::size_t kOutputBuffer = 1UL << 20U;
constexpr const char* kLineTooLong = "E01";

SimulationTime FromMilliseconds(double milliseconds) {
  return SimulationTime(std::llround(milliseconds * 1000.0));
}

constexpr const char* kDone = "OK\r";

/// The bytes of a reply: a query's value comes after the echo of the query.
std::string Framed(const std::string& line, const Reply& reply) {
  switch (reply.kind) {
    case Reply::Kind::kValue:
      return line + "\r\n" + reply.text + "\r\n" + kDone;
    case Reply::Kind::kError:
      return reply.text + "\r";
    case Reply::Kind::kDone:
      break;
  }
  return kDone;
}

const ReplyFault* Find(const std::vector<ReplyFault>& faults, ReplyFault::Kind kind) {
  const auto found = std::find_if(faults.begin(), faults.end(), [&](const ReplyFault& f) { return f.kind == kind; });
  return found == faults.end() ? nullptr : &*found;
}

}  // namespace

MotionController::MotionController(const InstrumentDescription& description, SimulationLog* log, std::string name,
                                   SimulationClock clock)
    : mInstrument(description), mLog(log), mName(std::move(name)), mClock(std::move(clock)) {
  for (const ReplyFault& fault : description.faults) {
    Arm(fault);
  }
}

void MotionController::Arm(const ReplyFault& fault) {
  mFaults.push_back({fault, 0});
}

void MotionController::ClearFaults() {
  mFaults.clear();
}

std::string MotionController::State() const {
  return StateText(mInstrument, mFaultHits);
}

void MotionController::FromHost(std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    const char character = static_cast<char>(byte);
    if (character != kCarriageReturn) {
      // One character beyond the limit is kept: it tells an overlong line from a whole one.
      if (mPartialLine.size() <= kLongestLine) {
        mPartialLine.push_back(character);
      }
      continue;
    }
    const std::string line = std::move(mPartialLine);
    mPartialLine.clear();
    CarryOut(line);
  }
}

void MotionController::CarryOut(const std::string& line) {
  if (mLines.size() >= 2 * kKeptLines) {
    mLines.erase(mLines.begin(), mLines.begin() + kKeptLines);
  }
  mLines.push_back(line);
  ++mLineCount;
  if (mLog != nullptr) {
    mLog->FromHost(mName, line);
  }

  const std::vector<ReplyFault> faults = FaultsFor(line);
  mFaultHits += static_cast<int>(!faults.empty());
  if (Find(faults, ReplyFault::Kind::kSilence) != nullptr) {
    return;
  }
  Reply reply{Reply::Kind::kError, kLineTooLong, 0};
  if (const ReplyFault* const refusal = Find(faults, ReplyFault::Kind::kError)) {
    reply.text = refusal->text;
  } else if (line.size() <= kLongestLine) {
    reply = Execute(mInstrument, line);
  }
  mBusyUntil = std::max(mBusyUntil, mClock()) + FromMilliseconds(reply.milliseconds);
  const std::string answer = Disturbed(line, reply, faults);
  mPreviousReply = Framed(line, reply);
  Send(answer, mBusyUntil + FromMilliseconds(mInstrument.Description().latency), faults);
}

std::string MotionController::Disturbed(const std::string& line, Reply reply,
                                        const std::vector<ReplyFault>& faults) const {
  using Kind = ReplyFault::Kind;
  if (const ReplyFault* const replaced = Find(faults, Kind::kReply)) {
    return replaced->text;
  }
  if (Find(faults, Kind::kPrevious) != nullptr) {
    return mPreviousReply;
  }
  const bool isValue = reply.kind == Reply::Kind::kValue;
  if (isValue && Find(faults, Kind::kEcho) != nullptr) {
    return line + "\r\n" + kDone;
  }
  if (const ReplyFault* const value = Find(faults, Kind::kValue); value != nullptr && isValue) {
    reply.text = value->text;
  }
  std::string answer = Framed(line, reply);
  if (const ReplyFault* const cut = Find(faults, Kind::kCut)) {
    answer.resize(std::min(answer.size(), cut->splitAt));
  }
  return answer;
}

std::vector<ReplyFault> MotionController::FaultsFor(const std::string& line) {
  std::vector<ReplyFault> hits;
  for (ArmedFault& armed : mFaults) {
    if (armed.fault.command != "*" && armed.fault.command != WordOf(line)) {
      continue;
    }
    ++armed.seen;
    if (armed.seen == armed.fault.occurrence || (armed.fault.fromThenOn && armed.seen > armed.fault.occurrence)) {
      hits.push_back(armed.fault);
    }
  }
  return hits;
}

void MotionController::Send(const std::string& reply, SimulationTime due, const std::vector<ReplyFault>& faults) {
  const ReplyFault* const stale = Find(faults, ReplyFault::Kind::kStale);
  const ReplyFault* const split = Find(faults, ReplyFault::Kind::kSplit);
  const ReplyFault* const slow = Find(faults, ReplyFault::Kind::kSlow);
  const std::string bytes = (stale != nullptr ? stale->text : "") + reply;
  if (mLog != nullptr) {
    mLog->ToHost(mName, bytes);
  }
  if (mOutput.size() + bytes.size() > kOutputBuffer) {
    return;
  }
  if (!mOutput.empty()) {
    due = std::max(due, mOutput.back().due);
  }
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (slow != nullptr) {
      due += FromMilliseconds(slow->milliseconds);
    }
    if (split != nullptr && i == split->splitAt) {
      due += FromMilliseconds(split->milliseconds);
    }
    mOutput.push_back({static_cast<std::uint8_t>(bytes[i]), due});
  }
}

std::size_t MotionController::ToHost(std::span<std::uint8_t> buffer) {
  const SimulationTime now = mOutput.empty() ? SimulationTime(0) : mClock();
  std::size_t count = 0;
  while (count < buffer.size() && !mOutput.empty() && mOutput.front().due <= now) {
    buffer[count] = mOutput.front().value;
    mOutput.pop_front();
    ++count;
  }
  return count;
}

std::optional<SimulationTime> MotionController::UntilOutput() const {
  if (mOutput.empty()) {
    return std::nullopt;
  }
  return std::max(mOutput.front().due - mClock(), SimulationTime(0));
}

}  // namespace corvane::sim
