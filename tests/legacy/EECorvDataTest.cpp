#include "legacy/EECorvData.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "legacy/CorvDataKeys.h"
#include "platform/TivanLocale.h"
#include "support/CommaLocale.h"
#include "support/FakeLegacyInstrument.h"
#include "support/TemporaryDirectory.h"

namespace {

using Values = corvane::CorvDataValues;

/// Places on the pages, written down apart from the library's own table, with the data file's name and text for each.
struct Place {
  std::size_t page;
  std::size_t offset;
  std::variant<int, char, float, const char*> stored;
  double since;
  std::string key;
  std::string text;
};

// clang-format off
const Place kPlaces[] = {
    {0, 1, "A twenty letter text", 0, "General.IDSTRING", "A twenty letter text"},
    {0, 31, "PP12345678", 0, "General.IVERNO", "PP12345678"}, {0, 41, "01/02/2003", 0, "General.DOM", "01/02/2003"},
    {0, 52, "03/04/2005", 0, "General.DATE", "03/04/2005"}, {0, 75, 75.25F, 0, "General.CURRWAVE", "75.25"},
    {1, 0, 1000, 0, "wave.MINDUM", "1000"}, {2, 4, 2004, 0, "slit.MAXDUM", "2004"},
    {3, 8, 3008, 0, "filter.DELDUM", "3008"}, {4, 12, 4012, 0, "flipper.MINSTEPS", "4012"},
    {5, 16, 5016, 1.2, "slit.MAXSTEPS2", "5016"}, {1, 20, '\x02', 0, "wave.TURRET", "2"},
    {1, 21, '\x03', 1.1, "wave.NOGRATS", "3"}, {1, 30, 1030.5F, 1.1, "wave.GRATLINES3", "1030.5"},
    {1, 66, 1066, 1.1, "wave.GRATSTART3", "1066"}, {1, 90, 0.5F, 0, "wave.POLY5", "0.5"},
    {1, 98, 2.5F, 0, "wave.Linear", "0,2.5"}, {1, 134, 9.5F, 0, "wave.Quadratic3", "0,0,9.5"},
    {1, 138, 1138.5F, 1.1, "wave.SINPHASE", "1138.5"}, {1, 146, 1146.5F, 1.1, "wave.SINAMPLITUDE", "1146.5"},
    {1, 154, 1154, 1.1, "wave.HOLE1FINDMINDUM", "1154"}, {1, 194, 1194, 1.1, "wave.HOLE2FINDMAXDUM", "1194"},
    {1, 206, 1206, 1.1, "wave.HOLE2EDGEDIST", "1206"}, {1, 222, '\x16', 1.1, "wave.NOTURRETS", "22"},
    {1, 226, 1226, 1.4, "wave.DETOFFSET2", "1226"}, {2, 96, 12, 1.2, "slit.POLYSLIT22", "0,12"},
    {2, 128, '\x03', 1.1, "wave.NOGRATS2", "3"}, {2, 161, 2161, 1.1, "wave.GRATOFFSET23", "2161"},
    {2, 177, '\x02', 1.1, "wave.NOGRATS3", "2"}, {2, 182, 2182.5F, 1.1, "wave.GRATLINES32", "2182.5"},
    {3, 20, '\x14', 0, "filter.NOFILTS", "20"}, {3, 71, "Nine char", 0, "filter.LABEL6", "Nine char"},
    {3, 86, '\x56', 1.3, "filter.FILTER6SENSORBITS", "86"}, {3, 90, 3090, 1.3, "filter.FILTERRESETOFFSET", "3090"},
    {3, 114, 3114, 1.3, "filter.FILTER6DELTA", "3114"}, {4, 129, '\x1d', 1.1, "shutter.SHUTTERTYPE", "29"},
    {4, 142, '\x02', 1.1, "shutter.SHUTTERCUSTOMBGMODE", "2"},
    {4, 143, '\x03', 1.1, "shutter.SHUTTERCUSTOMAQMODE", "3"},
};

/// What a data file holds that has all of these, and since which version they are read.
const std::tuple<double, const char*, const char*> kFileTexts[] = {
    {0, "General.COMMADD", "16"}, {0, "General.IDSTRING", "MyMaker"}, {0, "General.FOCLEN", "0.5"},
    {0, "wave.POLY2", "0.0015"}, {0, "wave.Quadratic2", "1,2.5,3"}, {0, "wave.Linear", "0,1"},
    {0, "slit.POLYSLIT2", "800,2200"}, {0, "wave.TURRET", "1"}, {0, "wave.NOGRATS", "3"},
    {0, "filter.LABEL6", "SchottBG"}, {1.1, "wave.SINPHASE", "2.5"}, {1.1, "wave.HOLE1FINDMINDUM", "44"},
    {1.1, "wave.GRATBLAZE1", "1234"}, {1.1, "wave.GRATLINES23", "1200.5"}, {1.1, "shutter.SHUTTERMODE", "1"},
    {1.2, "General.CURRSLIT2", "77"}, {1.2, "slit.MAXSTEPS2", "12"}, {1.3, "filter.FILTER6SENSORBITS", "14"},
    {1.4, "wave.DETOFFSET2", "9"},
};
// clang-format on

/// An EEPROM of that structure version with a value at every place, and of the last blaze of turret 2 a number.
void Program(FakeLegacyInstrument& bus, const std::string& version) {
  bus.pages = {};
  bus.Put(0, 0, "\x10");
  bus.Put(0, 21, version.c_str());
  for (const Place& place : kPlaces) {
    std::visit([&](auto value) { bus.Put(place.page, place.offset, value); }, place.stored);
  }
  const bool five = version >= "3";
  bus.Put(1, 34, five ? "12345MIRR" : "1234MIRR");
  bus.Put(1, five ? 230 : 42, "500");
  bus.Put(2, five ? 235 : 149, 750.0F);
  bus.Put(2, five ? 195 : 194, "abcd");
}

/// What the data file would hold of these values: every key in its order, and the texts of "section.key".
struct Keys {
  std::string inOrder;
  std::map<std::string, std::string> texts;
};

Keys KeysOf(Values values) {
  const TivanLocale locale;
  Keys keys;
  std::string current;
  corvane::WriteProfileKeys(values, [&](const std::string& section, const std::string& key, const std::string& text) {
    keys.inOrder += (current == section ? "" : "[" + section + "] ") + key + "=" + text + " ";
    keys.texts[section + "." + key] = text;
    current = section;
  });
  return keys;
}

TEST(EECorvData, ReadsWhatItsVersionHoldsAndWritesEveryField) {
  FakeLegacyInstrument bus;
  const auto fresh = KeysOf(Values()).texts;
  for (const char* const version : {"1.0", "1.1", "1.2", "1.3", "1.4", "2.9", "3.0"}) {
    SCOPED_TRACE(version);
    Program(bus, version);
    EECorvData record(&bus, false);
    ASSERT_EQ(record.ReadFromEEPROM(), 0);
    const double number = std::stod(version);
    const auto read = KeysOf(record.values).texts;
    for (const Place& each : kPlaces) {
      EXPECT_EQ(read.at(each.key), each.since <= number ? each.text : fresh.at(each.key)) << each.key;
    }
    std::string blazes;
    for (const char* const key : {"1", "2", "3", "23", "32"}) {
      blazes += read.at(std::string("wave.GRATBLAZE") + key) + " ";
    }
    EXPECT_EQ(blazes, number < 1.1   ? "600 600 600 600 600 "
                      : number < 3.0 ? "1234 MIRR 500 750 abcd "
                                     : "12345 MIRR 500 750 abcd ");

    // Written as the latest layout whatever the version, which only says how long blazes are. What an old instrument
    // kept as a number comes back as a text.
    bus.Put(2, number >= 3.0 ? 235 : 149, 0x00303537);
    const auto image = bus.pages;
    Program(bus, "3.0");
    ASSERT_EQ(record.ReadFromEEPROM(), 0);
    record.SetStructureVersionInfo(version);
    bus.pages = {};
    bus.writeMode = false;
    ASSERT_EQ(record.WriteToEEPROM(), 0);
    for (std::size_t page = 0; page < image.size(); ++page) {
      EXPECT_EQ(bus.pages[page], image[page]) << page;
    }
  }
}

TEST(EECorvData, RefusesForeignAndNewerRecordsButNotUnclearVersions) {
  FakeLegacyInstrument bus;
  // Versions that are none leave the numbers as they are, and reading goes on.
  const std::tuple<const char*, std::string, int> cases[] = {
      {"\x10", "3.1", 2},  {"\x10", "4.0", 2},         {"\x63", "3.0", 1}, {"\xFF", "3.0", 1},
      {"\x10", "3.0 ", 0}, {"\x10", "1.0\xFF\xFF", 0}, {"\x10", "none", 0}};
  for (const auto& [first, version, result] : cases) {
    SCOPED_TRACE(version);
    Program(bus, version);
    bus.Put(0, 0, first);
    bus.Put(1, 20, "\x07\xFF");
    EECorvData record(&bus, false);
    EXPECT_EQ(record.ReadFromEEPROM(), result);
    EXPECT_EQ(record.values.commAdd, 16);
    EXPECT_EQ(record.values.structureMajor, version == "4.0" ? 4 : 3);
    EXPECT_EQ(record.values.loadedFromEeprom, result == 0);
    EXPECT_EQ(record.values.detectorOffset[1], result == 0 ? 1226 : 0);
    EXPECT_EQ(record.values.turret, 1);
    EXPECT_EQ(record.values.turrets[0].numberOfGratings, 3);
  }
}

TEST(EECorvData, ReportsEveryFailedTransferAndEndsWithIt) {
  FakeLegacyInstrument bus;
  EECorvData record(&bus, false);
  const auto run = [&](int failing) {
    bus.failingTransfer = failing;
    bus.answers = bus.kAlways;
    for (int step = 0; step <= 99; ++step) {
      record.Execute(step);
    }
    return record.GetTaskError();
  };
  for (const int mode : {EECorvData::kReadTask, EECorvData::kWriteTask}) {
    record.SetTaskMode(mode);
    ASSERT_EQ(run(0), 0);
    for (int n = bus.kAlways - bus.answers; n > 0; n -= mode == EECorvData::kReadTask ? 1 : 7) {
      ASSERT_EQ(run(n), 1) << n;
      EXPECT_EQ(bus.kAlways - bus.answers, n);
      bus.failingTransfer = n;
      EXPECT_EQ(mode == EECorvData::kReadTask ? record.ReadFromEEPROM() : record.WriteToEEPROM(), 1) << n;
    }
  }
  EXPECT_EQ(record.Execute(0) + record.GetTaskError(), 0) << "The first step clears the error.";
}

TEST(EECorvData, MovesSingleValuesWhereTheyLie) {
  FakeLegacyInstrument bus;
  EECorvData record(&bus, false);
  EXPECT_EQ(record.StoreValue({corvane::CorvField::kCurrentWave}), 0);
  EXPECT_EQ(bus.writes, 0) << "The values did not come from this EEPROM.";
  ASSERT_EQ(record.ReadFromEEPROM(), 0);
  record.values.turrets[2].gratings[2].offset = -1;
  bus.writeMode = false;
  EXPECT_EQ(record.StoreValue({corvane::CorvField::kGratingOffset, 8}), 0);
  EXPECT_EQ(record.WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F), 0);
  EXPECT_EQ(record.WriteSlitCoefficients(1, -2, 3, 4), 0);
  EXPECT_EQ(bus.writes, 8 * 4);
  EXPECT_EQ(bus.Number<int>(2, 210), -1);
  EXPECT_EQ((bus.Number<std::array<float, 3>>(0, 63)), (std::array{1.0F, 2.0F, 3.0F}));
  EXPECT_EQ((bus.Number<std::array<int, 4>>(2, 20)), (std::array{1, -2, 3, 4}));
  bus.Put(0, 63, 5.0F);
  float length = 0.0F;
  bus.failingTransfer = 12;
  EXPECT_EQ(record.ReadOpticalParamsFromEEPROM(&length, nullptr, nullptr), 1);
  EXPECT_EQ(length + record.values.focalLength, 1.0F) << "all three or none";
}

TEST(EECorvData, VerifiesWhatItWritesAndReadsNumbersForBlazes) {
  FakeLegacyInstrument bus;
  EECorvData record(&bus, false);
  // A text longer than its field is cut, and what is left has to be read back; registers go on at 0.
  EXPECT_EQ(record.Bus().WriteString("abcdef", 4, 0x68, 254), 0);
  EXPECT_EQ(record.Bus().WriteString("x", 3, 0x69, 200), 0);
  EXPECT_EQ((std::string{char(bus.pages[0][255]), char(bus.pages[0][1]), char(bus.pages[0][2])}), "bdi");
  EXPECT_EQ(record.Bus().WriteFloat(std::numeric_limits<float>::quiet_NaN(), 0x68, 71), 1) << "No number equals it.";
  bus.writeMode = false;
  EXPECT_EQ(record.Bus().WriteString("abcx", 4, 0x68, 254), 1);
  EXPECT_EQ(record.Bus().WriteInt(1, 0x69, 0) + record.Bus().WriteByte(17, 0x68, 0), 2);
  // Blazes that old instruments stored as numbers, which a first byte of zero tells.
  for (const auto& [number, text] : {std::pair{500.9F, "500"}, {0.0F, ""}, {150000.0F, ""}, {NAN, ""}, {-500.0F, ""}}) {
    char read[corvane::LegacyBus::kBlazeSlot] = "x";
    bus.Put(1, 200, number);
    bus.Put(1, 200, std::uint8_t{0});
    ASSERT_EQ(record.Bus().ReadBlaze(read, 4, 0x69, 200), 0);
    EXPECT_STREQ(read, text);
  }
}

TEST(EECorvData, MovesAndWaitsForMotors) {
  using corvane::MoveMode;
  FakeLegacyInstrument bus;
  EECorvData record(&bus, false);
  ASSERT_EQ(record.Bus().StartRampedMove(0x10, {3, true, true, MoveMode::kStopAtEdge, 0x010203, {1, 256, 480000}}), 0);
  EXPECT_EQ(bus.lastMove, (std::vector<std::uint8_t>{3, 0x23, 3, 2, 1, 1, 0, 0, 0, 1, 0, 0, 0x53, 7}));
  bus.busyPolls = 5;
  ASSERT_EQ(record.Bus().StartRampedMove(0x10, {1, true, true, MoveMode::kPlain, 1, {}}), 0);
  // Bits of another motor do not count.
  const int polls[][3] = {{1, 0x03, 0}, {0, 0x1C, 0}, {4, 0x04, 1}, {2, 0x02, 1}};
  for (const auto& [motor, bits, moving] : polls) {
    bus.busyBits = static_cast<std::uint8_t>(bits);
    EXPECT_EQ(record.Bus().EngineMoving(motor), moving) << motor;
  }
  for (const auto& [motor, steps] : {std::pair{0, -1}, {0, 0x1000000}, {5, 1}}) {
    EXPECT_EQ(record.Bus().StartRampedMove(0x10, {motor, true, true, MoveMode::kPlain, steps, {}}), 1);
  }

  // Older controllers are told the register first, and have another one behind a USB camera.
  bus.fpga = 22;
  record.Bus().SetControl(&bus, true);
  bus.busyRegister = 0xC4;
  ASSERT_EQ(record.Bus().StartRampedMove(0x10, {0, true, true, MoveMode::kPlain, 1, {}}), 0);
  EXPECT_EQ(record.Bus().EngineMoving(2), 1);
  record.Bus().SetControl(&bus, false);
  EXPECT_EQ(bus.TakeStatus(), (std::vector<std::string>{"0=196", "0=199"}));

  bus.answers = 0;
  const std::uint64_t before = bus.time.Slept();
  EXPECT_EQ(record.Bus().WaitForStandstill(0), 1) << "A dead bus is not waited for.";
  EXPECT_LE(bus.time.Slept() - before, 1'000'000U);
}

TEST(EECorvDataFile, HoldsEveryKeyInOrderAndHasDefaultsOfItsOwn) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.IsInForce());
  const TemporaryDirectory directory;
  std::string path = directory.Write("legacy.ini",
                                     "[General]\nSVERNO=3.0\n[filter]\nNOFILTS=2\n"
                                     "[wave]\nNOGRATS=1\nNOGRATS2=2\nNOGRATS3=1\n");
  path.resize(240);
  EECorvData record(nullptr, false);
  ASSERT_EQ(record.ReadFromFile(path.data()), 0);
  const std::string general =
      "IDSTRING=Tivan Technology IVERNO=PP004 DOM=01/01/2001 DATE=02/02/2002 FOCLEN=0.25736 ANGDEV=11.83 FOCTLT=6.7 "
      "CURRFILT=0 CURRMIR=0 CURRWAVE=0 CURRSLIT=0 CURRSLIT2=0 ";
  const std::string rest =
      "[wave] MINDUM=5000 MAXDUM=80000 DELDUM=1000 MINSTEPS=0 MAXSTEPS=480000 [slit] MINDUM=40000 MAXDUM=80000 "
      "DELDUM=1000 MINSTEPS=0 MAXSTEPS=1000 MINDUM2=40000 MAXDUM2=80000 DELDUM2=1000 MINSTEPS2=0 MAXSTEPS2=1000 "
      "[filter] MINDUM=20000 MAXDUM=30000 DELDUM=1000 MINSTEPS=0 MAXSTEPS=4800 [flipper] MINDUM=100000 MAXDUM=100000 "
      "DELDUM=1000 MINSTEPS=0 MAXSTEPS=80 [wave] DETOFFSET=192 DETOFFSET2=0 TURRET=1 POLY1=0 POLY2=0 POLY3=0 POLY4=0 "
      "POLY5=0 Linear=0,1 Quadratic1=0,0,0 Quadratic2=0,0,0 Quadratic3=0,0,0 SINPHASE=0.812 SINFREQUENCY=2000 "
      "SINAMPLITUDE=0 HOLE1FINDDIST=480000 HOLE1FINDMAXDUM=80000 HOLE1FINDMINDUM=4000 HOLE1FINDDELTA=1000 "
      "HOLE1INTODIST=1000 HOLE1EDGEDIST=5000 HOLE1EDGEMAXDUM=80000 HOLE1EDGEMINDUM=5000 HOLE1EDGEDELTA=1000 "
      "HOLE2FINDDIST=3000 HOLE2FINDMAXDUM=80000 HOLE2FINDMINDUM=10000 HOLE2FINDDELTA=1000 HOLE2INTODIST=10 "
      "HOLE2EDGEDIST=2000 HOLE2EDGEMAXDUM=400000 HOLE2EDGEMINDUM=400000 HOLE2EDGEDELTA=1000 [slit] POLYSLIT1=-80,10 "
      "POLYSLIT2=800,2200 POLYSLIT12=-80,10 POLYSLIT22=800,2200 [filter] NOFILTS=2 LABEL1=label LABEL2=label "
      "FILTERRESETOFFSET=160 FILTER1SENSORBITS=4 FILTER2SENSORBITS=12 FILTER1DELTA=0 FILTER2DELTA=800 [shutter] "
      "SHUTTERMODE=0 SHUTTERTYPE=1 SHUTTERCUSTOMBGMODE=3 SHUTTERCUSTOMAQMODE=0 SHUTTEROPENTIME=20 "
      "SHUTTERCLOSETIME=20 SHUTTERFREQLIMIT=10 [wave] NOTURRETS=3 NOGRATS=1 NOGRATS2=2 NOGRATS3=1 GRATLINES1=300 "
      "GRATLINES21=300 GRATLINES22=300 GRATLINES31=300 GRATBLAZE1=300 GRATBLAZE21=300 GRATBLAZE22=300 "
      "GRATBLAZE31=300 GRATOFFSET1=0 GRATOFFSET21=0 GRATOFFSET22=0 GRATOFFSET31=0 GRATSTART1=0 GRATSTART21=0 "
      "GRATSTART22=0 GRATSTART31=0 ";
  EXPECT_EQ(KeysOf(record.values).inOrder, "[General] COMMADD=16 SVERNO=3.0 " + general + rest);
  record.SetStructureVersionInfo("1.0");
  EXPECT_EQ(KeysOf(record.values).inOrder, "[General] COMMADD=16 SVERNO=1.0 " + general + rest)
      << "All, whatever the version.";
  EXPECT_EQ(record.WriteToFile(path.data()), 0);
  const std::string fresh = KeysOf(Values()).inOrder;
  for (const char* const key : {"IVERNO=PP001", "CURRFILT=1", "CURRWAVE=703.241", "CURRSLIT=25",
                                "MAXSTEPS=4800 MINDUM2=40000", "MAXSTEPS2=4800 [filter]", "NOTURRETS=1",
                                "GRATBLAZE1=600", "GRATSTART1=1 GRATSTART2=160000 GRATSTART3=320000"}) {
    EXPECT_NE(fresh.find(std::string(" ") + key + " "), std::string::npos) << key;
  }
}

TEST(EECorvDataFile, ReadsTheKeysOfItsVersion) {
  const CommaLocale comma;
  const TemporaryDirectory directory;
  const std::string body =
      "COMMADD=99\nIDSTRING = My Maker\nFOCLEN = 0.5\nCURRSLIT2=77\n[wave]\nTURRET=7\nNOGRATS=0\nGRATBLAZE1=12345\n"
      "GRATLINES23=1200.5\nLinear=5\nPOLY2=1.5e-3\nSINPHASE=2.5\nDETOFFSET2=9\nHOLE1FINDMINDUM=44\n"
      "Quadratic2=1,2.5,3\n[slit]\nPOLYSLIT1=-100,50\nPOLYSLIT2=7\nPOLYSLIT22=300,450\nMAXSTEPS2=12\n"
      "[filter]\nNOFILTS=9\nLABEL6=Schott BG\nFILTER6SENSORBITS=14\n[shutter]\nSHUTTERMODE=1\n";
  const auto fresh = KeysOf(Values()).texts;
  for (const char* const version : {"1.0", "1.1", "1.2", "1.3", "1.4", "2.9", "3.0"}) {
    SCOPED_TRACE(version);
    std::string path = directory.Write("legacy.ini", std::string("[general]\nSVERNO=") + version + "\n" + body);
    path.resize(240);
    EECorvData record(nullptr, false);
    ASSERT_EQ(record.ReadFromFile(path.data()), 0);
    const double number = std::stod(std::string(version).replace(1, 1, ","));
    const auto read = KeysOf(record.values).texts;
    for (const auto& [since, key, text] : kFileTexts) {
      EXPECT_EQ(read.at(key), since <= number ? text : fresh.at(key)) << key;
    }
    const auto& slits = record.values.slits;
    EXPECT_FLOAT_EQ(slits[0].c1, 900.0F / 2150.0F);
    EXPECT_FLOAT_EQ(slits[0].c0, -260000.0F / 2150.0F);
    EXPECT_FLOAT_EQ(slits[1].c1, number < 1.2 ? 880.0F / 2190.0F : 380.0F / 440.0F);
    EXPECT_FLOAT_EQ(slits[1].c0, number < 1.2 ? -184000.0F / 2190.0F : -39000.0F / 440.0F);
  }
}

TEST(EECorvDataFile, IsTheSourceUntilTheEepromIsRead) {
  struct Listener final : corvane::IEECorvDataListener {
    void OnDataLoaded(EECorvData* /*record*/) override { ++loads; }
    int loads = 0;
  } listener;
  const TemporaryDirectory directory;
  std::string path = directory.Write("legacy.ini", "");
  const std::string resolved = path;
  path.resize(240);
  FakeLegacyInstrument bus;
  EECorvData record(&bus, false);
  record.SetListener(&listener);
  for (const int loads : {2, 4}) {
    ASSERT_EQ(record.ReadFromFile(path.data()), 0);
    EXPECT_TRUE(record.values.loadedFromFile && !record.values.loadedFromEeprom);
    EXPECT_EQ(record.values.sourcePath, resolved);
    ASSERT_EQ(record.ReadFromEEPROM(), 0);
    EXPECT_TRUE(!record.values.loadedFromFile && record.values.loadedFromEeprom);
    EXPECT_EQ(record.values.sourcePath, "");
    EXPECT_EQ(listener.loads, loads);
  }
}

TEST(EECorvDataFile, ResolvesPaths) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.Path() / "run");
  const ScopedWorkingDirectory in(directory.Path() / "run");
  const std::string parent = std::filesystem::current_path().parent_path().string() + "/";
  EXPECT_EQ(EECorvData::ResolvePath("/a.b/c"), "/a.b/c.ini");
  EXPECT_EQ(EECorvData::ResolvePath("sub/"), "sub/spectrograph.ini");
  EXPECT_EQ(EECorvData::ResolvePath("other.dat"), parent + "other.dat");
  EXPECT_EQ(EECorvData::ResolvePath(""), parent + "spectrograph.ini");
  EXPECT_EQ(EECorvData::ResolvePath(nullptr), parent + "run/spectrograph.ini");
  std::string path(500, 'a');
  EECorvData record(nullptr, false);
  EXPECT_EQ(record.ReadFromFile(path.data()), 0);
  EXPECT_EQ(path, std::string(500, 'a'));
}

TEST(EECorvDataConversions, TakesWavelengthsToSteps) {
  EECorvData record(nullptr, false);
  Values& values = record.values;
  values.polynomial = {1e-15F, -2e-12F, 3e-9F, 0.0005F, 0.001F};
  values.sinAmplitude = 30.5F;
  values.detectorOffset = {192, -40};
  values.turret = 2;
  values.turrets[1].gratings = {{{1200.0F, "", 17, 1}, {300.0F, "", -250, 160000}, {300.0F, "", 0, 320000}}};
  // Computed apart from the library: wavelength, grating, detector offset; steps before structure 2 and from there on.
  using Case = std::tuple<float, int, int, int, int>;
  const Case cases[] = {{500.0F, 1, 0, 19611, 19647},  {703.25F, 2, 1, 166511, 166498},
                        {1.0F, 3, 0, 320305, 320248},  {-3.0F, 1, 0, 210, 142},
                        {1400.0F, 1, 0, 60013, 59985}, {2500.0F, 1, 0, 1, 1},
                        {0.0F, 1, 0, 210, 210},        {500.0F, 0, 0, 1, 1},
                        {500.0F, 1, 2, 1, 1}};
  for (const auto& [wavelength, grating, detector, older, newer] : cases) {
    for (const int version : {1, 2, 3}) {
      values.structureMajor = version;
      EXPECT_EQ(record.ConvertWaveToSteps(wavelength, grating, detector), version == 1 ? older : newer) << wavelength;
    }
  }
  EXPECT_EQ(record.GetActualWavelength(1e9F, 2, 1), 1e9F);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  // Zero order needs no angle, but a polynomial above 1 comes first.
  for (const auto& [constant, atZero] : {std::pair{-1.5F, 210}, {nan, 210}, {1.5F, EECorvData::kOutOfReach}}) {
    values.polynomial[4] = constant;
    EXPECT_EQ(record.ConvertWaveToSteps(0.0F, 1, 0), atZero) << constant;
    EXPECT_EQ(record.ConvertWaveToSteps(1.0F, 1, 0), EECorvData::kOutOfReach) << constant;
  }
  values.polynomial = {};
  EXPECT_EQ(record.GetActualWavelength(500.006F, 1, 0), 500.01F) << "A flat conversion has no band.";
  values.sinFrequency = 0.0F;
  EXPECT_EQ(record.ConvertWaveToSteps(500.0F, 1, 0), 210);
  values.turrets[1].gratings[0].lines = nan;
  EXPECT_EQ(record.ConvertWaveToSteps(500.0F, 1, 0), EECorvData::kOutOfReach);
}

TEST(EECorvDataConversions, ActualWavelengthIsTheCentreOfAStepsBand) {
  EECorvData record(nullptr, false);
  record.values.polynomial[3] = 1.0F / 2400.0F;
  record.values.turrets[0].gratings[0].lines = 12.0F;  // steps of 3.14 nm
  // Computed apart from the library: wavelengths outside the band are 497.94 and 501.09, then 501.08 and 504.23.
  EXPECT_NEAR(record.GetActualWavelength(500.0F, 1, 0), 499.515F, 0.006F);
  EXPECT_NEAR(record.GetActualWavelength(501.3F, 1, 0), 502.655F, 0.006F);
  EXPECT_EQ(record.GetActualWavelength(0.0F, 1, 0), 0.0F);
}

TEST(EECorvDataConversions, TakesSlitWidthsToSteps) {
  EECorvData record(nullptr, false);
  EXPECT_EQ(record.ConvertSlitToSteps(0, 10.0F), -80);
  EXPECT_EQ(record.ConvertSlitToSteps(1, 2200.0F), 800);
  EXPECT_NEAR(record.ConvertStepsToSlit(1, 800), 2200.0F, 0.01F);
  record.values.slits[0] = {{}, 0.5F, 1.0F, -4.0F};
  EXPECT_FLOAT_EQ(record.ConvertStepsToSlit(0, 0), 2.0F);
  record.values.slits[0] = {{}, 0.5F, 1.0F, 4.0F};
  EXPECT_EQ(record.ConvertStepsToSlit(0, 0), 0.0F) << "No real width.";
  record.values.slits[1].points = {{{std::numeric_limits<int>::min(), -2}, {1, std::numeric_limits<int>::max()}}};
  corvane::DeriveSlitCoefficients(record.values.slits[1]);
  EXPECT_TRUE(std::isfinite(record.values.slits[1].c0));
  for (const float width : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 3e38F}) {
    EXPECT_EQ(record.ConvertSlitToSteps(1, width), 0);
    EXPECT_FALSE(record.SlitConverts(1, width));
  }
  EXPECT_EQ(record.ConvertSlitToSteps(2, 10.0F), 0);
}

TEST(SplitVersionString, TakesDigitsAroundThePoint) {
  const std::pair<const char*, const char*> cases[] = {
      {"2.9", "2.9"}, {"1.08", "1.0"}, {"3.017b", "3.15"}, {"99999999999999999999.1", "2147483647.1"},
      {"3", "none"},  {"a.1", "none"}, {"1.2.3", "none"},  {"1.2 ", "none"}};
  for (const auto& [text, expected] : cases) {
    std::int32_t first = -1;
    std::int32_t second = -1;
    const bool splits = SplitVersionString(text, &first, &second) == 1;
    EXPECT_EQ(splits ? std::to_string(first) + "." + std::to_string(second) : "none", expected) << text;
    EXPECT_TRUE(splits || (first == -1 && second == -1)) << text;
  }
}

}  // namespace
