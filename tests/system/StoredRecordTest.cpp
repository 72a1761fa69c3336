// What an instrument stores, when replies fail: nothing that nobody gave is held for the instrument's, and every stored
// value is the old one or the one that a call was given. Runs on every attachment.
#include <CorvaneCIF.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <map>
#include <string>

#include "InstrumentFixture.h"
#include "support/EveryFunction.h"

using nlohmann::json;

namespace {

class StoredRecord : public Instrument {
 protected:
  using Bytes = std::map<int, int>;

  // Addresses in a structure of version 3.0.
  static constexpr int kVersion = 21;
  static constexpr int kModifiedDate = 52;
  static constexpr int kFocalLength = 63;
  static constexpr int kWavelength = 289;
  static constexpr int kFirstLabel = 384;
  static constexpr int kActiveTurret = 554;

  /// Once for the byte at this address while the record is read; the version comes first.
  static json FailingByte(int address, json effect) {
    constexpr int kVersionBytes = 10;
    int occurrence = address;
    if (address < kVersion) {
      occurrence += kVersionBytes;
    } else if (address < kVersion + kVersionBytes) {
      occurrence -= kVersion - 1;
    }
    effect.update({{"command", "SAVEINFO?"}, {"occurrence", occurrence}});
    return effect;
  }
  static json Valued(int address, const std::string& value) {
    return {{"reply", "SAVEINFO? " + std::to_string(address) + "\r\n" + value + "\r\nOK\r"}};
  }

  /// The whole memory but for the date, which a close renews.
  Bytes Memory() {
    constexpr int kDateLength = 11;
    Bytes bytes;
    for (int address = 1; address <= 1024; ++address) {
      if (address < kModifiedDate || address >= kModifiedDate + kDateLength) {
        bytes[address] = Lab().Peek(address);
      }
    }
    return bytes;
  }

  /// Those that the two differ in.
  static Bytes Changed(const Bytes& before, const Bytes& after) {
    Bytes changed;
    for (const auto& [address, byte] : after) {
      if (before.at(address) != byte) {
        changed[address] = byte;
      }
    }
    return changed;
  }
};

/// A value of a byte's reply that is none.
class NoByte : public StoredRecord, public testing::WithParamInterface<const char*> {};

TEST_P(NoByte, OfTheRecordStaysUnreadAndIsNotWrittenBack) {
  for (const int address : {kVersion, kVersion + 1, kFocalLength + 3, kActiveTurret}) {
    SCOPED_TRACE(address);
    ASSERT_NO_FATAL_FAILURE(Open({{"record", {{"filters", {"", "", "", "", "", ""}}}},
                                  {"faults", {FailingByte(address, Valued(address, GetParam()))}}}));
    const Bytes before = Memory();
    float focalLength = 0;
    ASSERT_EQ(CorvaneEepromGetOpticalParams(0, &focalLength, nullptr, nullptr), CORVANE_SUCCESS);
    EXPECT_GT(focalLength, 0.01F);
    ASSERT_EQ(CorvaneSetFilterInfo(0, 1, "A"), CORVANE_SUCCESS);
    ASSERT_EQ(CorvaneClose(), CORVANE_SUCCESS);
    EXPECT_EQ(Changed(before, Memory()), (Bytes{{kFirstLabel, 'A'}}));
  }
}

INSTANTIATE_TEST_SUITE_P(Values, NoByte, testing::Values("", "none", "-1", "256"),
                         [](const auto& instance) { return "Value" + std::to_string(instance.index); });

TEST_F(StoredRecord, AReplyThatNamesNoGratingIsAFailureUntilOneDoes) {
  ASSERT_NO_FATAL_FAILURE(Open(json::object()));
  for (const std::string value : {"", "none", "-2147483648"}) {
    Lab().ArmReplyFault({{"command", "GRATING?"}, {"reply", "GRATING?\r\n" + value + "\r\nOK\r"}});
    int grating = 77;
    EXPECT_EQ(CorvaneGetGrating(0, &grating), CORVANE_COMMUNICATION_ERROR) << value;
    EXPECT_EQ(grating, 77) << value;
  }
  ExpectReports({{CALL(CorvaneGetGrating(d, &o.ints[0])), "1"}});
}

TEST_F(StoredRecord, AWavelengthThatWasRefusedInPartIsStoredByTheNextCallOrTheEnd) {
  ASSERT_NO_FATAL_FAILURE(Open({{"record", {{"waveToStepsEnabled", true}}}}));
  const auto stored = [this] {
    std::uint32_t image = 0;
    for (int i = 3; i >= 0; --i) {
      image = image << 8U | Lab().Peek(kWavelength + i);
    }
    return std::bit_cast<float>(image);
  };
  Lab().ArmReplyFault({{"command", "SAVEINFO"}, {"occurrence", 3}, {"error", "E02"}});
  EXPECT_EQ(CorvaneSetWavelength(0, 612.125F), CORVANE_SUCCESS) << "it stands there";
  EXPECT_NE(stored(), 612.125F);
  EXPECT_EQ(CorvaneSetWavelength(0, 612.125F), CORVANE_SUCCESS);
  EXPECT_EQ(stored(), 612.125F);
  Lab().ArmReplyFault({{"command", "SAVEINFO"}, {"occurrence", 2}, {"error", "E02"}});
  EXPECT_EQ(CorvaneSetWavelength(0, 433.3F), CORVANE_SUCCESS);
  EXPECT_NE(stored(), 433.3F);
  EXPECT_EQ(CorvaneClose(), CORVANE_SUCCESS);
  EXPECT_EQ(stored(), 433.3F);
}

/// With three turrets.
class Turrets : public EveryModel {
 protected:
  void OpenTurrets() {
    json turrets = json::array();
    for (int t = 1; t <= 3; ++t) {
      turrets.push_back({{"gratings", {{{"lines", 300 * t}, {"offset", 10 * t}}}}});
    }
    OpenModel({{"turrets", turrets}, {"record", {{"activeTurret", 2}}}});
  }
};

TEST_P(Turrets, ARefusedOneLeavesTheOldOne) {
  ASSERT_NO_FATAL_FAILURE(OpenTurrets());
  Lab().ArmReplyFault({{"command", GetParam().keepsTexts ? "TURRET" : "SAVEINFO"}, {"error", "E03"}});
  EXPECT_EQ(CorvaneSetTurret(0, 3), CORVANE_COMMUNICATION_ERROR);
  ExpectReports({{CALL(CorvaneGetTurret(d, &o.ints[0])), "2"},
                 {CALL(CorvaneGetGratingOffset(d, 1, &o.ints[0])), "20"},
                 {CALL(CorvaneSetTurret(d, 3)), ""},
                 {CALL(CorvaneGetGratingOffset(d, 1, &o.ints[0])), "30"}});
}

INSTANTIATE_FOR_EVERY_MODEL(Turrets);

}  // namespace
