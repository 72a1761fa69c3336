// What an instrument costs that no longer answers, on the library's own clock: calls, opening, closing and the search,
// over a USB bridge and behind a camera. The figures are those of the manual's table of bad controllers.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "controller/MotionController.h"
#include "scenario/Scenario.h"
#include "support/EveryFunction.h"
#include "support/FakeTime.h"
#include "support/LegacyLaboratory.h"
#include "support/ScriptedBridge.h"
#include "support/TemporaryDirectory.h"

using nlohmann::json;

namespace {

using Microseconds = std::uint64_t;
constexpr Microseconds kSecond = 1'000'000;
constexpr Microseconds kReadLimit = 200 * kSecond;

/// The travel of the focus mirror is read without a guard: what that throws reaches the caller.
unsigned int Perform(const ExportedCall& call) {
  Outputs out;
  try {
    return call.run(0, out);
  } catch (...) {
    return CORVANE_COMMUNICATION_ERROR;
  }
}

json Instrument(const char* model, bool steps) {
  return {{"model", model}, {"motion", 0}, {"serial", "A-7"}, {"record", {{"waveToStepsEnabled", steps}}}};
}

template <typename Call>
Microseconds TimeOf(FakeTime& time, Call call) {
  const Microseconds before = time.MonotonicMicroseconds();
  call();
  return time.MonotonicMicroseconds() - before;
}

void ExpectSeconds(Microseconds time, int seconds) {
  EXPECT_NEAR(static_cast<double>(time) / 1e6, seconds, 0.1);
}

struct Case {
  const char* name;
  const char* model;
  bool steps;
};

void PrintTo(const Case& instrument, std::ostream* out) {
  *out << instrument.name;
}

constexpr Case kCases[] = {{"LX", "LX", false}, {"LXBySteps", "LX", true}, {"SX", "SX", false}};

// ---- Over a USB bridge ----

class SilenceOnUsb : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    mFolder.Write("corvane-sim.json", mText);  // for the camera SDK, which finds no instrument of its own in it
    mDevice.responder = [this](const std::string& line) { return Answer(line); };
  }
  void TearDown() override { CorvaneClose(); }

  Microseconds Open() {
    std::string directory = mFolder.Path().string();
    return TimeOf(mTime, [&] { EXPECT_EQ(CorvaneInitialize(directory.data()), CORVANE_SUCCESS); });
  }
  Microseconds Close() {
    return TimeOf(mTime, [] { EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS); });
  }
  void SilenceFrom(std::size_t line) { mSilentFrom = line; }
  void FallSilent() { SilenceFrom(mLines + 1); }
  void SpeakAgain() { SilenceFrom(kNever); }

  /// What every line is answered with instead, one character in so many milliseconds; the rest of it is forgotten.
  void TalkWithoutEnd(const std::string& text, unsigned int everyMs) {
    mDevice.responder = [this, text, everyMs](const std::string&) {
      mDevice.pending.clear();
      mDevice.Queue(text, 0, everyMs);
      return std::string();
    };
  }

  std::string Answer(const std::string& line) {
    if (++mLines >= mSilentFrom) {
      return {};
    }
    const std::string sent = line + "\r";
    mController.FromHost({reinterpret_cast<const std::uint8_t*>(sent.data()), sent.size()});
    std::string reply(4096, '\0');
    reply.resize(mController.ToHost({reinterpret_cast<std::uint8_t*>(reply.data()), reply.size()}));
    return reply;
  }

  static constexpr std::size_t kNever = SIZE_MAX;
  FakeTime mTime;
  TemporaryDirectory mFolder;
  const std::string mText = json{{"usb", {{{"instrument", Instrument(GetParam().model, GetParam().steps)}}}}}.dump();
  corvane::sim::Scenario mScenario = corvane::sim::ParseScenario(mText, "test", mFolder.Path());
  corvane::sim::MotionController mController{mScenario.usb.at(0).instrument};
  ScriptedBridge mBridge;
  ScriptedBridge::Device& mDevice = mBridge.Add();
  std::size_t mLines = 0;
  std::size_t mSilentFrom = kNever;
};

INSTANTIATE_TEST_SUITE_P(Models, SilenceOnUsb, testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(SilenceOnUsb, CostsACallOneReadLimitWhereverItBegins) {
  Open();
  for (const ExportedFunction& function : EveryDeviceFunction()) {
    // With what is remembered of the call before, and without.
    for (const Microseconds secondsBefore : {0, 10}) {
      Perform(function.call);
      mTime.Advance(secondsBefore * kSecond);
      const std::size_t before = mLines;
      const Microseconds sound = TimeOf(mTime, [&] { Perform(function.call); });
      const std::size_t lines = mLines - before;
      for (std::size_t line = 1; line <= lines; ++line) {
        mTime.Advance(secondsBefore * kSecond);
        SilenceFrom(mLines + line);
        const Microseconds cost = TimeOf(mTime, [&] { Perform(function.call); });
        SpeakAgain();
        EXPECT_LE(cost, kReadLimit + (line == 1 ? 0 : sound)) << function.call.text << " from line " << line;
        EXPECT_GE(cost, kReadLimit) << function.call.text << " from line " << line;
      }
    }
  }
}

TEST_P(SilenceOnUsb, CostsAnOpeningNoMoreThanOneReadLimit) {
  const Microseconds sound = Open();
  const std::size_t lines = mLines;
  Close();
  Microseconds longest = 0;
  for (std::size_t line = 1; line <= lines; line += line < 20 || line + 10 > lines ? 1 : 19) {
    mLines = 0;
    SilenceFrom(line);
    const Microseconds cost = Open();
    EXPECT_LE(cost, kReadLimit + sound) << "from line " << line;
    longest = std::max(longest, cost);
    EXPECT_LE(Close(), kSecond) << "from line " << line;
  }
  EXPECT_GE(longest, kReadLimit);
}

TEST_P(SilenceOnUsb, WhileTheRecordIsReadLeavesTheSerialNumberAndTakesWhatIsSet) {
  SilenceFrom(30);
  Open();
  SpeakAgain();
  ExpectReports(
      {{CALL(CorvaneGetSerialNumber(d, o.text.data())), "A-7"}, {CALL(CorvaneSetFilterInfo(d, 2, "LP 495")), ""}});
  Close();
  Open();
  ExpectReports({{CALL(CorvaneGetFilterInfo(d, 2, o.text.data())), "LP 495"},
                 {CALL(CorvaneGetFilterInfo(d, 3, o.text.data())), "Filter 3"},
                 {CALL(CorvaneGetNumberGratings(d, &o.ints[0])), "3"}});
}

TEST_P(SilenceOnUsb, CostsACloseOneReadLimitOrASecondOnceItIsKnown) {
  for (const bool known : {false, true}) {
    SpeakAgain();
    Open();
    EXPECT_EQ(CorvaneSetFilterInfo(0, 1, known ? "known" : "unknown"), CORVANE_SUCCESS);
    FallSilent();
    if (known) {
      EXPECT_EQ(CorvaneSetGrating(0, 1), CORVANE_COMMUNICATION_ERROR);
    }
    EXPECT_EQ(Close(), known ? kSecond : kReadLimit);
  }
}

TEST_P(SilenceOnUsb, CostsTwoSecondsForEveryLookOfTheSearch) {
  FallSilent();
  EXPECT_EQ(Open(), 2 * kSecond);
  EXPECT_EQ(TimeOf(mTime, [] { EXPECT_EQ(CorvaneSetGrating(0, 1), CORVANE_COMMUNICATION_ERROR); }), 0U) << "closed";
  mBridge.Add();
  EXPECT_EQ(Open(), 2 * 2 * 2 * kSecond) << "for each device each bridge";
}

TEST_P(SilenceOnUsb, TalkWithoutEndCostsALookTenSecondsAndACallUpToFourMinutes) {
  const std::string noLine(100'000, 'x');
  std::string lines;
  while (lines.size() < noLine.size()) {
    lines += "xx\r";
  }
  const struct {
    std::string text;
    unsigned int everyMs;
    int seconds;
  } talks[] = {{noLine, 10, 240}, {lines, 10, 120}, {noLine, 0, 0}};
  for (const auto& [text, everyMs, seconds] : talks) {
    Open();
    TalkWithoutEnd(text, everyMs);
    ExpectSeconds(TimeOf(mTime, [] { EXPECT_EQ(CorvaneSetGrating(0, 1), CORVANE_COMMUNICATION_ERROR); }), seconds);
    Close();
    ExpectSeconds(Open(), everyMs == 0 ? 0 : 10);
    Close();
    SetUp();
  }
}

TEST_P(SilenceOnUsb, AControllerThatIsGoneCostsNothing) {
  Open();
  mDevice.readStatus = FT_IO_ERROR;
  for (const ExportedFunction& function : EveryDeviceFunction()) {
    EXPECT_EQ(TimeOf(mTime, [&] { Perform(function.call); }), 0U) << function.call.text;
  }
  EXPECT_EQ(Close(), 0U);
}

// ---- Behind a camera ----

class SilenceOnI2c : public testing::TestWithParam<Case> {
 protected:
  void TearDown() override { CorvaneClose(); }
  void Open() {
    std::string directory = mLab.Directory();
    ASSERT_EQ(CorvaneInitialize(directory.data()), CORVANE_SUCCESS);
  }
  void Arm(json fault) {
    fault.update({{"command", "*"}, {"repeat", true}});
    ASSERT_EQ(mLab.Bus().ArmReplyFault(0, fault.dump().c_str()), 0);
  }

  FakeTime mTime;
  ScriptedBridge mBridge;  // An empty list.
  LegacyLaboratory mLab{{{"i2c", Instrument(GetParam().model, GetParam().steps)}}};
};

INSTANTIATE_TEST_SUITE_P(Models, SilenceOnI2c, testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(SilenceOnI2c, IsToldByTheBusAtOnceAndCostsAsLittleAsADeadBus) {
  for (const bool dead : {false, true}) {
    ASSERT_NO_FATAL_FAILURE(Open());
    ASSERT_EQ(CorvaneSetFilterInfo(0, 1, "unsaved"), CORVANE_SUCCESS);
    if (dead) {
      mLab.Bus().ArmFault(1, 1, 20067);
    } else {
      ASSERT_NO_FATAL_FAILURE(Arm({{"silence", true}}));
    }
    EXPECT_EQ(CorvaneSetGrating(0, 1), CORVANE_COMMUNICATION_ERROR);
    for (const ExportedFunction& function : EveryDeviceFunction()) {
      EXPECT_EQ(TimeOf(mTime, [&] { Perform(function.call); }), 0U) << function.call.text;
    }
    EXPECT_EQ(TimeOf(mTime, [] { CorvaneClose(); }), 0U);
    mLab.Bus().ArmFault(0, 0, 0);
  }
}

TEST_P(SilenceOnI2c, TalkWithoutEndIsReadUpTo64KiB) {
  ASSERT_NO_FATAL_FAILURE(Open());
  ASSERT_NO_FATAL_FAILURE(Arm({{"reply", std::string(70'000, 'x')}}));
  const unsigned long long before = mLab.Bus().Operations();
  EXPECT_EQ(CorvaneSetGrating(0, 1), CORVANE_COMMUNICATION_ERROR);
  EXPECT_NEAR(static_cast<double>(mLab.Bus().Operations() - before), 65536.0, 100.0);
}

}  // namespace
