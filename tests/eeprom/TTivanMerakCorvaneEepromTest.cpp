#include "eeprom/TTivanMerakCorvaneEeprom.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "eeprom/EepromImage.h"
#include "support/FakeTime.h"

namespace {

using Record = TTivanMerakCorvaneEeprom;

/// A structure version with what it stores and where, written down apart from the library's own table.
struct Structure {
  const char* version;
  int turrets;
  bool lines;
  bool counts;
  int detectorOffsets;
  int blazeWidth;
  /// Turret 1: lines, blaze, number of gratings; turrets 2 and 3: offset (all else follows), number of gratings.
  int lines1, blaze1, count1, turret2, count2, turret3, count3, noOfTurrets, activeTurret;
  std::size_t exchanges;
};

constexpr Structure kV12{"1.2", 1, true, true, 2, 4, 325, 337, 349, 0, 0, 0, 0, 0, 0, 228};
constexpr Structure kV25{"2.5", 3, true, true, 2, 4, 325, 337, 349, 444, 492, 493, 541, 350, 542, 328};
constexpr Structure kV30{"3.0", 3, true, true, 4, 6, 333, 345, 363, 444, 498, 499, 553, 364, 554, 354};
constexpr Structure kStructures[] = {{"1.0", 1, false, false, 2, 4, 325, 337, 349, 0, 0, 0, 0, 0, 0, 203},
                                     {"1.1", 1, true, false, 2, 4, 325, 337, 349, 0, 0, 0, 0, 0, 0, 227},
                                     kV12,
                                     {"1.3", 3, true, true, 2, 4, 325, 337, 349, 444, 492, 493, 541, 350, 542, 328},
                                     kV25,
                                     kV30};

/// An instrument of this structure whose bytes outside the record's fields are all 0xEE.
EepromImage Instrument(const Structure& s) {
  EepromImage image(0xEE);
  image.Put(1, std::string("Corvane LX instrument", 20));
  image.Put(21, std::string(s.version) + std::string("\0tail##", 7));
  image.Put(31, std::string("CV-0042\0xy", 10));
  image.Put(41, "01/02/2003\xFF");
  image.Put(52, std::string("04/05/2006\0", 11));
  const std::pair<int, float> floats[] = {{63, 0.5F},   {67, 12.25F},   {71, -6.5F}, {256, 0.25F},   {272, 1.25F},
                                          {276, 0.25F}, {280, 2000.0F}, {284, 3.5F}, {289, 546.074F}};
  for (const auto& [address, value] : floats) {
    image.Put(address, value);
  }
  image.At(288) = 1;
  for (int i = 0; i < s.detectorOffsets; ++i) {
    image.Put(317 + 4 * i, 70 + i);
  }
  for (int f = 0; f < 6; ++f) {
    image.Put(384 + 10 * f, "Label " + std::to_string(f) + std::string(3, '\0'));
  }
  const int offsets[] = {293, s.turret2, s.turret3};
  const int lines[] = {s.lines1, s.turret2 + 24, s.turret3 + 24};
  const int blazes[] = {s.blaze1, s.turret2 + 36, s.turret3 + 36};
  for (int t = 0; t < s.turrets; ++t) {
    for (int g = 0; g < 3; ++g) {
      image.Put(offsets[t] + 4 * g, -10 * t - g - 10);
      image.Put(offsets[t] + 12 + 4 * g, 1000 * t + g);
      if (s.lines) {
        image.Put(lines[t] + 4 * g, 150.5F + static_cast<float>(10 * t + g));
        image.Put(blazes[t] + s.blazeWidth * g, std::to_string(100 + 10 * t + g));
      }
    }
  }
  if (s.counts) {
    image.At(s.count1) = 2;
  }
  if (s.turrets == 3) {
    image.At(s.count2) = 3;
    image.At(s.count3) = 255;
    image.At(s.noOfTurrets) = 2;
    image.At(s.activeTurret) = 1;
  }
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

class EveryStructure : public testing::TestWithParam<Structure> {
 protected:
  FakeTime mTime;
  EepromImage mImage = Instrument(GetParam());
  Record mRecord{mImage};
};

TEST_P(EveryStructure, ReadsWhatTheInstrumentHolds) {
  const Structure& s = GetParam();
  EXPECT_EQ(mRecord.Read(), 0U);
  EXPECT_EQ(mImage.reads.size(), s.exchanges);
  EXPECT_EQ(mImage.reads.front(), 21) << "the version says where the rest lies";
  EXPECT_TRUE(mImage.writes.empty());
  EXPECT_EQ(mRecord.GetIDString(), "Corvane LX instrumen") << "a text that fills its field ends there";
  EXPECT_EQ(mRecord.GetStructureVersion(), s.version);
  EXPECT_EQ(mRecord.GetSerialNumber(), "CV-0042");
  EXPECT_EQ(mRecord.GetManufactureDate(), "01/02/2003\xFF");
  EXPECT_EQ(mRecord.GetModifiedDate(), "04/05/2006");
  EXPECT_EQ(mRecord.GetFocalLength(), 0.5F);
  EXPECT_EQ(mRecord.GetAngularDev(), 12.25F);
  EXPECT_EQ(mRecord.GetPlaneTilt(), -6.5F);
  EXPECT_EQ(mRecord.GetWaveToStepsCoeff(0), 0.25F);
  EXPECT_EQ(mRecord.GetWaveToStepsCoeff(4), 1.25F);
  EXPECT_EQ(mRecord.GetSinPhase(), 0.25F);
  EXPECT_EQ(mRecord.GetSinFrequency(), 2000.0F);
  EXPECT_EQ(mRecord.GetSinAmplitude(), 3.5F);
  EXPECT_EQ(mRecord.GetWaveToStepsEnable(), 1);
  EXPECT_EQ(mRecord.GetCurrentWavelength(), 546.074F);
  EXPECT_EQ(mRecord.GetFilterString(5), "Label 5");
  EXPECT_EQ(mRecord.GetDetectorOffset(0, 1), 71);
  EXPECT_EQ(mRecord.GetDetectorOffset(1, 1), s.detectorOffsets == 4 ? 73 : 71);
  EXPECT_EQ(mRecord.GetNoOfTurrets(), s.turrets == 3 ? 2 : 1);
  EXPECT_EQ(mRecord.GetActiveTurret(), s.turrets == 3 ? 1 : 0);
  EXPECT_EQ(mRecord.GetNoOfGratings(0), s.counts ? 2 : 3);
  EXPECT_EQ(mRecord.GetNoOfGratings(2), s.turrets == 3 ? 255 : 0);
  for (int i = 0; i < 9; ++i) {
    const int t = i / 3;
    const int g = i % 3;
    const bool stored = t < s.turrets;
    EXPECT_EQ(mRecord.GetGratingOffset(t, g), stored ? -10 * t - g - 10 : 0);
    EXPECT_EQ(mRecord.GetGratingStart(t, g), stored ? 1000 * t + g : 0);
    EXPECT_EQ(mRecord.GetGratingLines(t, g), stored && s.lines ? 150.5F + static_cast<float>(10 * t + g) : 100.0F);
    const std::string blaze =
        std::to_string(100 + 10 * t + g) + std::string(static_cast<std::size_t>(s.blazeWidth - 3), '\xEE');
    EXPECT_EQ(mRecord.GetGratingBlaze(t, g), stored && s.lines ? blaze : "300");
  }
  EXPECT_FALSE(mRecord.IsDirty());
  EXPECT_EQ(mImage.unexpectedCalls, 0);
}

TEST_P(EveryStructure, WritesTheSamePlacesInTheSameOrderAndTouchesNothingElse) {
  const EepromImage before = mImage;
  mRecord.Read();
  EXPECT_EQ(mRecord.WriteIfDirty(), 0U);
  EXPECT_TRUE(mImage.writes.empty()) << "nothing is unsaved";
  mRecord.SetFilterString(2, "UV");
  EXPECT_EQ(mRecord.WriteIfDirty(), 0U);
  EXPECT_EQ(mImage.writes, mImage.reads);
  EXPECT_EQ(mImage.TextAt(404, 10), std::string("UV") + std::string(8, '\0'));
  ExpectSameBut(404, 10, mImage, before);
  mImage.Reset();
  mRecord.WriteIfDirty();
  EXPECT_TRUE(mImage.writes.empty()) << "saved is saved";
}

TEST_P(EveryStructure, UnreadableByteCostsTheInstrumentNothing) {
  const EepromImage whole = mImage;
  mRecord.Read();
  const std::vector<int> addresses = mImage.reads;
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

INSTANTIATE_TEST_SUITE_P(Versions, EveryStructure, testing::ValuesIn(kStructures), [](const auto& tested) {
  std::string name = tested.param.version;
  name.replace(name.find('.'), 1, "_");
  return name;
});

/// A record of structure 3.0, read.
class ReadRecord : public testing::Test {
 protected:
  ReadRecord() { mRecord.Read(); }

  FakeTime mTime;
  EepromImage mImage = Instrument(kV30);
  Record mRecord{mImage};
};

TEST_F(ReadRecord, ReadsInTheOrderTheInstrumentExpects) {
  // Amplitude before phase and frequency; grating by grating, offset before start; the active turret before the count.
  const std::pair<std::size_t, int> places[] = {{94, 284},  {98, 276},  {102, 280}, {187, 293}, {191, 305}, {195, 333},
                                                {199, 345}, {205, 297}, {209, 309}, {213, 337}, {352, 554}, {353, 364}};
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
  EXPECT_EQ(record.GetGratingOffset(0, 1), -11);
}

TEST_F(ReadRecord, ValueThatWasNotReadIsWrittenOnceItIsSet) {
  Record record(mImage);
  mImage.FailAt({33, 65, 70, 288, 291, 295, 387, 554});
  record.Read();
  mImage.Reset();
  record.SetFocalLength(2.0F);
  record.SetAngularDev(record.GetAngularDev());
  record.SetWaveToStepsEnable(0);
  record.SetGratingOffset(0, 0, record.GetGratingOffset(0, 0));
  record.SetFilterString(0, record.GetFilterString(0));
  record.WriteIfDirty();
  EXPECT_EQ(mImage.FloatAt(63), 2.0F);
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
  EXPECT_FALSE(rewrites(289));
  record.SetCurrentWavelength(500.0F);
  EXPECT_TRUE(rewrites(289));
  EXPECT_FALSE(rewrites(554));
  record.SetActiveTurret(2);
  EXPECT_TRUE(rewrites(554));
  mImage.FailAt({63, 67, 71});
  record.Read();
  mImage.Reset();
  EXPECT_FALSE(rewrites(71));
  record.WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F);
  EXPECT_TRUE(rewrites(63) && rewrites(67) && rewrites(71));
  record.Read();
  mImage.Put(31, 0);
  record.Write();
  EXPECT_EQ(mImage.At(31), 'C') << "a later reading that succeeds makes everything known";
}

TEST_F(ReadRecord, UnreadableVersionWritesNothingOnItsOwn) {
  EXPECT_EQ(Record(mImage).StoreActiveTurret(), merak::kEepromError) << "never read";
  mImage.FailAt({21});
  mRecord.Read();
  EXPECT_EQ(mRecord.GetStructureVersion(), "");
  mRecord.SetFocalLength(1.0F);
  mImage.Reset();
  mRecord.WriteIfDirty();
  EXPECT_EQ(mRecord.SetActiveTurret(1), merak::kEepromError);
  EXPECT_TRUE(mImage.writes.empty());
  EXPECT_TRUE(mRecord.IsDirty());
  mRecord.Read();
  EXPECT_FALSE(mRecord.IsDirty());
  EXPECT_EQ(mRecord.GetFocalLength(), 0.5F);
  EXPECT_EQ(mRecord.SetActiveTurret(2), 0U);
  EXPECT_EQ(mImage.writes, std::vector<int>{554});
}

TEST(TTivanMerakCorvaneEeprom, BlankImagesAreReadAsTheyAre) {
  for (const bool set : {false, true}) {
    EepromImage image(set ? 0xFF : 0);
    Record record(image);
    EXPECT_EQ(record.Read(), 0U);
    EXPECT_EQ(image.reads.size(), kStructures[0].exchanges) << "no version is taken as one before 1.1";
    EXPECT_EQ(record.GetIDString(), set ? std::string(20, '\xFF') : "");
    EXPECT_EQ(record.GetGratingOffset(0, 0), set ? -1 : 0);
    EXPECT_EQ(std::isnan(record.GetFocalLength()), set) << "a NaN stays one";
    EXPECT_EQ(record.SetFocalLength(record.GetFocalLength()), 0U);
    EXPECT_FALSE(record.IsDirty()) << "the same bits are no change";
  }
}

TEST_F(ReadRecord, ImmediateWritesReachTheInstrumentOnlyOnAChange) {
  mImage.Reset();
  EXPECT_EQ(mRecord.SetCurrentWavelength(546.074F), 0U);
  EXPECT_TRUE(mImage.writes.empty());
  EXPECT_EQ(mRecord.SetCurrentWavelength(-0.0F), 0U);
  EXPECT_EQ(mRecord.SetCurrentWavelength(0.0F), 0U);
  EXPECT_EQ(mImage.writes, (std::vector<int>{289, 290, 291, 292, 289, 290, 291, 292}))
      << "0 and -0 differ in their bits";
  EXPECT_EQ(mImage.IntAt(289), 0);

  mImage.FailAt({64}, false, merak::kIllegalAccess);
  EXPECT_EQ(mRecord.WriteOpticalParamsToEEPROM(1.5F, 10.0F, 3.0F), merak::kIllegalAccess);
  EXPECT_EQ(mImage.writes.size(), 10U) << "the failing field ends, the others are written";
  EXPECT_EQ(mImage.FloatAt(67), 10.0F);
  EXPECT_EQ(mImage.FloatAt(71), 3.0F);
  float focal = 0.0F;
  float angular = 0.0F;
  EXPECT_EQ(mRecord.ReadOpticalParamsFromEEPROM(&focal, &angular, nullptr), 0U);
  EXPECT_EQ(focal, 1.5F);
  EXPECT_EQ(angular, 10.0F);

  mImage.Reset();
  for (const int turret : {-1, 3, 255}) {
    EXPECT_EQ(mRecord.SetActiveTurret(turret), Record::kOutOfRange);
  }
  EXPECT_EQ(mRecord.SetActiveTurret(1), 0U);
  EXPECT_EQ(mImage.writes, std::vector<int>{554}) << "written even when it is the same";
  EXPECT_FALSE(mRecord.IsDirty());
}

TEST(TTivanMerakCorvaneEeprom, ActiveTurretIsStoredAlsoWhereTheStructureHasOneTurret) {
  EepromImage image = Instrument(kV12);
  Record record(image);
  record.Read();
  EXPECT_EQ(record.SetActiveTurret(2), 0U);
  EXPECT_EQ(image.writes, std::vector<int>{542});
  EXPECT_EQ(image.At(542), 2);
  EXPECT_EQ(record.GetActiveTurret(), 2);
  image.Reset();
  record.Write();
  EXPECT_EQ(image.writes.size(), kV12.exchanges) << "the record as a whole does not hold it";
  record.Read();
  EXPECT_EQ(record.GetActiveTurret(), 0);
}

TEST_F(ReadRecord, SettersMarkTheRecordUnsavedOnlyOnAChange) {
  using Change = MerakResult (*)(Record&);
  const Change changes[] = {
      [](Record& r) { return r.SetSerialNumber("CV-0043"); },
      [](Record& r) { return r.SetFocalLength(NAN); },
      [](Record& r) { return r.SetWaveToStepsCoeff(4, 1.0F); },
      [](Record& r) { return r.SetWaveToStepsEnable(0); },
      [](Record& r) { return r.SetGratingStart(2, 2, 5); },
      [](Record& r) { return r.SetGratingBlaze(2, 2, "x"); },
      [](Record& r) { return r.SetNoOfGratings(2, 5); },
      [](Record& r) { return r.SetDetectorOffset(1, 1, 5); },
      [](Record& r) { return r.SetNoOfTurrets(5); },
      [](Record& r) { return r.SetActiveTurretGratingOffset(0, 5); },
  };
  for (const Change& change : changes) {
    EXPECT_EQ(change(mRecord), 0U);
    EXPECT_TRUE(mRecord.IsDirty()) << &change - changes;
    mRecord.Read();
    EXPECT_FALSE(mRecord.IsDirty()) << "reading drops what was not saved";
    change(mRecord);
    mRecord.Write();
    EXPECT_FALSE(mRecord.IsDirty());
    change(mRecord);
    EXPECT_FALSE(mRecord.IsDirty()) << &change - changes << ": the same value again";
  }
}

TEST_F(ReadRecord, IndicesOutsideTheTablesTouchNothing) {
  mImage.At(554) = 200;
  mRecord.Read();
  EXPECT_EQ(mRecord.GetActiveTurret(), 200) << "kept as the instrument says it";
  EXPECT_EQ(mRecord.GetActiveTurretNoOfGratings(), 0);
  EXPECT_EQ(mRecord.GetActiveTurretGratingLines(0), 0.0F);
  EXPECT_EQ(mRecord.GetActiveTurretGratingBlaze(0), "");
  EXPECT_EQ(mRecord.GetActiveTurretGratingStart(0), 0);
  EXPECT_EQ(mRecord.GetActiveTurretGratingOffset(0), 0);
  EXPECT_EQ(mRecord.SetActiveTurretGratingOffset(0, 1), Record::kOutOfRange);
  for (const int bad : {-1, 6, 254, INT_MIN, INT_MAX}) {
    for (const auto& [turret, grating] : {std::pair(bad, 0), std::pair(0, bad)}) {
      EXPECT_EQ(mRecord.GetGratingLines(turret, grating), 0.0F);
      EXPECT_EQ(mRecord.SetGratingLines(turret, grating, 1.0F), Record::kOutOfRange);
      EXPECT_EQ(mRecord.SetGratingBlaze(turret, grating, "x"), Record::kOutOfRange);
      EXPECT_EQ(mRecord.SetGratingStart(turret, grating, 1), Record::kOutOfRange);
      EXPECT_EQ(mRecord.SetGratingOffset(turret, grating, 1), Record::kOutOfRange);
      EXPECT_EQ(mRecord.GetDetectorOffset(turret, grating), 0);
      EXPECT_EQ(mRecord.SetDetectorOffset(turret, grating, 1), Record::kOutOfRange);
    }
    EXPECT_EQ(mRecord.GetNoOfGratings(bad), 0);
    EXPECT_EQ(mRecord.SetNoOfGratings(bad, 1), Record::kOutOfRange);
    EXPECT_EQ(mRecord.GetFilterString(bad), "");
    EXPECT_EQ(mRecord.SetFilterString(bad, "x"), Record::kOutOfRange);
    EXPECT_EQ(mRecord.GetWaveToStepsCoeff(bad), 0.0F);
    EXPECT_EQ(mRecord.SetWaveToStepsCoeff(bad, 1.0F), Record::kOutOfRange);
  }
  EXPECT_EQ(mRecord.GetGratingLines(3, 0) + mRecord.GetGratingLines(0, 3), 0.0F);
  EXPECT_FALSE(mRecord.IsDirty());
}

TEST_F(ReadRecord, DetectorOffsetsFollowTheEntranceAdjustment) {
  EXPECT_EQ(mRecord.GetDetectorOffset(1, 0), 72);
  EXPECT_EQ(mRecord.GetDetectorOffset(0, 2), 72) << "the entry behind exit 1";
  EXPECT_EQ(mRecord.GetDetectorOffset(2, 2), 0);
  EXPECT_EQ(mRecord.GetDetectorOffset(1, 2), 0);
  EXPECT_EQ(mRecord.SetDetectorOffset(2, 0, 1), Record::kOutOfRange);
  mImage = Instrument(kV25);
  mRecord.Read();
  EXPECT_EQ(mRecord.GetDetectorOffset(2, 1), 71);
  EXPECT_EQ(mRecord.SetDetectorOffset(1, 1, 99), 0U);
  EXPECT_EQ(mRecord.GetDetectorOffset(0, 1), 99);
  mRecord.Write();
  EXPECT_EQ(mImage.IntAt(321), 99) << "set behind entrance 1, kept where the structure has room";
}

TEST_F(ReadRecord, TextsAreCutToTheirFieldAndInMemoryToTheirLimit) {
  mRecord.SetFilterString(0, std::string(300, 'f'));
  EXPECT_EQ(mRecord.GetFilterString(0), std::string(239, 'f'));
  mRecord.SetGratingBlaze(0, 0, std::string(300, 'b'));
  EXPECT_EQ(mRecord.GetGratingBlaze(0, 0), std::string(31, 'b'));
  mRecord.SetSerialNumber(std::string("CV\0hidden", 9));
  EXPECT_EQ(mRecord.GetSerialNumber(), "CV");
  mRecord.Write();
  EXPECT_EQ(mImage.TextAt(384, 17), std::string(10, 'f') + "Label 1");
  EXPECT_EQ(mImage.TextAt(345, 9), "bbbbbb101");
  EXPECT_EQ(mImage.TextAt(31, 10), std::string("CV") + std::string(8, '\0'));
}

TEST_F(ReadRecord, WritingDatesTheRecordByTheLocalCalendar) {
  // 2026-03-04 01:30 UTC, still the third of March five hours further west.
  mTime.SetWallSeconds(1772587800);
  ::setenv("TZ", "XYZ5", 1);
  ::tzset();
  mRecord.SetNoOfTurrets(3);
  mRecord.WriteIfDirty();
  ::unsetenv("TZ");
  ::tzset();
  EXPECT_EQ(mRecord.GetModifiedDate(), "03/03/2026");
  EXPECT_EQ(mImage.TextAt(52, 11), std::string("03/03/2026\0", 11));
}

TEST(StructureVersion, TakesTheNumbersBeforeAndBehindTheFirstStop) {
  const struct {
    const char* text;
    int majorNumber, minorNumber;
  } versions[] = {{"2.5", 2, 5},     {"10.12.7", 10, 12}, {"3", 3, 0},
                  {"", 0, 0},        {".4", 0, 4},        {"x1.y", 0, 0},
                  {" 2a. 3b", 2, 3}, {"-1.+2", -1, 2},    {"99999999999.-99999999999", INT_MAX, INT_MIN}};
  for (const auto& expected : versions) {
    const auto version = corvane::StructureVersion::Parse(expected.text);
    EXPECT_EQ(version.majorNumber, expected.majorNumber) << expected.text;
    EXPECT_EQ(version.minorNumber, expected.minorNumber) << expected.text;
  }
}

}  // namespace
