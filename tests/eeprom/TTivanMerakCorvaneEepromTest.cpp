#include "eeprom/TTivanMerakCorvaneEeprom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>
#include <vector>

#include "support/EepromImage.h"
#include "support/FakeTime.h"

namespace {

using Record = TTivanMerakCorvaneEeprom;

/// An instrument whose every byte is telling, read as a structure of this version.
EepromImage Instrument(const std::string& version) {
  EepromImage image;
  for (int address = 1; address < EepromImage::kSize; ++address) {
    image.At(address) = static_cast<unsigned char>(0x20 + address % 0x5B);
  }
  image.Put(21, version + std::string(10 - version.size(), '\0'));
  return image;
}

/// Two images differ at most in the date of modification and in `width` bytes at `address`.
void ExpectSameBut(int address, int width, const EepromImage& image, const EepromImage& before, int failing = 0) {
  for (int at = 1; at < EepromImage::kSize; ++at) {
    if ((at < 52 || at >= 63) && (at < address || at >= address + width)) {
      const auto place = static_cast<std::size_t>(at);
      ASSERT_EQ(image.bytes[place], before.bytes[place]) << at << " with " << failing << " failing";
    }
  }
}

/// Structures with the bytes that make them up.
class EveryStructure : public testing::TestWithParam<std::pair<const char*, std::size_t>> {
 protected:
  FakeTime mTime;
  EepromImage mImage = Instrument(GetParam().first);
  Record mRecord{mImage};
};

TEST_P(EveryStructure, UnreadableByteCostsTheInstrumentNothing) {
  const EepromImage whole = mImage;
  mRecord.Read();
  const std::vector<int> addresses = mImage.reads;
  EXPECT_EQ(addresses.front(), 21) << "the version says where the rest lies";
  EXPECT_EQ(addresses.size(), GetParam().second);
  mRecord.Write();
  EXPECT_EQ(mImage.writes, addresses);
  ExpectSameBut(0, 0, mImage, whole);
  EXPECT_EQ(mImage.unexpectedCalls, 0);
  for (const bool silent : {false, true}) {
    for (const int failing : addresses) {
      if (failing >= 21 && failing < 31) {
        continue;  // Without its version the record has another layout.
      }
      EepromImage image = whole;
      Record record(image);
      image.FailAt({failing}, silent);
      EXPECT_EQ(record.Read(), 0U);
      EXPECT_FALSE(record.IsDirty());
      image.Reset();
      record.SetSinPhase(7.0F);
      record.Write();
      EXPECT_EQ(image.FloatAt(276), 7.0F) << failing;
      EXPECT_FALSE(record.IsDirty());
      if (!silent) {
        EXPECT_LT(addresses.size() - image.writes.size(), 21U) << "only the value of " << failing << " stays out";
      }
      ExpectSameBut(276, 4, image, whole, failing);
    }
  }
}

TEST_P(EveryStructure, UnwritableByteCostsItsOwnValueAndSilenceEndsTheTransfer) {
  mRecord.Read();
  const std::vector<int> addresses = mImage.reads;
  for (std::size_t n = 0; n < addresses.size(); ++n) {
    mRecord.SetFilterString(0, "for " + std::to_string(n));
    mImage.FailAt({addresses[n]});
    EXPECT_EQ(mRecord.WriteIfDirty(), 0U);
    EXPECT_TRUE(mRecord.IsDirty()) << "still unsaved";
    EXPECT_LT(addresses.size() - mImage.writes.size(), 20U) << addresses[n];
    mImage.FailAt({addresses[n]}, true);
    EXPECT_EQ(mRecord.WriteIfDirty(), 0U);
    ASSERT_EQ(mImage.writes.size(), n + 1);
    EXPECT_TRUE(mRecord.IsDirty());

    Record record(mImage);
    EXPECT_EQ(record.Read(), 0U);
    ASSERT_EQ(mImage.reads.size(), n + 1);
    mImage.Reset();
    record.SetFilterString(0, "changed");
    EXPECT_EQ(record.WriteIfDirty(), 0U);
    ASSERT_TRUE(mImage.writes.empty()) << "defaults must not go over the instrument's data";
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, EveryStructure,
                         testing::Values(std::pair("1.0", 203U), std::pair("1.1", 227U), std::pair("1.2", 228U),
                                         std::pair("1.3", 328U), std::pair("3.0", 354U)));

/// A record of structure 3.0, read.
class ReadRecord : public testing::Test {
 protected:
  ReadRecord() {
    mImage.Put(1, std::string("Corvane\0", 8));
    mImage.Put(31, std::string("CV-0042\0xy", 10));
    mImage.Put(63, 0.5F);
    mImage.Put(289, 546.074F);
    mImage.At(288) = 1;
    for (int i = 0; i < 4; ++i) {
      mImage.Put(317 + 4 * i, 70 + i);
    }
    for (int f = 0; f < 6; ++f) {
      mImage.Put(384 + 10 * f, "Label " + std::to_string(f) + std::string(3, '\0'));
    }
    mImage.Put(554, std::string("\1"));
    mRecord.Read();
  }

  FakeTime mTime;
  EepromImage mImage = Instrument("3.0");
  Record mRecord{mImage};
};

TEST_F(ReadRecord, ReadsInTheOrderTheInstrumentExpects) {
  // Amplitude before phase and frequency; grating by grating, offset before start; the active turret before the count.
  const std::pair<std::size_t, int> places[] = {{94, 284},  {98, 276},  {102, 280}, {187, 293}, {191, 305}, {195, 333},
                                                {199, 345}, {205, 297}, {209, 309}, {352, 554}, {353, 364}};
  for (const auto& [place, address] : places) {
    EXPECT_EQ(mImage.reads.at(place), address) << place;
  }
}

TEST_F(ReadRecord, FailingByteEndsAValueInItsOwnWay) {
  mImage.Put(293, 0x01020304);
  Record record(mImage);
  mImage.FailAt({3, 65, 288, 295, 280, 363, 387});
  record.Read();
  EXPECT_EQ(record.GetIDString(), "Co") << "a text keeps what came before";
  EXPECT_EQ(record.GetFilterString(0), "Lab");
  EXPECT_EQ(record.GetFilterString(1), "Label 1");
  EXPECT_EQ(record.GetFocalLength(), 0.75F) << "a float keeps its value whole";
  EXPECT_EQ(record.GetSinFrequency(), 1000.0F);
  EXPECT_EQ(record.GetWaveToStepsEnable(), 0) << "so does a single byte";
  EXPECT_EQ(record.GetNoOfGratings(0), 0);
  EXPECT_EQ(record.GetGratingOffset(0, 0), 0x00030304) << "an int takes the failing byte as the last reply left it";
}

TEST_F(ReadRecord, ValueThatWasNotReadIsWrittenOnceItIsSet) {
  Record record(mImage);
  mImage.FailAt({33, 65, 70, 71, 288, 291, 295, 387, 554});
  record.Read();
  mImage.Reset();
  record.SetAngularDev(record.GetAngularDev());
  record.SetWaveToStepsEnable(0);
  record.SetGratingOffset(0, 0, record.GetGratingOffset(0, 0));
  record.SetFilterString(0, record.GetFilterString(0));
  record.WriteIfDirty();
  record.Write();
  EXPECT_EQ(mImage.FloatAt(67), 11.83F) << "the default, but a caller's now";
  EXPECT_EQ(mImage.At(288), 0);
  EXPECT_EQ(mImage.IntAt(293), record.GetGratingOffset(0, 0));
  EXPECT_EQ(mImage.TextAt(384, 4), std::string("Lab\0", 4));
  EXPECT_EQ(mImage.TextAt(31, 10), std::string("CV-0042\0xy", 10)) << "not set, not written";
  // Values that go to the instrument at once belong to the whole record from then on.
  const auto rewrites = [&](int address) {
    mImage.Put(address, 0);
    record.Write();
    return mImage.IntAt(address) != 0;
  };
  EXPECT_FALSE(rewrites(63) || rewrites(71) || rewrites(289) || rewrites(554));
  record.SetCurrentWavelength(500.0F);
  record.SetActiveTurret(2);
  record.WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F);
  EXPECT_TRUE(rewrites(63) && rewrites(71) && rewrites(289) && rewrites(554));
  record.Read();
  mImage.Put(31, 0);
  record.Write();
  EXPECT_EQ(mImage.At(31), 'C') << "a later reading that succeeds makes everything known";
}

TEST_F(ReadRecord, UnreadableVersionWritesNothingOnItsOwn) {
  EXPECT_EQ(Record(mImage).StoreActiveTurret(), merak::kEepromError) << "never read";
  mImage.FailAt({21});
  mRecord.Read();
  mRecord.SetFocalLength(1.0F);
  mImage.Reset();
  mRecord.WriteIfDirty();
  EXPECT_EQ(mRecord.SetActiveTurret(1), merak::kEepromError);
  EXPECT_TRUE(mImage.writes.empty());
  EXPECT_TRUE(mRecord.IsDirty());
  mRecord.Read();
  EXPECT_FALSE(mRecord.IsDirty()) << "reading drops what was not saved";
  EXPECT_EQ(mRecord.SetActiveTurret(2), 0U);
}

TEST(TTivanMerakCorvaneEeprom, BlankImagesAreReadAsTheyAre) {
  EepromImage image(0xFF);
  Record record(image);
  EXPECT_EQ(record.Read(), 0U);
  EXPECT_EQ(image.reads.size(), 203U) << "no version is taken as one before 1.1";
  EXPECT_EQ(record.GetIDString(), std::string(20, '\xFF'));
  EXPECT_EQ(record.SetFocalLength(record.GetFocalLength()), 0U);
  EXPECT_TRUE(std::isnan(record.GetFocalLength()) && !record.IsDirty()) << "the same bits are no change";
}

TEST_F(ReadRecord, ImmediateWritesReachTheInstrumentOnlyOnAChange) {
  mImage.Reset();
  EXPECT_EQ(mRecord.SetCurrentWavelength(546.074F), 0U);
  EXPECT_TRUE(mImage.writes.empty());
  mRecord.SetCurrentWavelength(-0.0F);
  mRecord.SetCurrentWavelength(0.0F);
  EXPECT_EQ(mImage.writes.size(), 8U) << "0 and -0 differ in their bits";
  EXPECT_EQ(mImage.IntAt(289), 0);
  mImage.FailAt({64}, false, merak::kIllegalAccess);
  EXPECT_EQ(mRecord.WriteOpticalParamsToEEPROM(1.5F, 10.0F, 3.0F), merak::kIllegalAccess);
  EXPECT_EQ(mImage.writes.size(), 10U) << "the failing field ends, the others are written";
  EXPECT_EQ(mImage.FloatAt(71), 3.0F);
  mImage.Reset();
  for (const int turret : {-1, 3, 255}) {
    EXPECT_EQ(mRecord.SetActiveTurret(turret), Record::kOutOfRange);
  }
  EXPECT_EQ(mRecord.SetActiveTurret(1), 0U);
  EXPECT_EQ(mImage.writes, std::vector<int>{554}) << "written even when it is the same";
}

TEST(TTivanMerakCorvaneEeprom, ActiveTurretIsStoredAlsoWhereTheStructureHasOneTurret) {
  EepromImage image = Instrument("1.2");
  Record record(image);
  record.Read();
  EXPECT_EQ(record.SetActiveTurret(2), 0U);
  EXPECT_EQ(image.writes, std::vector<int>{542});
  record.Read();
  EXPECT_EQ(record.GetActiveTurret(), 0) << "the record as a whole does not hold it";
}

TEST_F(ReadRecord, IndicesOutsideTheTablesTouchNothing) {
  mImage.At(554) = 200;
  mRecord.Read();
  EXPECT_EQ(mRecord.GetActiveTurret(), 200) << "kept as the instrument says it";
  EXPECT_EQ(mRecord.GetActiveTurretNoOfGratings() + mRecord.GetActiveTurretGratingStart(0), 0);
  EXPECT_EQ(mRecord.GetActiveTurretGratingBlaze(0), "");
  for (const int bad : {-1, 6, 254, INT_MIN, INT_MAX}) {
    for (const auto& [turret, grating] : {std::pair(bad, 0), std::pair(0, bad)}) {
      EXPECT_EQ(mRecord.GetGratingLines(turret, grating), 0.0F);
      const MerakResult results[] = {mRecord.SetGratingLines(turret, grating, 1.0F),
                                     mRecord.SetGratingBlaze(turret, grating, "x"),
                                     mRecord.SetGratingStart(turret, grating, 1),
                                     mRecord.SetGratingOffset(turret, grating, 1),
                                     mRecord.SetDetectorOffset(turret, grating, 1),
                                     mRecord.SetNoOfGratings(bad, 1),
                                     mRecord.SetFilterString(bad, "x"),
                                     mRecord.SetWaveToStepsCoeff(bad, 1.0F)};
      EXPECT_THAT(results, testing::Each(MerakResult{Record::kOutOfRange}));
    }
    EXPECT_EQ(mRecord.GetNoOfGratings(bad) + mRecord.GetDetectorOffset(0, bad), 0);
    EXPECT_EQ(mRecord.GetFilterString(bad), "");
    EXPECT_EQ(mRecord.GetWaveToStepsCoeff(bad), 0.0F);
  }
  EXPECT_FALSE(mRecord.IsDirty());
}

TEST_F(ReadRecord, DetectorOffsetsFollowTheEntranceAdjustment) {
  EXPECT_EQ(mRecord.GetDetectorOffset(1, 0), 72);
  EXPECT_EQ(mRecord.GetDetectorOffset(0, 2), 72) << "the entry behind exit 1";
  EXPECT_EQ(mRecord.GetDetectorOffset(2, 2) + mRecord.GetDetectorOffset(1, 2), 0);
  EXPECT_EQ(mRecord.SetDetectorOffset(2, 0, 1), Record::kOutOfRange);
  mImage = Instrument("2.5");
  mRecord.Read();
  EXPECT_EQ(mRecord.GetDetectorOffset(2, 1), mImage.IntAt(321));
  EXPECT_EQ(mRecord.SetDetectorOffset(1, 1, 99), 0U);
  mRecord.Write();
  EXPECT_EQ(mImage.IntAt(321), 99) << "set behind entrance 1, kept where the structure has room";
}

TEST_F(ReadRecord, TextsAreCutToTheirFieldAndInMemoryToTheirLimit) {
  mRecord.SetFilterString(0, std::string(300, 'f'));
  EXPECT_EQ(mRecord.GetFilterString(0), std::string(239, 'f'));
  mRecord.SetGratingBlaze(0, 0, std::string(300, 'b'));
  EXPECT_EQ(mRecord.GetGratingBlaze(0, 0), std::string(31, 'b'));
  mRecord.SetSerialNumber(std::string("CV\0hidden", 9));
  mRecord.Write();
  EXPECT_EQ(mImage.TextAt(384, 17), std::string(10, 'f') + "Label 1");
  EXPECT_EQ(mImage.TextAt(345, 7), std::string(6, 'b') + static_cast<char>(0x20 + 351 % 0x5B));
  EXPECT_EQ(mImage.TextAt(31, 10), std::string("CV") + std::string(8, '\0'));
}

TEST(StructureVersion, TakesTheNumbersBeforeAndBehindTheFirstStop) {
  const std::pair<const char*, std::pair<int, int>> versions[] = {
      {"10.12.7", {10, 12}}, {"3", {3, 0}},      {"", {0, 0}},
      {".4", {0, 4}},        {"x1.y", {0, 0}},   {"99999999999.-99999999999", {INT_MAX, INT_MIN}},
      {"-1.+2", {-1, 2}},    {" 2a. 3b", {2, 3}}};
  for (const auto& [text, numbers] : versions) {
    const auto version = corvane::StructureVersion::Parse(text);
    EXPECT_EQ(std::pair(version.majorNumber, version.minorNumber), numbers) << text;
  }
}

}  // namespace
