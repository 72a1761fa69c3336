#include "Oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace {

/// Calls that by design answer success though a fault hit them, and why. Nothing else is excused.
constexpr struct {
  const char* function;
  bool onlyWhereFirmwareMoves;
  const char* reason;
} kExcused[] = {
    {"CorvaneSetDetectorOffsetEx(", false, "answers success even when the instrument could not be reached"},
    {"CorvaneGetDetectorOffsetEx(", false, "answers success even when the instrument could not be reached"},
    {"CorvaneSetGratingOffset(", true, "an offset is stored whether or not the drive can follow"},
    {"CorvaneSetDetectorOffset(", true, "an offset is stored whether or not the drive can follow"},
    {"CorvaneSetDetectorOffsetPort2(", true, "an offset is stored whether or not the drive can follow"},
    {"CorvaneSetFilter(", false, "acts silently as absent when the list of parts is lost"},
    {"CorvaneGetFilter(", false, "acts silently as absent when the list of parts is lost"},
    {"CorvaneFilterReset(", false, "acts silently as absent when the list of parts is lost"},
    {"CorvaneGetFocusMirror(", false, "acts silently as absent when the list of parts is lost"},
    {"CorvaneGetFocusMirrorMaxSteps(", false, "acts silently as absent when the list of parts is lost"},
    {"CorvaneFocusMirrorReset(", false, "acts silently as absent when the list of parts is lost"},
    {"CorvaneSlitIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneOutputSlitIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneAutoSlitIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneFlipperIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneFlipperMirrorIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneFilterIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneFocusMirrorIsPresent(", false, "absent when the list of parts is lost"},
    {"CorvaneShutterIsPresent(", false, "absent when its status cannot be read"},
    {"CorvaneAccessoryIsPresent(", false, "its model is not asked for again when the answer is lost"},
};

bool IsExcused(const std::string& call, bool firmwareMoves) {
  return std::ranges::any_of(kExcused, [&](const auto& entry) {
    return call.rfind(entry.function, 0) == 0 && (firmwareMoves || !entry.onlyWhereFirmwareMoves);
  });
}

bool IsOffset(const std::string& call) {
  return call.find("SetGratingOffset") != std::string::npos || call.find("SetDetectorOffset") != std::string::npos;
}

bool IsSilentPart(const std::string& call) {
  return std::ranges::any_of(kExcused, [&](const auto& entry) {
    return call.rfind(entry.function, 0) == 0 && std::string(entry.reason).find("list of parts") != std::string::npos;
  });
}

bool Agree(const Stand& a, const Stand& b, const std::string& place) {
  constexpr double kBand = 0.002;  // less than any drive's step
  const auto left = a.find(place);
  const auto right = b.find(place);
  return left == a.end() || right == b.end() ? (left == a.end()) == (right == b.end())
                                             : std::abs(left->second - right->second) <= kBand;
}

/// Begins as the new value does and goes on as the old one.
bool IsBetween(const std::string& value, const std::string& old, const std::string& wanted) {
  if (value.size() != old.size() || value.size() != wanted.size()) {
    return false;
  }
  const auto end = std::ranges::mismatch(value, wanted).in1;
  return std::equal(end, value.end(), old.begin() + (end - value.begin()));
}

std::string Hex(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    text += kDigits[static_cast<unsigned char>(byte) >> 4U];
    text += kDigits[static_cast<unsigned char>(byte) & 15U];
  }
  return text;
}

}  // namespace

Oracle::Oracle(SweptInstrument& instrument, const Calls& calls, Kind kind, int failures)
    : mInstrument(instrument), mCalls(calls), mKind(kind) {
  instrument.Renew();
  RunSession(instrument, calls, {});  // whatever is made once per process exists now
  instrument.Renew();
  mFresh = instrument.Record();
  mSound = RunSession(instrument, calls, {}, {.keepsRecords = true});
  EXPECT_TRUE(mSound.found);
  EXPECT_EQ(mSound.broken, "");
  EXPECT_EQ(std::ranges::count_if(mSound.answers, [](const auto& a) { return a.status != CORVANE_SUCCESS; }), failures);
}

const SessionResult& Oracle::Without(const std::set<std::size_t>& left) {
  if (left.empty()) {
    return mSound;
  }
  auto found = mWithout.find(left);
  if (found == mWithout.end()) {
    mInstrument.Renew();
    found = mWithout.emplace(left, RunSession(mInstrument, mCalls, left)).first;
  }
  return found->second;
}

std::set<std::size_t> Oracle::OpenCalls(const SessionResult& session, const Fault& fault) const {
  std::set<std::size_t> open;
  bool isCut = false;
  // An SX's list of parts is remembered as it came; an instrument that was listed and could not be opened has none.
  bool isListLost = session.isOpeningHit;
  for (std::size_t i = 0; i < mCalls.size(); ++i) {
    const SessionResult::Answer& answer = session.answers[i];
    const std::string call = mCalls[i].call.text;
    isCut = isCut || (fault.isCut && (answer.isHit || session.isOpeningHit));
    isListLost = isListLost || (answer.isHit && mKind == Kind::kSx);
    const bool isExcused =
        ((answer.isHit || isCut) && (fault.isLie || IsExcused(call, mKind != Kind::kLibrarySteps))) ||
        (isListLost && IsSilentPart(call));
    if (answer.status != mSound.answers[i].status || isExcused) {
      open.insert(i);
    }
  }
  return open;
}

bool Oracle::StandsWell(std::size_t i, const std::string& place, const SessionResult& session, bool isOpen) const {
  const Stand& stand = session.answers[i].stand;
  if (std::ranges::any_of(mReferences, [&](const SessionResult* reference) {
        return Agree(stand, reference->answers[i].stand, place);
      })) {
    return true;
  }
  // What a call does not drive stays.
  const bool isDriven = i == 0 || !Agree(mSound.answers[i].stand, mSound.answers[i - 1].stand, place);
  return i > 0 && (isOpen || !isDriven) && Agree(stand, session.answers[i - 1].stand, place);
}

std::string Oracle::StandFinding(std::size_t i, const SessionResult& session, bool isOpen) const {
  const Stand& stand = session.answers[i].stand;
  for (const auto& [place, wanted] : mSound.answers[i].stand) {
    if (!StandsWell(i, place, session, isOpen)) {
      const auto stands = stand.find(place);
      return place + (stands == stand.end() ? " is unknown" : " stands at " + std::to_string(stands->second)) +
             ", wanted " + std::to_string(wanted);
    }
  }
  return "";
}

std::string Oracle::RecordFinding(const SessionResult& session, const Fault& fault,
                                  const std::set<std::size_t>& open) const {
  // What could not be read is not written; what could not be written at the end stays.
  const bool isCut = fault.isCut || session.isClosingHit;
  const bool mayBeOld = isCut || session.isOpeningHit || session.isClosingHit || !session.found;
  for (const auto& [place, value] : session.record) {
    const auto isOf = [&value = value, place = place](const StoredRecord& record) { return record.at(place) == value; };
    // By design a byte that cannot be written ends its value, and nobody comes back to write the rest.
    const bool isTorn = isCut && IsBetween(value, mFresh.at(place), mSound.record.at(place));
    if (!isTorn &&
        !std::ranges::any_of(mReferences, [&](const SessionResult* reference) { return isOf(reference->record); }) &&
        !std::ranges::any_of(open, [&](std::size_t i) { return isOf(mSound.answers[i].record); }) &&
        !(mayBeOld && isOf(mFresh))) {
      return "stored value " + std::to_string(place) + " is " + Hex(value) + ", was " + Hex(mFresh.at(place)) +
             ", wanted " + Hex(mSound.record.at(place));
    }
  }
  return "";
}

bool Oracle::IsReportedWell(std::size_t i, const SessionResult& session) const {
  return std::ranges::any_of(
      mReferences, [&](const SessionResult* reference) { return session.answers[i].out == reference->answers[i].out; });
}

std::string Oracle::Finding(const SessionResult& session, const Fault& fault) {
  // What the instrument says of itself while it is opened is believed.
  if (!session.broken.empty() || (fault.isLie && session.isOpeningHit)) {
    return session.broken;
  }
  const std::set<std::size_t> open = OpenCalls(session, fault);
  std::set<std::size_t> firstDone = open;
  if (!open.empty()) {
    firstDone.erase(firstDone.begin());
  }
  mReferences = {&mSound, &Without(open), &Without(firstDone)};
  // A record that could not be read leaves its values at their defaults, and the library's own steps come from those.
  const bool countsSteps = mKind == Kind::kLibrarySteps || mKind == Kind::kLegacy;
  bool isLied = session.isOpeningHit;
  bool isLost = session.isOpeningHit && countsSteps;
  for (std::size_t i = 0; i < mCalls.size() && session.found; ++i) {
    const SessionResult::Answer& answer = session.answers[i];
    const std::string call = mCalls[i].call.text;
    const bool isOpen = open.count(i) != 0;
    isLied = isLied || (fault.isLie && answer.isHit);
    // An older instrument takes a motor to be where a failed move would have ended.
    isLost = isLost || (isOpen && mKind == Kind::kLegacy);
    if (!isOpen && !isLied && !IsReportedWell(i, session)) {
      return call + " reports " + answer.out.Report() + ", wanted " + mSound.answers[i].out.Report();
    }
    const std::string finding = isLost || (isOpen && IsOffset(call)) ? "" : StandFinding(i, session, isOpen);
    if (!finding.empty()) {
      return call + (isOpen ? " failed: " : ": ") + finding;
    }
  }
  return RecordFinding(session, fault, open);
}

int Oracle::Successes(const SessionResult& session) const {
  return static_cast<int>(std::ranges::count_if(
      session.answers, [](const auto& answer) { return answer.isHit && answer.status == CORVANE_SUCCESS; }));
}
