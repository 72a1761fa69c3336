#include "Session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <set>
#include <thread>

namespace {

constexpr const char* kDescriptors = "/proc/self/fd";
constexpr const char* kThreads = "/proc/self/task";

std::ptrdiff_t Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

/// Whether a folder of /proc/self comes to a number of entries; the virtual bus announces a chip over a socket that is
/// open for a moment.
bool SettlesAt(const char* folder, std::ptrdiff_t expected) {
  for (int looks = 1; Entries(folder) != expected; ++looks) {
    if (looks == 10'000) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

bool Begins(const std::string& call, const char* function) {
  return call.rfind(function, 0) == 0;
}

/// Whether a part counts as not fitted when the list of parts cannot be had; its functions then answer that, and no
/// failure.
bool AnswersWithoutPart(const std::string& call) {
  constexpr const char* kSilent[] = {"CorvaneGetFilter(", "CorvaneGetFocusMirror(", "CorvaneGetFocusMirrorMaxSteps("};
  return call.find("IsPresent") != std::string::npos ||
         std::any_of(std::begin(kSilent), std::end(kSilent), [&](const char* name) { return Begins(call, name); });
}

/// The travel of the focus mirror is read without a guard: what that throws reaches the caller.
unsigned int Run(const ExportedCall& call, Outputs& out) {
  try {
    return call.run(0, out);
  } catch (...) {
    EXPECT_TRUE(Begins(call.text, "CorvaneSetFocusMirror")) << call.text;
    return CORVANE_COMMUNICATION_ERROR;
  }
}

SessionResult::Answer AnswerOf(const ExportedFunction& function) {
  static const std::set<unsigned int> kDefined = {CORVANE_COMMUNICATION_ERROR, CORVANE_SUCCESS,
                                                  CORVANE_P1_INVALID,          CORVANE_P2_INVALID,
                                                  CORVANE_NOT_INITIALIZED,     CORVANE_NO_LEGACY_DRIVER};
  const ExportedCall& call = function.call;
  SessionResult::Answer answer{call.text, 0, {}};
  answer.status = Run(call, answer.out);
  EXPECT_EQ(kDefined.count(answer.status), 1U) << call.text << " answered " << answer.status;
  if (answer.status != CORVANE_SUCCESS) {
    Outputs rest = answer.out;
    if (function.clearsFirst || (Begins(call.text, "CorvaneGetWavelength(") && rest.floats[0] == 0.0F)) {
      rest.ints[0] = Outputs::kInt;
      rest.floats[0] = Outputs::kFloat;
    }
    EXPECT_TRUE(rest.Untouched()) << call.text << " failed and wrote";
  }
  return answer;
}

std::uint64_t NextFault(std::uint64_t operation, const SessionResult& baseline, const Strides& strides) {
  constexpr std::uint64_t kEnds = 30;
  if (operation < kEnds || (operation >= baseline.driven && operation < baseline.driven + kEnds)) {
    return operation + 1;
  }
  if (operation < baseline.opened) {
    return std::min(operation + strides.record, baseline.opened);
  }
  return operation + (operation < baseline.driven ? strides.driving : strides.record);
}

}  // namespace

int SessionResult::Failures() const {
  const auto failed = [](const Answer& answer) { return answer.status != CORVANE_SUCCESS; };
  return static_cast<int>(std::ranges::count_if(answers, failed));
}

bool SessionResult::SameStatuses(const SessionResult& other) const {
  return found == other.found && std::ranges::equal(answers, other.answers, {}, &Answer::status, &Answer::status);
}

std::string SessionResult::Difference(const SessionResult& other) const {
  const auto differs = [](const Answer& a, const Answer& b) {
    return !(a.out == b.out) && !AnswersWithoutPart(a.call);
  };
  for (std::size_t i = 0; i < answers.size(); ++i) {
    if (differs(answers[i], other.answers.at(i))) {
      return answers[i].call;
    }
  }
  return "";
}

const std::vector<ExportedFunction>& ControllerSession() {
  static const std::vector<ExportedFunction> calls = [] {
    std::vector<ExportedFunction> all = {{CALL(CorvaneSetFlipperMirror(d, 1, 1))},
                                         {CALL(CorvaneGetFlipperMirror(d, 1, &o.ints[0]))}};
    all.insert(all.end(), EveryDeviceFunction().begin(), EveryDeviceFunction().end());
    return all;
  }();
  return calls;
}

SessionResult RunSession(const std::string& directory, const std::vector<ExportedFunction>& calls,
                         const std::function<std::uint64_t()>& operations) {
  SessionResult result;
  std::string path = directory;
  CorvaneInitialize(path.data());
  int count = 0;
  CorvaneGetNumberDevices(&count);
  result.found = count > 0;
  result.opened = operations();
  for (const ExportedFunction& function : calls) {
    result.answers.push_back(AnswerOf(function));
  }
  result.driven = operations();
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  return result;
}

void Sweep(const SessionResult& baseline, std::uint64_t operations, const Strides& strides,
           const std::function<void(std::uint64_t)>& runWithFaultAt, const std::function<SessionResult()>& run) {
  const std::ptrdiff_t descriptors = Entries(kDescriptors);
  const std::ptrdiff_t threads = Entries(kThreads);
  for (std::uint64_t n = 1; n <= operations; n = NextFault(n, baseline, strides)) {
    SCOPED_TRACE("operation " + std::to_string(n) + " of " + std::to_string(operations));
    runWithFaultAt(n);
    EXPECT_TRUE(SettlesAt(kDescriptors, descriptors));
    EXPECT_TRUE(SettlesAt(kThreads, threads));
    if (testing::Test::HasFailure()) {
      return;
    }
  }
  const SessionResult after = run();
  EXPECT_TRUE(after.SameStatuses(baseline));
  EXPECT_EQ(after.Difference(baseline), "");
}
