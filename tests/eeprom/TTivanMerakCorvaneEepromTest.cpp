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

// Addresses, in a structure of version 3.0 where nothing else is said.
constexpr int kVersion = 21;  // in every structure, like all up to the grating starts
constexpr int kSerialNumber = 31;
constexpr int kModifiedDate = 52;
constexpr int kFocalLength = 63;
constexpr int kAngularDeviation = 67;
constexpr int kPlaneTilt = 71;
constexpr int kSinPhase = 276;
constexpr int kSinFrequency = 280;
constexpr int kWaveToStepsEnable = 288;
constexpr int kCurrentWavelength = 289;
constexpr int kGratingOffsets = 293;
constexpr int kDetectorOffsets = 317;
constexpr int kGratingBlazes = 345;
constexpr int kNoOfGratings = 363;
constexpr int kFilterLabels = 384;
constexpr int kActiveTurret = 554;

/// An instrument whose every byte is telling, read as a structure of this version.
EepromImage Instrument(const std::string& version) {
  EepromImage image;
  for (int address = 1; address < EepromImage::kSize; ++address) {
    image.At(address) = static_cast<unsigned char>(0x20 + address % 0x5B);
  }
  image.Put(kVersion, version + std::string(10 - version.size(), '\0'));
  return image;
}

/// The images differ at most in the date of modification and in `width` bytes at `address`.
void ExpectSameBut(int address, int width, const EepromImage& image, const EepromImage& before) {
  for (int at = 1; at < EepromImage::kSize; ++at) {
    const bool isDate = at >= kModifiedDate && at < kModifiedDate + 11;
    const bool isExpected = at >= address && at < address + width;
    if (!isDate && !isExpected) {
      const auto place = static_cast<std::size_t>(at);
      ASSERT_EQ(image.bytes[place], before.bytes[place]) << at;
    }
  }
}

struct Structure {
  const char* version;
  /// That make it up.
  std::size_t bytes;
};

class EveryStructure : public testing::TestWithParam<Structure> {
 protected:
  EveryStructure() {
    mRecord.Read();
    mAddresses = mImage.reads;
  }
  FakeTime mTime;
  const EepromImage mWhole = Instrument(GetParam().version);
  EepromImage mImage = mWhole;
  Record mRecord{mImage};
  std::vector<int> mAddresses;
};

TEST_P(EveryStructure, IsReadFromItsVersionOnAndWrittenBackAsItWas) {
  EXPECT_EQ(mAddresses.front(), kVersion) << "which says where the rest lies";
  EXPECT_EQ(mAddresses.size(), GetParam().bytes);
  mRecord.Write();
  EXPECT_EQ(mImage.writes, mAddresses);
  ExpectSameBut(0, 0, mImage, mWhole);
  EXPECT_EQ(mImage.unexpectedCalls, 0);
}

TEST_P(EveryStructure, UnreadableByteCostsTheInstrumentNothing) {
  constexpr std::size_t kLongestValue = 20;
  for (const int failing : mAddresses) {
    if (failing >= kVersion && failing < kVersion + 10) {
      continue;  // Without its version the record has another layout.
    }
    SCOPED_TRACE(failing);
    EepromImage image = mWhole;
    Record record(image);
    image.FailAt({failing});
    EXPECT_EQ(record.Read(), merak::kSuccess);
    EXPECT_FALSE(record.IsDirty());
    image.Reset();
    record.SetSinPhase(7.0F);
    record.Write();
    EXPECT_FALSE(record.IsDirty());
    EXPECT_EQ(image.FloatAt(kSinPhase), 7.0F);
    EXPECT_LE(mAddresses.size() - image.writes.size(), kLongestValue) << "only its own value stays out";
    ExpectSameBut(kSinPhase, 4, image, mWhole);
  }
}

TEST_P(EveryStructure, UnwritableByteCostsItsOwnValueAndSilenceEndsTheTransfer) {
  for (std::size_t n = 0; n < mAddresses.size(); ++n) {
    mRecord.SetFilterString(0, "for " + std::to_string(n));
    mImage.FailAt({mAddresses[n]});
    EXPECT_EQ(mRecord.WriteIfDirty(), merak::kSuccess);
    EXPECT_TRUE(mRecord.IsDirty()) << "still unsaved";
    EXPECT_LT(mAddresses.size() - mImage.writes.size(), 20U) << mAddresses[n];
    mImage.FailAt({mAddresses[n]}, true);
    EXPECT_EQ(mRecord.WriteIfDirty(), merak::kSuccess);
    EXPECT_EQ(mImage.writes.size(), n + 1);
    EXPECT_TRUE(mRecord.IsDirty());
  }
}

TEST_P(EveryStructure, ARecordWhoseReadingWasBrokenOffTakesWhatIsSetAndNothingElse) {
  for (const int failing : mAddresses) {
    SCOPED_TRACE(failing);
    EepromImage image = mWhole;
    Record record(image);
    image.FailAt({failing}, true);
    EXPECT_EQ(record.Read(), merak::kSuccess);
    EXPECT_EQ(image.reads.back(), failing);
    image.Reset();
    record.SetFilterString(1, "changed");
    EXPECT_EQ(record.WriteIfDirty(), merak::kSuccess);
    EXPECT_FALSE(record.IsDirty());
    EXPECT_EQ(image.TextAt(kFilterLabels + 10, 10), std::string("changed\0\0\0", 10));
    ExpectSameBut(kFilterLabels + 10, 10, image, mWhole);
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, EveryStructure,
                         testing::Values(Structure{"1.0", 203}, Structure{"1.1", 227}, Structure{"1.2", 228},
                                         Structure{"1.3", 328}, Structure{"3.0", 354}));

/// A record of structure 3.0, read.
class ReadRecord : public testing::Test {
 protected:
  ReadRecord() {
    mImage.Put(1, std::string("Corvane\0", 8));
    mImage.Put(kSerialNumber, std::string("CV-0042\0xy", 10));
    mImage.Put(kFocalLength, 0.5F);
    mImage.Put(kCurrentWavelength, 546.074F);
    mImage.At(kWaveToStepsEnable) = 1;
    for (int i = 0; i < 4; ++i) {
      mImage.Put(kDetectorOffsets + 4 * i, 70 + i);
    }
    for (int f = 0; f < 6; ++f) {
      mImage.Put(kFilterLabels + 10 * f, "Label " + std::to_string(f) + std::string(3, '\0'));
    }
    mImage.At(kActiveTurret) = 1;
    mRecord.Read();
  }
  /// True when a writing of the whole record puts something over a 0 at this address.
  bool Rewrites(Record& record, int address) {
    mImage.Put(address, 0);
    record.Write();
    return mImage.IntAt(address) != 0;
  }

  FakeTime mTime;
  EepromImage mImage = Instrument("3.0");
  Record mRecord{mImage};
};

TEST_F(ReadRecord, TravelsInTheOrderTheInstrumentExpects) {
  // Amplitude before phase and frequency; grating by grating, offset before start; the active turret before the count.
  const std::pair<std::size_t, int> places[] = {{94, 284},  {98, 276},  {102, 280}, {187, 293}, {191, 305}, {195, 333},
                                                {199, 345}, {205, 297}, {209, 309}, {352, 554}, {353, 364}};
  for (const auto& [place, address] : places) {
    EXPECT_EQ(mImage.reads.at(place), address) << place;
  }
}

TEST_F(ReadRecord, FailingByteEndsAValueInItsOwnWay) {
  mImage.Put(kGratingOffsets, 0x01020304);
  Record record(mImage);
  mImage.FailAt(
      {3, kFocalLength + 2, kSinFrequency, kWaveToStepsEnable, kGratingOffsets + 2, kNoOfGratings, kFilterLabels + 3});
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

TEST_F(ReadRecord, ValueThatWasNotReadIsWrittenOnceASetterStoresIt) {
  Record record(mImage);
  mImage.FailAt({kSerialNumber + 2, kAngularDeviation + 3, kWaveToStepsEnable, kGratingOffsets + 2, kFilterLabels + 3});
  record.Read();
  mImage.Reset();
  record.SetAngularDev(record.GetAngularDev());
  record.SetWaveToStepsEnable(0);
  record.SetGratingOffset(0, 0, record.GetGratingOffset(0, 0));
  record.SetFilterString(0, record.GetFilterString(0));
  record.Write();
  EXPECT_EQ(mImage.FloatAt(kAngularDeviation), 11.83F) << "the default, but a caller's now";
  EXPECT_EQ(mImage.At(kWaveToStepsEnable), 0);
  EXPECT_EQ(mImage.IntAt(kGratingOffsets), record.GetGratingOffset(0, 0));
  EXPECT_EQ(mImage.TextAt(kFilterLabels, 4), std::string("Lab\0", 4));
  EXPECT_EQ(mImage.TextAt(kSerialNumber, 10), std::string("CV-0042\0xy", 10)) << "not set, not written";
}

TEST_F(ReadRecord, ValueThatWasNotReadIsWrittenAlsoWhenItEqualsWhatWasAssumed) {
  const float assumed = mRecord.GetFocalLength();
  mImage.FailAt({kFocalLength});
  mRecord.Read();
  mRecord.SetFocalLength(assumed);
  EXPECT_TRUE(mRecord.IsDirty());
}

TEST_F(ReadRecord, ValueThatGoesToTheInstrumentAtOnceIsWrittenWithTheRecordFromThenOn) {
  const int addresses[] = {kFocalLength, kPlaneTilt, kCurrentWavelength, kActiveTurret};
  Record record(mImage);
  mImage.FailAt({addresses[0], addresses[1], addresses[2], addresses[3]});
  record.Read();
  mImage.Reset();
  for (const int address : addresses) {
    EXPECT_FALSE(Rewrites(record, address)) << address;
  }
  record.SetCurrentWavelength(500.0F);
  record.SetActiveTurret(2);
  record.WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F);
  for (const int address : addresses) {
    EXPECT_TRUE(Rewrites(record, address)) << address;
  }
}

TEST_F(ReadRecord, NothingIsWrittenWithoutTheVersionWhichIsAskedForOnceMore) {
  const EepromImage before = mImage;
  mImage.FailAt({kVersion});
  mRecord.Read();
  mRecord.SetFocalLength(1.0F);
  mRecord.WriteIfDirty();
  EXPECT_EQ(mRecord.SetActiveTurret(1), merak::kEepromError) << "whose place is unknown";
  EXPECT_EQ(mImage.writes, std::vector<int>());
  EXPECT_TRUE(mRecord.IsDirty());
  mImage.Reset();
  mRecord.WriteIfDirty();
  EXPECT_FALSE(mRecord.IsDirty());
  EXPECT_EQ(mImage.FloatAt(kFocalLength), 1.0F);
  ExpectSameBut(kFocalLength, 4, mImage, before);
}

TEST_F(ReadRecord, OffsetsThatWouldGoToAnotherPlaceAreRefused) {
  mImage.FailAt({kVersion, kActiveTurret});
  mRecord.Read();
  EXPECT_EQ(mRecord.SetDetectorOffset(1, 0, 5), Record::kOutOfRange) << "a structure with one entrance, perhaps";
  EXPECT_EQ(mRecord.SetActiveTurretGratingOffset(0, 5), Record::kOutOfRange);
  mImage.Reset();
  EXPECT_EQ(mRecord.SetActiveTurret(1), merak::kSuccess);
  EXPECT_EQ(mRecord.SetDetectorOffset(1, 0, 5), merak::kSuccess);
  EXPECT_EQ(mRecord.SetActiveTurretGratingOffset(0, 5), merak::kSuccess);
  EXPECT_EQ(mRecord.GetGratingOffset(1, 0), 5);
}

TEST_F(ReadRecord, ReadingDropsWhatWasNotSaved) {
  mImage.FailAt({kCurrentWavelength});
  mRecord.SetCurrentWavelength(500.0F);
  mRecord.SetFocalLength(1.0F);
  mImage.Reset();
  mRecord.Read();
  EXPECT_FALSE(mRecord.IsDirty());
  mRecord.WriteIfDirty();
  EXPECT_EQ(mImage.writes, std::vector<int>());
}

TEST(TTivanMerakCorvaneEeprom, BlankImagesAreReadAsTheyAre) {
  EepromImage image(0xFF);
  Record record(image);
  EXPECT_EQ(record.Read(), merak::kSuccess);
  EXPECT_EQ(image.reads.size(), 203U) << "no version is taken as one before 1.1";
  EXPECT_EQ(record.GetIDString(), std::string(20, '\xFF'));
  EXPECT_TRUE(std::isnan(record.GetFocalLength()));
  EXPECT_EQ(record.SetFocalLength(record.GetFocalLength()), merak::kSuccess);
  EXPECT_FALSE(record.IsDirty()) << "the same bits are no change";
}

TEST_F(ReadRecord, AWavelengthIsWrittenAtOnceWhenItsBitsDiffer) {
  mImage.Reset();
  EXPECT_EQ(mRecord.SetCurrentWavelength(546.074F), merak::kSuccess);
  EXPECT_EQ(mImage.writes, std::vector<int>());
  mRecord.SetCurrentWavelength(-0.0F);
  mRecord.SetCurrentWavelength(0.0F);
  EXPECT_EQ(mImage.writes.size(), 8U);
  EXPECT_EQ(mImage.IntAt(kCurrentWavelength), 0);
}

TEST_F(ReadRecord, AWavelengthOfWhichOnlyAPartArrivedIsWrittenByTheNextCallOrAtTheEnd) {
  const EepromImage before = mImage;
  float wavelength = 100.1F;
  for (const bool silent : {false, true}) {
    for (const bool called : {false, true}) {
      wavelength += 22.2F;
      mImage.FailAt({kCurrentWavelength + 2}, silent);
      EXPECT_EQ(mRecord.SetCurrentWavelength(wavelength), merak::kIoError);
      EXPECT_EQ(mRecord.SetCurrentWavelength(wavelength), merak::kIoError);
      mImage.Reset();
      if (called) {
        EXPECT_EQ(mRecord.SetCurrentWavelength(wavelength), merak::kSuccess);
      }
      mRecord.WriteIfDirty();
      EXPECT_EQ(mImage.FloatAt(kCurrentWavelength), wavelength);
      EXPECT_EQ(mImage.writes.size(), 4U) << "once, and nothing else of the record";
    }
  }
  ExpectSameBut(kCurrentWavelength, 4, mImage, before);
}

TEST_F(ReadRecord, AFailingOpticalParameterIsWrittenAtTheEndAndTheOthersAtOnce) {
  mImage.FailAt({kFocalLength + 1}, false, merak::kIllegalAccess);
  EXPECT_EQ(mRecord.WriteOpticalParamsToEEPROM(1.5F, 10.0F, 3.0F), merak::kIllegalAccess);
  EXPECT_EQ(mImage.writes.size(), 10U);
  EXPECT_EQ(mImage.FloatAt(kPlaneTilt), 3.0F);
  mImage.Reset();
  mRecord.WriteIfDirty();
  EXPECT_EQ(mImage.FloatAt(kFocalLength), 1.5F);
  EXPECT_EQ(mImage.writes.size(), 4U);
}

TEST_F(ReadRecord, AnActiveTurretIsWrittenEvenWhenItIsTheSame) {
  mImage.Reset();
  for (const int turret : {-1, 3, 255}) {
    EXPECT_EQ(mRecord.SetActiveTurret(turret), Record::kOutOfRange) << turret;
  }
  EXPECT_EQ(mRecord.SetActiveTurret(1), merak::kSuccess);
  EXPECT_EQ(mImage.writes, std::vector<int>{kActiveTurret});
}

TEST(TTivanMerakCorvaneEeprom, ActiveTurretIsStoredAlsoWhereTheStructureHasOneTurret) {
  EepromImage image = Instrument("1.2");
  Record record(image);
  record.Read();
  EXPECT_EQ(record.SetActiveTurret(2), merak::kSuccess);
  EXPECT_EQ(image.writes, std::vector<int>{542});
  record.Read();
  EXPECT_EQ(record.GetActiveTurret(), 0) << "the record as a whole does not hold it";
}

TEST_F(ReadRecord, AnActiveTurretBeyondTheTableIsKeptAndHasNoGratings) {
  mImage.At(kActiveTurret) = 200;
  mRecord.Read();
  EXPECT_EQ(mRecord.GetActiveTurret(), 200);
  EXPECT_EQ(mRecord.GetActiveTurretNoOfGratings(), 0);
  EXPECT_EQ(mRecord.GetActiveTurretGratingStart(0), 0);
  EXPECT_EQ(mRecord.GetActiveTurretGratingBlaze(0), "");
}

TEST_F(ReadRecord, IndicesOutsideTheTablesTouchNothing) {
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
    EXPECT_EQ(mRecord.GetNoOfGratings(bad), 0);
    EXPECT_EQ(mRecord.GetDetectorOffset(0, bad), 0);
    EXPECT_EQ(mRecord.GetFilterString(bad), "");
    EXPECT_EQ(mRecord.GetWaveToStepsCoeff(bad), 0.0F);
  }
  EXPECT_FALSE(mRecord.IsDirty());
}

TEST_F(ReadRecord, DetectorOffsetsLieExitByExitEntranceByEntrance) {
  EXPECT_EQ(mRecord.GetDetectorOffset(1, 0), 72);
  EXPECT_EQ(mRecord.GetDetectorOffset(0, 2), 72) << "the entry behind exit 1";
  EXPECT_EQ(mRecord.GetDetectorOffset(1, 2), 0);
  EXPECT_EQ(mRecord.SetDetectorOffset(2, 0, 1), Record::kOutOfRange);
  mImage = Instrument("2.5");
  mRecord.Read();
  EXPECT_EQ(mRecord.GetDetectorOffset(2, 1), mImage.IntAt(kDetectorOffsets + 4));
  EXPECT_EQ(mRecord.SetDetectorOffset(1, 1, 99), merak::kSuccess);
  mRecord.Write();
  EXPECT_EQ(mImage.IntAt(kDetectorOffsets + 4), 99) << "kept where the structure has room, whatever the entrance";
}

TEST_F(ReadRecord, TextsAreCutToTheirFieldAndInMemoryToTheirLimit) {
  mRecord.SetFilterString(0, std::string(300, 'f'));
  EXPECT_EQ(mRecord.GetFilterString(0), std::string(239, 'f'));
  mRecord.SetGratingBlaze(0, 0, std::string(300, 'b'));
  EXPECT_EQ(mRecord.GetGratingBlaze(0, 0), std::string(31, 'b'));
  mRecord.SetSerialNumber(std::string("CV\0hidden", 9));
  const std::string behindTheBlaze = mImage.TextAt(kGratingBlazes + 6, 1);
  mRecord.Write();
  EXPECT_EQ(mImage.TextAt(kFilterLabels, 17), std::string(10, 'f') + "Label 1");
  EXPECT_EQ(mImage.TextAt(kGratingBlazes, 7), std::string(6, 'b') + behindTheBlaze);
  EXPECT_EQ(mImage.TextAt(kSerialNumber, 10), std::string("CV") + std::string(8, '\0'));
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
