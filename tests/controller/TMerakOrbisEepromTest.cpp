#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controller/TMerakOrbis.h"
#include "eeprom/TTivanMerakEeprom.h"
#include "support/ScriptedInstrument.h"

namespace {

using testing::ElementsAre;

class TMerakOrbisEeprom : public testing::Test {
 protected:
  Instrument mInstrument;
  std::unique_ptr<TMerakOrbis> mOrbis = mInstrument.Connect();
};

TEST_F(TMerakOrbisEeprom, StructureVersionNumbersThatAreMissingStayAsTheyAre) {
  const std::pair<const char*, std::pair<int, int>> versions[] = {
      {"3.0.7", {3, 0}}, {"4", {4, -1}}, {".5", {-1, 5}}, {"", {-1, -1}}, {"99999999999.x", {INT_MAX, 0}}};
  for (const auto& [text, expected] : versions) {
    std::pair numbers(-1, -1);
    TMerakOrbis::GetEepromStructureVersion(text, &numbers.first, &numbers.second);
    EXPECT_EQ(numbers, expected) << text;
  }
}

TEST_F(TMerakOrbisEeprom, ValuesOfFourBytesTravelLeastSignificantFirstUpToAFailingByte) {
  EXPECT_EQ(mOrbis->WriteEepromFloat(104, -546.074F), merak::kSuccess);
  EXPECT_EQ(mInstrument.eeprom.FloatAt(104), -546.074F);
  float real = 0;
  EXPECT_EQ(mOrbis->ReadEepromFloat(104, real), merak::kSuccess);
  EXPECT_EQ(real, -546.074F);
  mInstrument.eeprom.Put(100, 0x01020304);
  mInstrument.errors["SAVEINFO? 102"] = "E02";
  int whole = 0x77777777;
  EXPECT_EQ(mOrbis->ReadEepromInt32(100, whole), merak::kEepromError);
  EXPECT_EQ(whole, 0x77030304) << "the failing byte is as the one before it";
  EXPECT_EQ(mOrbis->ReadEepromFloat(100, real), merak::kEepromError);
  EXPECT_EQ(real, -546.074F);
  mInstrument.errors["SAVEINFO 101,0"] = "E02";
  EXPECT_EQ(mOrbis->WriteEepromInt32(100, 0), merak::kEepromError);
  EXPECT_EQ(mInstrument.eeprom.IntAt(100), 0x01020300);
}

TEST_F(TMerakOrbisEeprom, AByteThatTheReplyDoesNotHoldIsAFailedRead) {
  for (const std::string& reply :
       {ScriptedController::Reply("SAVEINFO? 100", ""), std::string("SAVEINFO? 100OK\r"), std::string("OK\rOK\rOK\r"),
        ScriptedController::Reply("SAVEINFO? 100", "none"), ScriptedController::Reply("SAVEINFO? 100", "-1"),
        ScriptedController::Reply("SAVEINFO? 100", "256")}) {
    mInstrument.replies["SAVEINFO? 100"] = reply;
    unsigned char byte = 0x5A;
    EXPECT_EQ(mOrbis->ReadEepromByte(100, byte), merak::kIoError) << reply;
    EXPECT_EQ(byte, 0x5A) << reply;
  }
}

TEST_F(TMerakOrbisEeprom, ACloseWritesTheRecordAndForgetsIt) {
  ASSERT_EQ(mOrbis->ReadEeprom(), merak::kSuccess);
  mOrbis->SetSerialNumber("CV99");
  EXPECT_EQ(mOrbis->Close(), merak::kSuccess);
  EXPECT_EQ(mInstrument.eeprom.TextAt(31, 5), std::string("CV99\0", 5));
  EXPECT_EQ(mOrbis->GetSerialNumber(), "");
  EXPECT_EQ(mOrbis->WriteEeprom(), merak::kDeviceNotOpen);
  float value = 9.0F;
  EXPECT_EQ(mOrbis->ReadOpticalParamsFromEEPROM(&value, nullptr, nullptr), merak::kDeviceNotOpen);
  EXPECT_EQ(value, 9.0F);
}

TEST_F(TMerakOrbisEeprom, AnotherOpenDropsTheRecordUnwritten) {
  ASSERT_EQ(mOrbis->ReadEeprom(), merak::kSuccess);
  mOrbis->SetSerialNumber("CV99");
  mInstrument.Take();
  mOrbis->Open(0);
  mOrbis->Close();
  EXPECT_THAT(mInstrument.Take(), ElementsAre("Hello", "Hello", "SYSTEMINFO?"));
}

TEST_F(TMerakOrbisEeprom, SilenceEndsATransferAndIsNotWaitedForAgain) {
  constexpr std::size_t kLinesOfOpening = 3;
  constexpr std::size_t kBytesOfRecord = 354;
  // Silent while the record is read, which ends with the first byte, and once it is read.
  for (const std::size_t bytes : {std::size_t{40}, kBytesOfRecord}) {
    mInstrument.answers = kLinesOfOpening + bytes;
    mOrbis->Open(0);
    EXPECT_EQ(mOrbis->ReadEeprom(), merak::kSuccess);
    int value = 0;
    EXPECT_EQ(mOrbis->GetSaveInfo(1, value), merak::kIoError);
    EXPECT_TRUE(mOrbis->IsSilent());
    mOrbis->SetSerialNumber("CV99");
    const std::uint64_t before = mInstrument.Time().Slept();
    EXPECT_EQ(mOrbis->Close(), merak::kSuccess);
    EXPECT_LE(mInstrument.Time().Slept() - before, 1'000'000U);
  }
}

/// The record of an SX on the wire.
class HaldenRecord : public testing::Test {
 protected:
  static constexpr std::size_t kParameters = 78;
  /// Those, the three texts by which turrets count, and the turret.
  static constexpr std::size_t kLinesOfReading = 82;

  HaldenRecord() {
    for (int number = 0; number <= 123; ++number) {
      mInstrument.texts[number] = std::to_string(number);
    }
    mInstrument.texts[5] = "2.1";  // In which an LX keeps no offsets of a second entrance.
    mInstrument.texts[18] = "2";
    for (int i = 0; i < 12; ++i) {
      mInstrument.texts[55 + i] = "-" + std::to_string(550 + i);
    }
    mInstrument.values["SYSTEMINFO"] = "TIVAN,CV-SX,SN-77,x,V2.80";
    mInstrument.values["TURRET"] = "1";
    mOrbis = mInstrument.Connect();
  }
  /// The numbers of the parameters sent since the last time, with "?" where they were asked for; other lines whole.
  Lines Sent() {
    const std::string word = "CONFIG_SYSTEM_DATA";
    Lines sent = mInstrument.Take();
    for (std::string& line : sent) {
      if (line.starts_with(word)) {
        line = (line[word.size()] == '?' ? "?" : "") + std::to_string(std::stoi(line.substr(line.find(' '))));
      }
    }
    return sent;
  }
  Lines LinesOfReading() {
    EXPECT_EQ(mOrbis->ReadEeprom(), merak::kSuccess);
    return Sent();
  }
  Lines LinesOfWriting() {
    EXPECT_EQ(mOrbis->WriteEeprom(), merak::kSuccess);
    return Sent();
  }
  std::string& Text(int number) { return mInstrument.texts[number]; }

  Instrument mInstrument;
  std::unique_ptr<TMerakOrbis> mOrbis;
};

TEST_F(HaldenRecord, ParametersAreReadInOrderAndWrittenBackAsTheyWere) {
  Lines asked = LinesOfReading();
  ASSERT_EQ(asked.size(), kLinesOfReading);
  EXPECT_EQ(Lines(asked.begin(), asked.begin() + 22),
            (Lines{"?1",  "?5",  "?0",  "?2",  "?3",  "?6",  "?7",  "?8",  "?14", "?13", "?12",
                   "?11", "?10", "?16", "?17", "?15", "?55", "?19", "?31", "?43", "?56", "?20"}));
  const auto before = mInstrument.texts;
  asked.resize(kParameters);
  for (std::string& line : asked) {
    line.erase(0, 1);
  }
  EXPECT_EQ(LinesOfWriting(), asked);
  for (const auto& [number, text] : before) {
    EXPECT_EQ(Text(number) != text, number == 3) << number << ": only the day of writing is new";
  }
}

TEST_F(HaldenRecord, NumbersKeepTheirValueOnTheWire) {
  EXPECT_EQ(mOrbis->WriteOpticalParamsToEEPROM(1e-20F, 1.0F / 3.0F, 1000000.0F), merak::kSuccess);
  LinesOfReading();
  EXPECT_EQ(mOrbis->GetFocalLength(), 1e-20F);
  EXPECT_EQ(mOrbis->GetAngularDev(), 1.0F / 3.0F);
  EXPECT_EQ(Text(8), "1e+06");
}

TEST_F(HaldenRecord, OpticalParametersEndAtTheFirstThatFails) {
  mInstrument.errors["CONFIG_SYSTEM_DATA 7,2"] = "E02";
  EXPECT_EQ(mOrbis->WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F), merak::kEepromError);
  EXPECT_EQ(Sent(), (Lines{"6", "7"}));
}

TEST_F(HaldenRecord, ARecordThatWasNeverReadWritesTheDayAlone) {
  EXPECT_EQ(LinesOfWriting(), Lines{"3"});
}

TEST_F(HaldenRecord, WhatWasNotReadWholeIsLeftToTheInstrumentUntilASetterStoresIt) {
  mInstrument.errors["CONFIG_SYSTEM_DATA? 6"] = "E02";
  Text(8) = "none";
  Text(82) = std::string(240, 'x');
  Text(43) = std::string(32, 'b');
  Text(83) = "two\nlines";
  LinesOfReading();
  EXPECT_EQ(mOrbis->GetFocalLength(), 0.75F);
  EXPECT_EQ(mOrbis->GetFilterString(0), std::string(239, 'x'));
  EXPECT_EQ(mOrbis->GetGratingBlaze(0, 0), std::string(31, 'b'));
  EXPECT_EQ(LinesOfWriting().size(), kParameters - 5);
  EXPECT_EQ(Text(8), "none");
  EXPECT_EQ(Text(83), "two\nlines");
  mOrbis->SetPlaneTilt(6.7F);
  mOrbis->SetFilterString(1, "one line");
  EXPECT_EQ(LinesOfWriting().size(), kParameters - 3);
  EXPECT_EQ(Text(8), "6.7");
  EXPECT_EQ(Text(83), "one line");
}

TEST_F(HaldenRecord, SilenceEndsTheReadingAndKeepsTheRestOutOfTheWriting) {
  LinesOfReading();
  mInstrument.answers = 18;
  EXPECT_EQ(LinesOfReading().size(), 19U);
  mInstrument.answers = 100;
  EXPECT_EQ(LinesOfWriting().size(), 18U);
}

TEST_F(HaldenRecord, AnOffsetIsRefusedWhileItsTurretIsUnknown) {
  for (const char* turret : {"", "none"}) {
    mInstrument.values["TURRET"] = turret;
    LinesOfReading();
    EXPECT_EQ(mOrbis->SetActiveTurretGratingOffset(1, 9), TTivanMerakEeprom::kOutOfRange);
  }
  EXPECT_EQ(mOrbis->SetActiveTurret(2), merak::kSuccess);
  EXPECT_EQ(mOrbis->SetActiveTurretGratingOffset(1, 9), merak::kSuccess);
  EXPECT_EQ(Text(64), "9");
}

TEST_F(HaldenRecord, AChangedOffsetSendsAllOfThemWhateverFailsButSilence) {
  LinesOfReading();
  mOrbis->SetActiveTurretGratingOffset(1, -551);
  EXPECT_EQ(Sent(), Lines()) << "the offset did not change";
  mInstrument.errors["CONFIG_SYSTEM_DATA 60,-555"] = "E02";
  EXPECT_EQ(mOrbis->SetGratingOffset(0, 0, 1), merak::kEepromError);
  EXPECT_EQ(Sent().size(), 12U + 4U + 2U) << "all offsets, and the position asked for and approached";
  mInstrument.answers = 2;
  EXPECT_EQ(mOrbis->SetGratingOffset(0, 0, 2), merak::kIoError);
  EXPECT_EQ(Sent().size(), 3U);
}

TEST_F(HaldenRecord, TheActiveTurretIsTheControllersOrTheOneHeld) {
  struct Turret {
    const char* controllers;
    const char* held;
    int active;
    int start;
    int offset;
  };
  const Turret turrets[] = {
      {"3", "", 2, 28, -559}, {"99", "0", 99, 0, 0},  {"0", "2", -1, 28, -559},           {"0", "-1", -1, 0, 0},
      {"2", "", 1, 24, -555}, {"x", "", 1, 24, -555}, {"-2147483647", "0", INT_MIN, 0, 0}};
  for (const Turret& turret : turrets) {
    mInstrument.values["TURRET"] = turret.controllers;
    Text(18) = turret.held;
    LinesOfReading();
    EXPECT_EQ(mOrbis->GetActiveTurret(), turret.active) << turret.controllers;
    EXPECT_EQ(mOrbis->GetActiveTurretGratingStart(1), turret.start) << turret.controllers;
    EXPECT_EQ(mOrbis->GetActiveTurretGratingOffset(1), turret.offset) << turret.controllers;
  }
  EXPECT_EQ(mOrbis->SetActiveTurret(3), TTivanMerakEeprom::kOutOfRange);
  EXPECT_EQ(Sent(), Lines());
}

TEST_F(HaldenRecord, TurretsAreCountedUpToTheFirstWithoutAText) {
  Text(122) = "";
  LinesOfReading();
  EXPECT_EQ(mOrbis->GetNoOfTurrets(), 0);
}

TEST_F(HaldenRecord, ATextThatEndsAsAReplyDoesIsCutAndLeftToTheInstrument) {
  Text(83) = "BOOK";
  LinesOfReading();
  EXPECT_EQ(mOrbis->GetFilterString(1), "BO");
  EXPECT_EQ(mOrbis->GetFilterString(2), "84") << "the next one is read all the same";
  LinesOfWriting();
  EXPECT_EQ(Text(83), "BOOK");
}

TEST_F(HaldenRecord, ATextOfTwoLinesIsRefused) {
  EXPECT_EQ(mOrbis->SetFilterString(2, "two\nlines"), merak::kInvalidParameter);
}

TEST_F(HaldenRecord, GratingsOfTheActiveTurretAreTheControllers) {
  EXPECT_EQ(mOrbis->LoadActiveTurretGratings(), merak::kIllegalCommand) << "no list";
  mInstrument.values["GRATINGS"] = "1,1200.5,500\r\n2,600," + std::string(50, 'b') + "\r\n3,300";
  EXPECT_EQ(mOrbis->LoadActiveTurretGratings(), merak::kSuccess);
  EXPECT_EQ(mOrbis->GetActiveTurretGratingLines(0), 1200.5F);
  EXPECT_EQ(mOrbis->GetActiveTurretGratingLines(2), 300.0F);
  EXPECT_EQ(mOrbis->GetActiveTurretGratingBlaze(1), std::string(31, 'b'));
  for (const int bad : {-1, 4, INT_MAX}) {
    EXPECT_EQ(mOrbis->GetActiveTurretGratingLines(bad), 0.0F);
    EXPECT_EQ(mOrbis->GetActiveTurretGratingBlaze(bad), "");
  }
}

TEST_F(HaldenRecord, AnEndWritesTheRecordThenBidsFarewellThenClosesTheLine) {
  LinesOfReading();
  mOrbis->SetFilterString(0, "OG 570");
  mOrbis.reset();
  const Lines sent = Sent();
  ASSERT_EQ(sent.size(), kParameters + 1);
  EXPECT_EQ(sent.back(), "GOODBYE");
  EXPECT_EQ(Text(82), "OG 570");
  EXPECT_FALSE(mInstrument.IsConnected());
}

}  // namespace
