#include "Sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <thread>

namespace {

using nlohmann::json;

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

/// What replies are replaced by.
const struct {
  const char* name;
  const char* effect;
  bool commands = true;
  bool isLie = false;
  bool fromThenOn = false;
} kReplies[] = {
    {"refused", R"({"error": "E04"})"},
    {"refused from then on", R"({"error": "E02"})", true, false, true},
    {"done but refused", R"({"reply": "E04\r"})"},
    {"echo without value", R"({"echo": true})", false},
    {"empty value", R"({"value": ""})", false},
    {"value without number", R"({"value": "none"})", false},
    {"number out of range", R"({"value": "99999999"})", false, true},
    {"least number", R"({"value": "-2147483648"})", false, true},
    {"cut", R"({"cut": 3})"},
    {"previous", R"({"previous": true})", true, true},
    {"done but silent", R"({"reply": ""})"},
    {"silent", R"({"silence": true})"},
    {"silent from then on", R"({"silence": true})", true, false, true},
    {"split", R"({"split": {"at": 3, "gap": 1}})"},
};

/// Findings that are known and left, by a part of the fault's name (the instrument's in front) and one of the finding:
/// the position starts as -1 and a reply without a number leaves it so; the bytes of an older instrument's value are
/// written one by one, and nothing stores the rest when one of them fails.
constexpr struct {
  const char* what;
  const char* fault;
  const char* finding;
} kKnownFindings[] = {
    {"a position without a number is reported as -1", "value", " reports "},
    {"an older instrument's value stays torn when a byte of it could not be written", "Legacy", "stored value"},
};

bool IsKnown(const std::string& fault, const std::string& finding) {
  return std::ranges::any_of(kKnownFindings, [&](const auto& known) {
    return fault.find(known.fault) != std::string::npos && finding.find(known.finding) != std::string::npos;
  });
}

/// Whether a query asks for a text: of the identity, and what an SX keeps that is no number.
bool IsText(const std::string& query) {
  constexpr std::pair<int, int> kTexts[] = {{0, 5}, {43, 54}, {82, 87}, {122, 124}};
  const bool isParameter = query.starts_with("CONFIG_SYSTEM_DATA? ");
  const int number = isParameter ? std::atoi(query.c_str() + query.find(' ')) : -1;
  return query.starts_with("SYSTEMINFO?") || query.starts_with("GRATINGS?") || query.starts_with("PERIPHERAL?") ||
         std::ranges::any_of(kTexts,
                             [&](const auto& range) { return range.first <= number && number <= range.second; });
}

std::vector<Fault> AllFaults(const SweepPlan& plan, const SessionResult& sound, const std::vector<std::string>& lines) {
  std::vector<Fault> faults;
  for (std::uint64_t n = 1; plan.disturbsTransfers && n <= sound.transfers.closed; ++n) {
    if (plan.cutsLink) {
      faults.push_back({"link is cut", {}, n, false, false, true});
    } else {
      faults.push_back({"transfer fails", {}, n, false});
      faults.push_back({"transfers fail", {}, n, true});
    }
  }
  for (std::uint64_t n = 1; plan.disturbsReplies && n <= lines.size(); ++n) {
    const std::string& line = lines[n - 1];
    const bool isQuery = line.find('?') != std::string::npos;
    for (const auto& [name, effect, commands, isLie, fromThenOn] : kReplies) {
      if (isQuery || commands) {
        json reply = json::parse(effect);
        reply["occurrence"] = n;
        reply["repeat"] = fromThenOn;
        const bool isValue = reply.contains("value");
        // No byte of a record is such a number; any text is a text.
        const bool says = isValue && (IsText(line) || (isLie && !line.starts_with("SAVEINFO?")));
        faults.push_back({std::string(name) + " \"" + line + "\"", reply, n, fromThenOn, says || (isLie && !isValue)});
      }
    }
  }
  return faults;
}

/// How many faults are wanted: all of them, a number, or an ordinary sample.
std::size_t Wanted(std::size_t all, std::size_t sample) {
  const char* const wanted = std::getenv("CORVANE_SWEEP");
  if (wanted == nullptr) {
    return std::min(sample, all);
  }
  return std::string(wanted) == "all" ? all : std::min(all, static_cast<std::size_t>(std::atoi(wanted)));
}

/// Opening and closing repeat themselves some hundred times for the record: half of a sample falls between them.
std::vector<Fault> Sample(const std::vector<Fault>& all, const SessionResult& sound, std::ptrdiff_t count) {
  std::vector<Fault> driving;
  std::vector<Fault> record;
  for (const Fault& fault : all) {
    const auto& marks = fault.reply.is_null() ? sound.transfers : sound.lines;
    (fault.number > marks.opened && fault.number <= marks.driven ? driving : record).push_back(fault);
  }
  std::mt19937 random(20240229);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same faults in every run
  std::vector<Fault> sample;
  std::ranges::sample(driving, std::back_inserter(sample), count * 2 / 3, random);
  std::ranges::sample(record, std::back_inserter(sample), count / 3, random);
  return sample;
}

/// After the fault: opens, drives and closes without one; the instrument kept its power.
std::string Recovery(SweptInstrument& instrument) {
  Outputs out;
  std::string problem;
  problem += CorvaneInitialize(instrument.Directory().data()) == CORVANE_SUCCESS ? "" : "does not open again; ";
  problem += CorvaneSetWavelength(0, 510.0F) == CORVANE_SUCCESS ? "" : "does not move again; ";
  CorvaneClose();
  return problem;
}

}  // namespace

void Sweep(SweptInstrument& instrument, const SweepPlan& plan) {
  const Calls& calls = plan.kind == Oracle::Kind::kLegacy ? LegacySession() : ControllerSession();
  Oracle oracle(instrument, calls, plan.kind, plan.failures);
  if (testing::Test::HasFailure()) {
    return;
  }
  const SessionResult& sound = oracle.Sound();
  std::vector<Fault> faults = AllFaults(plan, sound, instrument.Lines());
  const std::size_t all = faults.size();
  if (const std::size_t wanted = Wanted(all, plan.sample); wanted < all) {
    faults = Sample(faults, sound, static_cast<std::ptrdiff_t>(wanted));
  }
  const std::ptrdiff_t descriptors = Entries(kDescriptors);
  const std::ptrdiff_t threads = Entries(kThreads);
  int successes = 0;
  int findings = 0;
  int known = 0;
  for (const Fault& fault : faults) {
    instrument.Renew();
    instrument.Arm(fault);
    const auto& marks = fault.reply.is_null() ? sound.transfers : sound.lines;
    const SessionResult session =
        RunSession(instrument, calls, {}, {.liftsBeforeClosing = fault.number <= marks.driven});
    instrument.Lift();
    successes += oracle.Successes(session);
    std::string finding = fault.isLie ? "" : Recovery(instrument);
    finding += oracle.Finding(session, fault);
    finding += SettlesAt(kDescriptors, descriptors) ? "" : "a descriptor is left open";
    finding += SettlesAt(kThreads, threads) ? "" : "a thread is left";
    if (finding.empty()) {
      continue;
    }
    const std::string where = plan.name + ", " + fault.name + " (" + std::to_string(fault.number) + ")";
    const bool isKnown = IsKnown(where, finding);
    ++(isKnown ? known : findings);
    if (isKnown) {
      std::cout << "[ known    ] " << where << ": " << finding << '\n';
    } else {
      ADD_FAILURE() << where << ": " << finding;
    }
  }
  std::cout << "[ sweep    ] " << plan.name << ": " << faults.size() << " of " << all << " faults injected, "
            << successes << " calls that they hit answered success, " << findings << " findings, " << known
            << " known ones\n";
}
