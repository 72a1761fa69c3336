#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "components/Instrument.h"
#include "controller/TMerakOrbis.h"

namespace {

using testing::ElementsAre;

class TMerakOrbisEeprom : public testing::Test {
 protected:
  Instrument mInstrument;
  std::unique_ptr<TMerakOrbis> mOrbis = mInstrument.Connect();
};

TEST_F(TMerakOrbisEeprom, MovesFourBytesLeastSignificantFirst) {
  EXPECT_EQ(mOrbis->WriteEepromInt32(100, -2), 0U);
  EXPECT_THAT(mInstrument.Take(),
              ElementsAre("SAVEINFO 100,254", "SAVEINFO 101,255", "SAVEINFO 102,255", "SAVEINFO 103,255"));
  int number = 0;
  EXPECT_EQ(mOrbis->ReadEepromInt32(100, number), 0U);
  EXPECT_EQ(number, -2);
  float value = 0;
  EXPECT_EQ(mOrbis->WriteEepromFloat(200, 1.0F) + mOrbis->ReadEepromFloat(200, value), 0U);
  EXPECT_EQ(mInstrument.eeprom.IntAt(200), 0x3F800000);
  EXPECT_EQ(value, 1.0F);
}

TEST_F(TMerakOrbisEeprom, StopsAtTheFirstFailingByte) {
  mInstrument.eeprom.Put(100, 0x04030201);
  mInstrument.errors = {{"SAVEINFO? 102", "E02"}, {"SAVEINFO 102,0", "E02"}};
  int number = 0x11111111;
  EXPECT_EQ(mOrbis->ReadEepromInt32(100, number), 8U);
  // The failing byte is what the one before was; the last was not asked for.
  EXPECT_EQ(number, 0x11020201);
  float value = 5.0F;
  EXPECT_EQ(mOrbis->ReadEepromFloat(100, value), 8U);
  EXPECT_EQ(value, 5.0F);
  mInstrument.Take();
  EXPECT_EQ(mOrbis->WriteEepromInt32(100, 0), 8U);
  EXPECT_THAT(mInstrument.Take(), ElementsAre("SAVEINFO 100,0", "SAVEINFO 101,0", "SAVEINFO 102,0"));
}

TEST_F(TMerakOrbisEeprom, SplitsStructureVersions) {
  const struct {
    const char* text;
    int majorNumber, minorNumber;
  } versions[] = {{"2.5", 2, 5}, {"3.0.7", 3, 0}, {"4", 4, -1},
                  {".5", -1, 5}, {"", -1, -1},    {"99999999999.x", 2147483647, 0}};
  for (const auto& version : versions) {
    int majorNumber = -1;
    int minorNumber = -1;
    TMerakOrbis::GetEepromStructureVersion(version.text, &majorNumber, &minorNumber);
    EXPECT_EQ(std::pair(majorNumber, minorNumber), std::pair(version.majorNumber, version.minorNumber)) << version.text;
  }
}

TEST_F(TMerakOrbisEeprom, ACloseWritesTheRecordAndForgetsIt) {
  ASSERT_EQ(mOrbis->ReadEeprom(), 0U);
  EXPECT_EQ(mOrbis->GetSerialNumber(), "CV-0042");
  EXPECT_EQ(mOrbis->SetSerialNumber("CV99"), 0U);
  EXPECT_EQ(mOrbis->Close(), 0U);
  EXPECT_EQ(mInstrument.eeprom.TextAt(31, 5), std::string("CV99\0", 5));
  EXPECT_FALSE(mOrbis->HasEepromRecord());
  EXPECT_EQ(mOrbis->GetIDString(), "");
  EXPECT_EQ(mOrbis->GetFocalLength(), 0.0F);
  EXPECT_EQ(mOrbis->GetNoOfGratings(0), 0);
  EXPECT_EQ(mOrbis->SetFocalLength(1.0F), 3U);
  EXPECT_EQ(mOrbis->SetActiveTurret(0), 3U);
  EXPECT_EQ(mOrbis->ReadEeprom(), 3U);
  EXPECT_EQ(mOrbis->WriteEeprom(), 3U);
  EXPECT_EQ(mOrbis->WriteOpticalParamsToEEPROM(1, 2, 3), 3U);
  float value = 9;
  EXPECT_EQ(mOrbis->ReadOpticalParamsFromEEPROM(&value, &value, &value), 3U);
  EXPECT_EQ(value, 9.0F);
}

TEST_F(TMerakOrbisEeprom, AnotherOpenDropsTheRecordUnwritten) {
  ASSERT_EQ(mOrbis->ReadEeprom(), 0U);
  mOrbis->SetSerialNumber("CV99");
  mInstrument.Take();
  EXPECT_EQ(mOrbis->Open(0), 0U);
  EXPECT_NE(mOrbis->GetSerialNumber(), "CV99");
  EXPECT_EQ(mOrbis->Close(), 0U);
  EXPECT_THAT(mInstrument.Take(), ElementsAre("Hello", "Hello", "SYSTEMINFO?"));
}

TEST_F(TMerakOrbisEeprom, ARecordIsNotLongOfferedToASilentController) {
  ASSERT_EQ(mOrbis->ReadEeprom(), 0U);
  mOrbis->SetSerialNumber("CV99");
  mInstrument.answers = 0;
  int value = 0;
  EXPECT_EQ(mOrbis->GetSaveInfo(1, value), 4U);
  const std::uint64_t before = mInstrument.Time().Slept();
  EXPECT_EQ(mOrbis->Close(), 0U);
  EXPECT_LE(mInstrument.Time().Slept() - before, 1'000'000U);
}

TEST_F(TMerakOrbisEeprom, SilenceEndsATransferAndIsNotWaitedForAgain) {
  mInstrument.answers = 40;
  const std::uint64_t before = mInstrument.Time().Slept();
  EXPECT_EQ(mOrbis->ReadEeprom(), 0U);
  EXPECT_TRUE(mOrbis->IsSilent());
  mOrbis->SetSerialNumber("X");
  EXPECT_EQ(mOrbis->Close(), 0U);
  // One exchange of two reads, not one for each field.
  EXPECT_LE(mInstrument.Time().Slept() - before, 201'000'000U);
}

}  // namespace
