#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

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
      {"3.0.7", {3, 0}}, {"4", {4, -1}}, {".5", {-1, 5}}, {"", {-1, -1}}, {"99999999999.x", {2147483647, 0}}};
  for (const auto& [text, expected] : versions) {
    std::pair numbers(-1, -1);
    TMerakOrbis::GetEepromStructureVersion(text, &numbers.first, &numbers.second);
    EXPECT_EQ(numbers, expected) << text;
  }
}

TEST_F(TMerakOrbisEeprom, ACloseWritesTheRecordAndForgetsIt) {
  ASSERT_EQ(mOrbis->ReadEeprom(), 0U);
  EXPECT_EQ(mOrbis->SetSerialNumber("CV99"), 0U);
  EXPECT_EQ(mOrbis->Close(), 0U);
  EXPECT_EQ(mInstrument.eeprom.TextAt(31, 5), std::string("CV99\0", 5));
  EXPECT_EQ(mOrbis->GetIDString(), "");
  EXPECT_EQ(mOrbis->GetFocalLength(), 0.0F);
  float value = 9;
  const MerakResult results[] = {mOrbis->SetFocalLength(1.0F), mOrbis->SetActiveTurret(0), mOrbis->ReadEeprom(),
                                 mOrbis->WriteEeprom(), mOrbis->ReadOpticalParamsFromEEPROM(&value, nullptr, nullptr)};
  EXPECT_THAT(results, testing::Each(3U));
  EXPECT_EQ(value, 9.0F);
}

TEST_F(TMerakOrbisEeprom, AnotherOpenDropsTheRecordUnwritten) {
  ASSERT_EQ(mOrbis->ReadEeprom(), 0U);
  mOrbis->SetSerialNumber("CV99");
  mInstrument.Take();
  mOrbis->Open(0);
  mOrbis->Close();
  EXPECT_THAT(mInstrument.Take(), ElementsAre("Hello", "Hello", "SYSTEMINFO?"));
}

TEST_F(TMerakOrbisEeprom, SilenceEndsATransferAndIsNotWaitedForAgain) {
  // Silent while the record is read, which ends with the first byte, and before it is written.
  for (const std::size_t answers : {40U, 354U}) {
    mOrbis->Open(0);
    mInstrument.answers = answers;
    EXPECT_EQ(mOrbis->ReadEeprom(), 0U);
    int value = 0;
    EXPECT_EQ(mOrbis->GetSaveInfo(1, value), 4U);
    EXPECT_TRUE(mOrbis->IsSilent());
    mOrbis->SetSerialNumber("CV99");
    const std::uint64_t before = mInstrument.Time().Slept();
    EXPECT_EQ(mOrbis->Close(), 0U);
    EXPECT_LE(mInstrument.Time().Slept() - before, 1'000'000U);
    mInstrument.answers = 1000;
  }
}

/// The record of an SX on the wire.
class HaldenRecord : public testing::Test {
 protected:
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
  Lines Read() { return mOrbis->ReadEeprom(), Sent(); }
  Lines Write() { return mOrbis->WriteEeprom(), Sent(); }

  Instrument mInstrument;
  std::unique_ptr<TMerakOrbis> mOrbis;
};

TEST_F(HaldenRecord, ParametersAreReadInOrderAndWrittenBackAsTheyWere) {
  Lines asked = Read();
  ASSERT_EQ(asked.size(), 82U);
  EXPECT_EQ(Lines(asked.begin(), asked.begin() + 22),
            (Lines{"?1",  "?5",  "?0",  "?2",  "?3",  "?6",  "?7",  "?8",  "?14", "?13", "?12",
                   "?11", "?10", "?16", "?17", "?15", "?55", "?19", "?31", "?43", "?56", "?20"}));
  mOrbis->SetWaveToStepsEnable(1);
  EXPECT_EQ(mOrbis->GetWaveToStepsEnable(), 0);
  const auto before = mInstrument.texts;
  asked.resize(78);
  for (std::string& line : asked) {
    line.erase(0, 1);
  }
  EXPECT_EQ(Write(), asked);
  for (const auto& [number, text] : before) {
    EXPECT_EQ(mInstrument.texts[number] != text, number == 3) << number << ": only the day of writing is new";
  }
}

TEST_F(HaldenRecord, NumbersKeepTheirValueAndStopAtTheFirstThatFails) {
  EXPECT_EQ(mOrbis->WriteOpticalParamsToEEPROM(1e-20F, 1.0F / 3.0F, 1000000.0F), 0U);
  Read();
  EXPECT_EQ(mOrbis->GetFocalLength(), 1e-20F);
  EXPECT_EQ(mOrbis->GetAngularDev(), 1.0F / 3.0F);
  EXPECT_EQ(mInstrument.texts[8], "1e+06");
  mInstrument.errors["CONFIG_SYSTEM_DATA 7,2"] = "E02";
  EXPECT_EQ(mOrbis->WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F), 8U);
  EXPECT_EQ(Sent(), (Lines{"6", "7"}));
}

TEST_F(HaldenRecord, WhatWasNotReadWholeIsLeftToTheInstrumentUntilASetterStoresIt) {
  EXPECT_EQ(Write(), Lines{"3"}) << "never read";
  auto& t = mInstrument.texts;
  mInstrument.errors["CONFIG_SYSTEM_DATA? 6"] = "E02";
  t[8] = "none";
  t[82] = std::string(240, 'x');
  t[43] = std::string(32, 'b');
  t[83] = "two\nlines";
  Read();
  EXPECT_EQ(mOrbis->GetFocalLength(), 0.75F);
  EXPECT_EQ(mOrbis->GetFilterString(0) + mOrbis->GetGratingBlaze(0, 0), std::string(239, 'x') + std::string(31, 'b'));
  EXPECT_EQ(Write().size(), 78U - 5U);
  EXPECT_EQ(t[8] + t[83], "nonetwo\nlines");
  mOrbis->SetPlaneTilt(6.7F);
  mOrbis->SetFilterString(1, "one line");
  EXPECT_EQ(Write().size(), 78U - 3U);
  EXPECT_EQ(t[8] + t[83], "6.7one line");
  mInstrument.answers = 18;
  EXPECT_EQ(Read().size(), 19U) << "silence ends it";
  mInstrument.answers = 100;
  EXPECT_EQ(Write().size(), 18U - 1U) << "what arrived, but for the failing one";
}

TEST_F(HaldenRecord, GratingOffsetsReachTheInstrumentAtOnceAndDetectorOffsetsWithThem) {
  Read();
  mOrbis->SetDetectorOffset(1, 1, 5);
  mOrbis->SetActiveTurretGratingOffset(1, -551);
  EXPECT_TRUE(Sent().empty()) << "the offset did not change";
  EXPECT_EQ(mOrbis->SetActiveTurretGratingOffset(3, 9), 0U);
  EXPECT_EQ(mInstrument.texts[58] + " " + mInstrument.texts[70], "9 5");
  EXPECT_EQ(Sent().back(), "MOVETO 546.1000");
  mInstrument.errors["CONFIG_SYSTEM_DATA 60,-555"] = "E02";
  EXPECT_EQ(mOrbis->SetGratingOffset(0, 0, 1), 8U);
  EXPECT_EQ(Sent().size(), 18U) << "the others and the position all the same";
  mInstrument.answers = 2;
  EXPECT_EQ(mOrbis->SetGratingOffset(0, 0, 2), 4U);
  EXPECT_EQ(Sent().size(), 3U) << "nothing to one that is silent";
}

TEST_F(HaldenRecord, TurretsAreCountedByTheirTextsAndTheOddOnesAnswerZero) {
  using Answers = std::vector<int>;
  const std::pair<std::pair<const char*, const char*>, Answers> cases[] = {
      {{"3", ""}, {2, 28, -559}},
      {{"99", "0"}, {99, 0, 0}},
      {{"0", "2"}, {-1, 28, -559}},
      {{"0", "-1"}, {-1, 0, 0}},
      {{"2", ""}, {1, 24, -555}},
      {{"x", ""}, {1, 24, -555}},
      {{"-2147483647", "0"}, {-2147483647 - 1, 0, 0}}};
  for (const auto& [texts, expected] : cases) {
    mInstrument.values["TURRET"] = texts.first;
    mInstrument.texts[18] = texts.second;
    Read();
    EXPECT_EQ((Answers{mOrbis->GetActiveTurret(), mOrbis->GetActiveTurretGratingStart(1),
                       mOrbis->GetActiveTurretGratingOffset(1)}),
              expected)
        << texts.first << " " << texts.second;
  }
  EXPECT_EQ(mOrbis->SetActiveTurret(3), TTivanMerakEeprom::kOutOfRange);
  EXPECT_TRUE(Sent().empty());
  mInstrument.texts[122] = "";
  Read();
  EXPECT_EQ(mOrbis->GetNoOfTurrets(), 0) << "whatever follows";
}

TEST_F(HaldenRecord, GratingsAreTheControllersAndTheFarewellComesLast) {
  // A text that ends as a reply does ends its own; the next one is read all the same.
  mInstrument.texts[83] = "BOOK";
  Read();
  EXPECT_EQ(mOrbis->GetFilterString(1) + "|" + mOrbis->GetFilterString(2), "BO|84");
  EXPECT_EQ(mOrbis->LoadActiveTurretGratings(), 12U) << "no list";
  mInstrument.values["GRATINGS"] = "1,1200.5,500\r\n2,600," + std::string(50, 'b') + "\r\n3,300";
  EXPECT_EQ(mOrbis->LoadActiveTurretGratings(), 0U);
  EXPECT_EQ(mOrbis->GetActiveTurretGratingLines(0) + mOrbis->GetActiveTurretGratingLines(2), 1500.5F);
  EXPECT_EQ(mOrbis->GetActiveTurretGratingBlaze(1), std::string(31, 'b'));
  for (const int bad : {-1, 4, 2147483647}) {
    EXPECT_EQ(mOrbis->GetActiveTurretGratingLines(bad), 0.0F);
    EXPECT_EQ(mOrbis->GetActiveTurretGratingBlaze(bad), "");
  }
  mOrbis->SetFilterString(0, "OG 570");
  EXPECT_EQ(mOrbis->SetFilterString(2, "two\nlines"), 6U) << "it could not travel";
  mOrbis->Close();
  EXPECT_EQ(mInstrument.texts[82] + mInstrument.texts[83] + mInstrument.texts[84] + Sent().back(),
            "OG 570BOOK84GOODBYE");
}

}  // namespace
