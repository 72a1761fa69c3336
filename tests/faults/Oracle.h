// What must hold of a session in which something was disturbed. It is measured against sound sessions: the whole one,
// and one without the calls that failed. A call that failed has been carried out or has not, value by value; a call
// that answered success has been, and reports what is so.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Session.h"

class Oracle {
 public:
  enum class Kind { kFirmwareMoves, kSx, kLibrarySteps, kLegacy };

  /// Runs the sound session. Fails the running test when it is none.
  Oracle(SweptInstrument& instrument, const Calls& calls, Kind kind, int failures);

  const SessionResult& Sound() const { return mSound; }
  /// What is wrong with a session and its record; empty when nothing is.
  std::string Finding(const SessionResult& session, const Fault& fault);
  /// Calls in it that were hit and that answered success all the same.
  int Successes(const SessionResult& session) const;

 private:
  /// Calls whose deeds and answers are open: they failed, or are excused.
  std::set<std::size_t> OpenCalls(const SessionResult& session, const Fault& fault) const;
  const SessionResult& Without(const std::set<std::size_t>& left);
  bool StandsWell(std::size_t i, const std::string& place, const SessionResult& session, bool isOpen) const;
  bool IsReportedWell(std::size_t i, const SessionResult& session) const;
  std::string StandFinding(std::size_t i, const SessionResult& session, bool isOpen) const;
  std::string RecordFinding(const SessionResult& session, const Fault& fault, const std::set<std::size_t>& open) const;

  SweptInstrument& mInstrument;
  const Calls& mCalls;
  Kind mKind;
  StoredRecord mFresh;
  SessionResult mSound;
  std::map<std::set<std::size_t>, SessionResult> mWithout;
  /// What a session is measured against: the sound one, without all open calls, without all but the first.
  std::vector<const SessionResult*> mReferences;
};
