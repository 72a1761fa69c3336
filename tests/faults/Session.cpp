#include "Session.h"

namespace {

bool Begins(const std::string& call, const char* function) {
  return call.rfind(function, 0) == 0;
}

/// The travel of the focus mirror is read without a guard: what that throws reaches the caller.
unsigned int Run(const ExportedCall& call, Outputs& out) {
  try {
    return call.run(0, out);
  } catch (...) {
    return Begins(call.text, "CorvaneSetFocusMirror") ? unsigned{CORVANE_COMMUNICATION_ERROR} : 0U;
  }
}

std::string BrokenRule(const ExportedFunction& function, unsigned int status, const Outputs& out) {
  static const std::set<unsigned int> kDefined = {CORVANE_COMMUNICATION_ERROR, CORVANE_SUCCESS,
                                                  CORVANE_P1_INVALID,          CORVANE_P2_INVALID,
                                                  CORVANE_NOT_INITIALIZED,     CORVANE_NO_LEGACY_DRIVER};
  if (kDefined.count(status) == 0) {
    return std::string(function.call.text) + " answered " + std::to_string(status);
  }
  Outputs rest = out;
  if (function.clearsFirst || (Begins(function.call.text, "CorvaneGetWavelength(") && rest.floats[0] == 0.0F)) {
    rest.ints[0] = Outputs::kInt;
    rest.floats[0] = Outputs::kFloat;
  }
  const bool isSound = status == CORVANE_SUCCESS || rest.Untouched();
  return isSound ? "" : std::string(function.call.text) + " failed and wrote";
}

}  // namespace

const Calls& ControllerSession() {
  static const Calls calls = [] {
    // Away from where the calls that follow send everything.
    Calls all = {{CALL(CorvaneSetFlipperMirror(d, 1, 1))}, {CALL(CorvaneGetFlipperMirror(d, 1, &o.ints[0]))},
                 {CALL(CorvaneSetFilter(d, 3))},           {CALL(CorvaneGetFilter(d, &o.ints[0]))},
                 {CALL(CorvaneSetGrating(d, 2))},          {CALL(CorvaneGetGrating(d, &o.ints[0]))},
                 {CALL(CorvaneSetSlit(d, 200.0F))},        {CALL(CorvaneGetSlit(d, &o.floats[0]))},
                 {CALL(CorvaneSetOutputSlit(d, 200.0F))},  {CALL(CorvaneSetWavelength(d, 620.0F))},
                 {CALL(CorvaneSetGrating(d, 1))}};
    all.insert(all.end(), EveryDeviceFunction().begin(), EveryDeviceFunction().end());
    return all;
  }();
  return calls;
}

const Calls& LegacySession() {
  // The grating offset does not change by 11 to 29 steps: those are made in tens, and by design only the last move
  // tells of a failure.
  static const Calls calls = {
      {CALL(CorvaneSetGrating(d, 2))},
      {CALL(CorvaneGetGrating(d, &o.ints[0]))},
      {CALL(CorvaneSetWavelength(d, 550.0F))},
      {CALL(CorvaneGetWavelength(d, &o.floats[0]))},
      {CALL(CorvaneSetGratingOffset(d, 2, 35))},
      {CALL(CorvaneGetGratingOffset(d, 2, &o.ints[0]))},
      {CALL(CorvaneGetCalibration(d, o.floats.data(), 4))},
      {CALL(CorvaneSetSlit(d, 180.0F))},
      {CALL(CorvaneGetSlit(d, &o.floats[0]))},
      {CALL(CorvaneSetOutputSlit(d, 220.0F))},
      {CALL(CorvaneGetOutputSlit(d, &o.floats[0]))},
      {CALL(CorvaneSlitReset(d))},
      {CALL(CorvaneSetSlitCoefficients(d, -80, 10, 800, 2300))},
      {CALL(CorvaneSetFilter(d, 3))},
      {CALL(CorvaneGetFilter(d, &o.ints[0]))},
      {CALL(CorvaneFilterReset(d))},
      {CALL(CorvaneSetFilterInfo(d, 2, "OG570"))},
      {CALL(CorvaneGetFilterInfo(d, 2, o.text.data()))},
      {CALL(CorvaneSetPort(d, 1))},
      {CALL(CorvaneGetPort(d, &o.ints[0]))},
      {CALL(CorvaneGotoZeroOrder(d))},
      {CALL(CorvaneWavelengthReset(d))},
      {CALL(CorvaneSetWavelength(d, 480.0F))},
      {CALL(CorvaneSetShutter(d, 1))},
      {CALL(CorvaneSetAccessory(d, 1, 1))},
      {CALL(CorvaneGetAccessoryState(d, 1, &o.ints[0]))},
  };
  return calls;
}

SessionResult RunSession(SweptInstrument& instrument, const Calls& calls, const std::set<std::size_t>& left,
                         const SessionOptions& options) {
  SessionResult result;
  SweptInstrument::Look look = instrument.TakeLook();
  const auto traffic = [&] { return instrument.Transfers() + instrument.LineCount(); };
  std::uint64_t seen = traffic();
  // Whether a fault hit anything since this was asked last. What was not talked to stands as it stood.
  const auto isHit = [&] {
    const std::uint64_t now = traffic();
    if (now == seen) {
      return false;
    }
    seen = now;
    const std::uint64_t before = look.hits;
    look = instrument.TakeLook();
    return look.hits != before;
  };
  const auto mark = [&](std::uint64_t SessionResult::Marks::*place) {
    result.transfers.*place = instrument.Transfers();
    result.lines.*place = instrument.LineCount();
  };
  CorvaneInitialize(instrument.Directory().data());
  int count = 0;
  CorvaneGetNumberDevices(&count);
  result.found = count > 0;
  result.isOpeningHit = isHit();
  mark(&SessionResult::Marks::opened);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SessionResult::Answer& answer = result.answers.emplace_back();
    if (left.count(i) == 0) {
      answer.status = Run(calls[i].call, answer.out);
      const std::string broken = BrokenRule(calls[i], answer.status, answer.out);
      result.broken += result.broken.empty() ? broken : "";
    }
    answer.isHit = isHit();
    answer.stand = look.stand;
    if (options.keepsRecords) {
      answer.record = instrument.Record();
    }
  }
  mark(&SessionResult::Marks::driven);
  if (options.liftsBeforeClosing) {
    instrument.Lift();
    look = instrument.TakeLook();
  }
  result.broken += CorvaneClose() == CORVANE_SUCCESS ? "" : "CorvaneClose failed";
  result.isClosingHit = isHit();
  mark(&SessionResult::Marks::closed);
  result.record = instrument.Record();
  return result;
}
