#include "legacy/EECorvData.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <variant>
#include <vector>

#include "legacy/CorvDataKeys.h"
#include "platform/TivanLocale.h"
#include "support/CommaLocale.h"
#include "support/SimulatedLegacyBus.h"
#include "support/TemporaryDirectory.h"

namespace {

using Values = corvane::CorvDataValues;
using corvane::CorvField;
using corvane::legacy::kBeyondLimits;
using corvane::legacy::kFailure;
using corvane::legacy::kSuccess;

constexpr const char* kVersions[] = {"1.0", "1.1", "1.2", "1.3", "1.4", "2.9", "3.0"};
constexpr std::size_t kPathSize = 240;
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

/// What stands at a place of the pages since a structure version, written down apart from the library's own table; the
/// data file's name for it, and the file's text where that holds more than the value.
struct StoredValue {
  int page;
  int offset;
  std::variant<int, char, float, const char*> value;
  double since;
  std::string key;
  std::string list = {};
};

// clang-format off
const StoredValue kStored[] = {
    {0, 1, "A twenty letter text", 0, "General.IDSTRING"}, {0, 31, "PP12345678", 0, "General.IVERNO"},
    {0, 41, "01/02/2003", 0, "General.DOM"}, {0, 52, "03/04/2005", 0, "General.DATE"},
    {0, 63, 63.25F, 0, "General.FOCLEN"}, {0, 67, 67.25F, 0, "General.ANGDEV"}, {0, 71, 71.25F, 0, "General.FOCTLT"},
    {0, 75, 75.25F, 0, "General.CURRWAVE"}, {0, 79, 79.25F, 0, "General.CURRSLIT"}, {0, 83, 83, 0, "General.CURRFILT"},
    {0, 87, 87, 0, "General.CURRMIR"}, {0, 99, 99.25F, 1.2, "General.CURRSLIT2"},

    {1, 0, 1000, 0, "wave.MINDUM"}, {2, 4, 2004, 0, "slit.MAXDUM"}, {3, 8, 3008, 0, "filter.DELDUM"},
    {4, 12, 4012, 0, "flipper.MINSTEPS"}, {5, 16, 5016, 1.2, "slit.MAXSTEPS2"},

    {1, 20, '\x02', 0, "wave.TURRET"}, {1, 21, '\x03', 1.1, "wave.NOGRATS"}, {1, 30, 1030.5F, 1.1, "wave.GRATLINES3"},
    {1, 50, 1050, 1.1, "wave.GRATOFFSET2"}, {1, 66, 1066, 1.1, "wave.GRATSTART3"}, {1, 70, 1070, 0, "wave.DETOFFSET"},
    {1, 90, 0.5F, 0, "wave.POLY5"}, {1, 98, 2.5F, 0, "wave.Linear", "0,2.5"},
    {1, 134, 9.5F, 0, "wave.Quadratic3", "0,0,9.5"}, {1, 138, 1138.5F, 1.1, "wave.SINPHASE"},
    {1, 142, 1142.5F, 1.1, "wave.SINFREQUENCY"}, {1, 146, 1146.5F, 1.1, "wave.SINAMPLITUDE"},
    {1, 154, 1154, 1.1, "wave.HOLE1FINDMINDUM"}, {1, 194, 1194, 1.1, "wave.HOLE2FINDMAXDUM"},
    {1, 206, 1206, 1.1, "wave.HOLE2EDGEDIST"}, {1, 222, '\x16', 1.1, "wave.NOTURRETS"},
    {1, 226, 1226, 1.4, "wave.DETOFFSET2"},

    {2, 20, 2020, 0, "slit.POLYSLIT1", "2020,0"}, {2, 32, 32, 0, "slit.POLYSLIT2", "0,32"},
    {2, 84, 2084, 1.2, "slit.POLYSLIT12", "2084,0"}, {2, 96, 12, 1.2, "slit.POLYSLIT22", "0,12"},
    {2, 128, '\x03', 1.1, "wave.NOGRATS2"}, {2, 133, 2133.5F, 1.1, "wave.GRATLINES22"},
    {2, 161, 2161, 1.1, "wave.GRATOFFSET23"}, {2, 165, 2165, 1.1, "wave.GRATSTART21"},
    {2, 177, '\x02', 1.1, "wave.NOGRATS3"}, {2, 182, 2182.5F, 1.1, "wave.GRATLINES32"},
    {2, 206, 2206, 1.1, "wave.GRATOFFSET32"}, {2, 218, 2218, 1.1, "wave.GRATSTART32"},

    {3, 20, '\x14', 0, "filter.NOFILTS"}, {3, 71, "Nine char", 0, "filter.LABEL6"},
    {3, 86, '\x56', 1.3, "filter.FILTER6SENSORBITS"}, {3, 90, 3090, 1.3, "filter.FILTERRESETOFFSET"},
    {3, 114, 3114, 1.3, "filter.FILTER6DELTA"},

    {4, 128, '\x1c', 1.1, "shutter.SHUTTERMODE"}, {4, 129, '\x1d', 1.1, "shutter.SHUTTERTYPE"},
    {4, 130, 4130.5F, 1.1, "shutter.SHUTTEROPENTIME"}, {4, 134, 4134.5F, 1.1, "shutter.SHUTTERCLOSETIME"},
    {4, 138, 4138.5F, 1.1, "shutter.SHUTTERFREQLIMIT"}, {4, 142, '\x02', 1.1, "shutter.SHUTTERCUSTOMBGMODE"},
    {4, 143, '\x03', 1.1, "shutter.SHUTTERCUSTOMAQMODE"},
};

// clang-format on

template <typename Value>
std::string Bytes(Value value) {
  if constexpr (std::is_same_v<Value, const char*>) {
    return value;
  } else {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
  }
}

/// As a data file has it.
std::string TextOf(const StoredValue& stored) {
  std::ostringstream text;
  if (const char* const byte = std::get_if<char>(&stored.value)) {
    text << int{*byte};
  } else {
    std::visit([&text](auto value) { text << value; }, stored.value);
  }
  return stored.list.empty() ? text.str() : stored.list;
}

corvane::sim::LegacyDescription BlankEeprom() {
  corvane::sim::LegacyDescription description = corvane::sim::DefaultLegacy();
  description.memoryPatches.push_back(
      {0, 0, std::vector<unsigned char>(std::size_t{corvane::sim::kLegacyPages} * corvane::sim::kLegacyPageSize)});
  return description;
}

/// An EEPROM of that structure version with a value at every place, zeros elsewhere, and of the last blaze of turret 2
/// a number.
corvane::sim::LegacyDescription Programmed(const std::string& version) {
  corvane::sim::LegacyDescription description = BlankEeprom();
  const auto put = [&description](int page, int offset, const std::string& bytes) {
    description.memoryPatches.push_back({page, offset, {bytes.begin(), bytes.end()}});
  };
  put(0, 0, "\x10");
  put(0, 21, version);
  for (const StoredValue& stored : kStored) {
    std::visit([&](auto value) { put(stored.page, stored.offset, Bytes(value)); }, stored.value);
  }
  const bool five = version >= "3";
  put(1, 34, five ? "12345MIRR" : "1234MIRR");
  put(1, five ? 230 : 42, "500");
  put(2, five ? 235 : 149, Bytes(750.0F));
  put(2, five ? 195 : 194, "abcd");
  return description;
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

/// What a data file gives.
Values ReadFile(const std::string& contents) {
  const TemporaryDirectory directory;
  std::string path = directory.Write("legacy.ini", contents);
  path.resize(kPathSize);
  EECorvData record(nullptr, false);
  EXPECT_EQ(record.ReadFromFile(path.data()), kSuccess);
  return record.values;
}

class EECorvDataOfVersion : public testing::TestWithParam<const char*> {};

TEST_P(EECorvDataOfVersion, ReadsWhatItsVersionHolds) {
  SimulatedLegacyBus bus(Programmed(GetParam()));
  EECorvData record(&bus, false);
  ASSERT_EQ(record.ReadFromEEPROM(), kSuccess);
  EXPECT_EQ(bus.Writes(), 0U);
  const double version = std::stod(GetParam());
  const auto read = KeysOf(record.values).texts;
  const auto fresh = KeysOf(Values()).texts;
  for (const StoredValue& stored : kStored) {
    EXPECT_EQ(read.at(stored.key), stored.since <= version ? TextOf(stored) : fresh.at(stored.key)) << stored.key;
  }
  std::string blazes;
  for (const char* const key : {"1", "2", "3", "23", "32"}) {
    blazes += read.at(std::string("wave.GRATBLAZE") + key) + " ";
  }
  EXPECT_EQ(blazes, version < 1.1   ? "600 600 600 600 600 "
                    : version < 3.0 ? "1234 MIRR 500 750 abcd "
                                    : "12345 MIRR 500 750 abcd ");
}

TEST_P(EECorvDataOfVersion, WritesEveryFieldOfTheLatestLayout) {
  const std::string version = GetParam();
  // Only the blazes follow the version, which says how long they are. A number comes back as a text.
  corvane::sim::LegacyDescription expected = Programmed(version);
  expected.memoryPatches.push_back({2, version >= "3" ? 235 : 149, {'7', '5', '0', '\0'}});
  SimulatedLegacyBus source(Programmed("3.0"));
  EECorvData record(&source, false);
  ASSERT_EQ(record.ReadFromEEPROM(), kSuccess);
  record.SetStructureVersionInfo(version.c_str());

  SimulatedLegacyBus blank(BlankEeprom());
  record.Bus().SetControl(&blank, false);
  ASSERT_EQ(record.WriteToEEPROM(), kSuccess);
  const SimulatedLegacyBus image(expected);
  for (int page = 0; page < corvane::sim::kLegacyPages; ++page) {
    EXPECT_EQ(blank.Bytes(page, 0, corvane::sim::kLegacyPageSize), image.Bytes(page, 0, corvane::sim::kLegacyPageSize))
        << page;
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, EECorvDataOfVersion, testing::ValuesIn(kVersions));

TEST(EECorvData, RefusesForeignAndNewerRecordsButNotUnclearVersions) {
  const struct {
    std::string version;
    int result;
    unsigned char mark;
  } cases[] = {
      {"3.1", kBeyondLimits, 0x10},
      {"4.0", kBeyondLimits, 0x10},
      {"3.0", kFailure, 0x63},
      {"3.0", kFailure, 0xFF},
      // Versions that are none leave the numbers as they are, and reading goes on.
      {"3.0 ", kSuccess, 0x10},
      {"1.0\xFF\xFF", kSuccess, 0x10},
      {"none", kSuccess, 0x10},
  };
  for (const auto& [version, result, mark] : cases) {
    SCOPED_TRACE(version);
    corvane::sim::LegacyDescription description = Programmed(version);
    description.memoryPatches.push_back({0, 0, {mark}});
    description.memoryPatches.push_back({1, 20, {7, 0xFF}});
    SimulatedLegacyBus bus(description);
    EECorvData record(&bus, false);
    EXPECT_EQ(record.ReadFromEEPROM(), result);
    EXPECT_EQ(record.values.commAdd, 16);
    EXPECT_EQ(record.values.structureMajor, version == "4.0" ? 4 : 3);
    EXPECT_EQ(record.values.loadedFromEeprom, result == kSuccess);
    EXPECT_EQ(record.values.detectorOffset[1], result == kSuccess ? 1226 : 0);
    EXPECT_EQ(record.values.turret, 1);
    EXPECT_EQ(record.values.turrets[0].numberOfGratings, 3);
  }
}

TEST(EECorvData, ReportsEveryFailedTransferAndEndsWithIt) {
  SimulatedLegacyBus bus;
  EECorvData record(&bus, false);
  const auto run = [&](int failing) {
    bus.TakeTransfers();
    bus.failingTransfer = failing;
    for (int step = 0; step <= 99; ++step) {
      record.Execute(step);
    }
    return record.GetTaskError();
  };
  for (const auto& [mode, stride] : {std::pair{EECorvData::kReadTask, 1}, {EECorvData::kWriteTask, 7}}) {
    record.SetTaskMode(mode);
    ASSERT_EQ(run(0), kSuccess);
    for (int n = bus.TakeTransfers(); n > 0; n -= stride) {
      ASSERT_EQ(run(n), kFailure) << n;
      EXPECT_EQ(bus.TakeTransfers(), n);
      bus.failingTransfer = n;
      EXPECT_EQ(mode == EECorvData::kReadTask ? record.ReadFromEEPROM() : record.WriteToEEPROM(), kFailure) << n;
    }
  }
  EXPECT_EQ(record.Execute(0), kSuccess) << "The first step clears the error.";
  EXPECT_EQ(record.GetTaskError(), kSuccess);
}

TEST(EECorvData, StoresSingleValuesWhereTheyLie) {
  SimulatedLegacyBus bus;
  EECorvData record(&bus, false);
  EXPECT_EQ(record.StoreValue({CorvField::kCurrentWave}), kSuccess);
  EXPECT_EQ(bus.Writes(), 0U) << "The values did not come from this EEPROM.";
  ASSERT_EQ(record.ReadFromEEPROM(), kSuccess);
  record.values.turrets[2].gratings[2].offset = -1;
  bus.SetWriteMode(false);
  EXPECT_EQ(record.StoreValue(corvane::OfTurret(2, CorvField::kGratingOffset)[2]), kSuccess);
  EXPECT_EQ(bus.Stored<int>(2, 210), -1);
  EXPECT_EQ(record.WriteOpticalParamsToEEPROM(1.0F, 2.0F, 3.0F), kSuccess);
  EXPECT_EQ((bus.Stored<std::array<float, 3>>(0, 63)), (std::array{1.0F, 2.0F, 3.0F}));
  EXPECT_EQ(record.WriteSlitCoefficients(1, -2, 3, 4), kSuccess);
  EXPECT_EQ((bus.Stored<std::array<int, 4>>(2, 20)), (std::array{1, -2, 3, 4}));
  EXPECT_EQ(bus.Writes(), 8U * sizeof(int));

  bus.Program(0, 63, Bytes(5.0F));
  float length = 0.0F;
  bus.failingTransfer = 12;
  EXPECT_EQ(record.ReadOpticalParamsFromEEPROM(&length, nullptr, nullptr), kFailure);
  EXPECT_EQ(length, 0.0F) << "all three or none";
  EXPECT_EQ(record.values.focalLength, 1.0F);
}

TEST(EECorvDataFile, HoldsEveryKeyInOrderAndHasDefaultsOfItsOwn) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.IsInForce());
  Values values = ReadFile("[General]\nSVERNO=3.0\n[filter]\nNOFILTS=2\n[wave]\nNOGRATS=1\nNOGRATS2=2\nNOGRATS3=1\n");
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
  EXPECT_EQ(KeysOf(values).inOrder, "[General] COMMADD=16 SVERNO=3.0 " + general + rest);
  values.structureVersion = "1.0";
  EXPECT_EQ(KeysOf(values).inOrder, "[General] COMMADD=16 SVERNO=1.0 " + general + rest)
      << "All, whatever the version.";
  const std::string fresh = KeysOf(Values()).inOrder;
  for (const char* const key : {"IVERNO=PP001", "CURRFILT=1", "CURRWAVE=703.241", "CURRSLIT=25",
                                "MAXSTEPS=4800 MINDUM2=40000", "MAXSTEPS2=4800 [filter]", "NOTURRETS=1",
                                "GRATBLAZE1=600", "GRATSTART1=1 GRATSTART2=160000 GRATSTART3=320000"}) {
    EXPECT_NE(fresh.find(std::string(" ") + key + " "), std::string::npos) << key;
  }
}

TEST_P(EECorvDataOfVersion, ReadsTheKeysThatItsFileHolds) {
  SimulatedLegacyBus bus(Programmed("3.0"));
  EECorvData source(&bus, false);
  ASSERT_EQ(source.ReadFromEEPROM(), kSuccess);
  source.values.structureVersion = GetParam();
  std::string file;
  std::string current;
  for (const auto& [name, text] : KeysOf(source.values).texts) {
    const std::string section = name.substr(0, name.find('.'));
    if (section != current) {
      file.append("[").append(section).append("]\n");
    }
    file.append(name, section.size() + 1, std::string::npos).append("=").append(text).append("\n");
    current = section;
  }
  const auto read = KeysOf(ReadFile(file)).texts;
  const auto fresh = KeysOf(Values()).texts;
  for (const StoredValue& stored : kStored) {
    if (!std::holds_alternative<const char*>(stored.value)) {
      const bool held = stored.since <= std::stod(GetParam());
      EXPECT_EQ(read.at(stored.key), held ? TextOf(stored) : fresh.at(stored.key)) << stored.key;
    }
  }
}

TEST(EECorvDataFile, IsReadWithItsOwnLimits) {
  const CommaLocale comma;
  ASSERT_TRUE(comma.IsInForce());
  const Values values = ReadFile(
      "[general]\nSVERNO=3.0\nCOMMADD=99\nIDSTRING = My Maker\nFOCLEN = 0.5\n"
      "[wave]\nTURRET=7\nNOGRATS=0\nGRATBLAZE1=12345\nLinear=5\nPOLY2=1.5e-3\n"
      "[slit]\nPOLYSLIT1=-100,50\nPOLYSLIT2=7\n[filter]\nNOFILTS=9\nLABEL6=Schott BG\n");
  const std::pair<const char*, const char*> expected[] = {
      {"General.COMMADD", "16"},      {"General.IDSTRING", "MyMaker"}, {"General.FOCLEN", "0.5"},
      {"wave.TURRET", "1"},           {"wave.NOGRATS", "3"},           {"wave.GRATBLAZE1", "1234"},
      {"wave.Linear", "0,1"},         {"wave.POLY2", "0.0015"},        {"slit.POLYSLIT1", "-100,50"},
      {"slit.POLYSLIT2", "800,2200"}, {"filter.LABEL6", "SchottBG"},
  };
  const auto read = KeysOf(values).texts;
  for (const auto& [key, text] : expected) {
    EXPECT_EQ(read.at(key), text) << key;
  }
  EXPECT_FLOAT_EQ(values.slits[0].c1, 900.0F / 2150.0F);
  EXPECT_FLOAT_EQ(values.slits[0].c0, -260000.0F / 2150.0F);
}

TEST(EECorvDataFile, IsTheSourceUntilTheEepromIsRead) {
  struct Listener final : corvane::IEECorvDataListener {
    void OnDataLoaded(EECorvData* /*record*/) override { ++loads; }
    int loads = 0;
  } listener;
  const TemporaryDirectory directory;
  std::string path = directory.Write("legacy.ini", "");
  const std::string resolved = path;
  path.resize(kPathSize);
  SimulatedLegacyBus bus;
  EECorvData record(&bus, false);
  record.SetListener(&listener);
  for (const int loads : {2, 4}) {
    ASSERT_EQ(record.ReadFromFile(path.data()), kSuccess);
    EXPECT_TRUE(record.values.loadedFromFile);
    EXPECT_FALSE(record.values.loadedFromEeprom);
    EXPECT_EQ(record.values.sourcePath, resolved);
    EXPECT_EQ(record.WriteToFile(path.data()), kSuccess);
    ASSERT_EQ(record.ReadFromEEPROM(), kSuccess);
    EXPECT_FALSE(record.values.loadedFromFile);
    EXPECT_TRUE(record.values.loadedFromEeprom);
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
  EXPECT_EQ(record.ReadFromFile(path.data()), kSuccess);
  EXPECT_EQ(path, std::string(500, 'a'));
}

TEST(EECorvDataSteps, TakesWavelengthsToSteps) {
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
  // Zero order needs no angle, but a polynomial above 1 comes first.
  for (const auto& [constant, atZero] : {std::pair{-1.5F, 210}, {kNoNumber, 210}, {1.5F, EECorvData::kOutOfReach}}) {
    values.polynomial[4] = constant;
    EXPECT_EQ(record.ConvertWaveToSteps(0.0F, 1, 0), atZero) << constant;
    EXPECT_EQ(record.ConvertWaveToSteps(1.0F, 1, 0), EECorvData::kOutOfReach) << constant;
  }
  values.polynomial = {};
  EXPECT_EQ(record.GetActualWavelength(500.006F, 1, 0), 500.01F) << "A flat conversion has no band.";
  values.sinFrequency = 0.0F;
  EXPECT_EQ(record.ConvertWaveToSteps(500.0F, 1, 0), 210);
  values.turrets[1].gratings[0].lines = kNoNumber;
  EXPECT_EQ(record.ConvertWaveToSteps(500.0F, 1, 0), EECorvData::kOutOfReach);
}

TEST(EECorvDataSteps, ActualWavelengthIsTheCentreOfAStepsBand) {
  EECorvData record(nullptr, false);
  record.values.polynomial[3] = 1.0F / 2400.0F;
  record.values.turrets[0].gratings[0].lines = 12.0F;  // steps of 3.14 nm
  // Computed apart from the library: wavelengths outside the band are 497.94 and 501.09, then 501.08 and 504.23.
  EXPECT_NEAR(record.GetActualWavelength(500.0F, 1, 0), 499.515F, 0.006F);
  EXPECT_NEAR(record.GetActualWavelength(501.3F, 1, 0), 502.655F, 0.006F);
  EXPECT_EQ(record.GetActualWavelength(0.0F, 1, 0), 0.0F);
}

TEST(EECorvDataSteps, TakesSlitWidthsToSteps) {
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
  for (const float width : {std::numeric_limits<float>::infinity(), kNoNumber, 3e38F}) {
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
