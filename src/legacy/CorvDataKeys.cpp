#include "legacy/CorvDataKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "legacy/LegacyResult.h"
#include "platform/PrivateProfile.h"

namespace corvane {
namespace {

using Values = CorvDataValues;

constexpr std::size_t kMostKeys = kHoleValues;
/// Room for the longest default, which the profile reader copies whole.
constexpr std::size_t kBuffer = 240;
constexpr std::size_t kBlazeCut = 4;

using Texts = std::array<const char*, kMostKeys>;
using KeyCount = std::size_t (*)(const Values& values);
/// Which of the row's values stands at each place; no row has more.
using Order = std::array<std::size_t, kHoleValues>;

/// Keys that are read and written alike.
struct KeyRow {
  const char* section = nullptr;
  /// The keys of the row, or one with "%d" for the keys' numbers, counted from 1.
  Texts keys{};
  /// One for each key; what is missing is the first.
  Texts defaults{};
  unsigned int buffer = 0;
  double since = 0.0;
  /// How many numbers a comma list holds; 1 for a plain value.
  std::size_t list = 1;
  /// The first of the values.
  CorvValueId value;
  /// How many numbered keys there are; null where they are named.
  KeyCount count = nullptr;
  CorvDataSettle settle = nullptr;
  Order order{0, 1, 2, 3, 4, 5, 6, 7, 8};
};

template <std::size_t Number>
std::size_t Fixed(const Values& /*values*/) {
  return Number;
}

std::size_t Filters(const Values& values) {
  return values.FilterCount();
}

template <std::size_t Turret>
std::size_t Gratings(const Values& values) {
  const std::int32_t stored = values.turrets[Turret].numberOfGratings;
  return static_cast<std::size_t>(std::clamp<std::int32_t>(stored, 0, Values::kGratings));
}

/// Whatever a file says: instruments answer at no other address.
int ForceAddress(Values& values) {
  values.commAdd = Values::kCommAdd;
  return legacy::kSuccess;
}

int SplitVersion(Values& values) {
  SplitVersionString(values.structureVersion.c_str(), &values.structureMajor, &values.structureMinor);
  return legacy::kSuccess;
}

/// Shorter than what the pages of a structure 3 hold: data files never had more.
template <std::size_t Turret>
int CutBlazes(Values& values) {
  for (std::size_t i = 0; i < Gratings<Turret>(values); ++i) {
    std::string& blaze = values.turrets[Turret].gratings[i].blaze;
    blaze.resize(std::min(blaze.size(), kBlazeCut));
  }
  return legacy::kSuccess;
}

/// As files have it: each MAXDUM before its MINDUM.
constexpr Order kMaximumFirst{0, 2, 1, 3, 4, 5, 7, 6, 8};

using enum CorvField;

// The defaults differ here and there from the values of a fresh record, as those of data files always have.
// clang-format off
constexpr KeyRow kKeyRows[] = {
    // section, keys, defaults, buffer, since, list, first value, number of keys, then, order
    {"General", {"COMMADD"},   {"16"},               10, 0,   1, {kCommAdd}, nullptr, ForceAddress},
    {"General", {"SVERNO"},    {"1.0"},              10, 0,   1, {kStructureVersion}, nullptr, SplitVersion},
    {"General", {"IDSTRING"},  {"Tivan Technology"}, 20, 0,   1, {kIdString}},
    {"General", {"IVERNO"},    {"PP004"},            10, 0,   1, {kInstrumentVersion}},
    {"General", {"DOM"},       {"01/01/2001"},       11, 0,   1, {kDateOfManufacture}},
    {"General", {"DATE"},      {"02/02/2002"},       11, 0,   1, {kDate}},
    {"General", {"FOCLEN"},    {"0.2573600113"},     20, 0,   1, {kFocalLength}},
    {"General", {"ANGDEV"},    {"11.82999992"},      20, 0,   1, {kAngularDeviation}},
    {"General", {"FOCTLT"},    {"6.699999809"},      20, 0,   1, {kFocalTilt}},
    {"General", {"CURRFILT"},  {"0"},                10, 0,   1, {kCurrentFilter}},
    {"General", {"CURRMIR"},   {"0"},                10, 0,   1, {kCurrentMirror}},
    {"General", {"CURRWAVE"},  {"0"},                10, 0,   1, {kCurrentWave}},
    {"General", {"CURRSLIT"},  {"0"},                10, 0,   1, {kCurrentSlit}},
    {"General", {"CURRSLIT2"}, {"0"},                10, 1.2, 1, {kCurrentSlit, 1}},

    {"wave",    {"MINDUM", "MAXDUM", "DELDUM", "MINSTEPS", "MAXSTEPS"},
                {"5000", "80000", "1000", "0", "480000"},   10, 0,   1, MotionOf(0)[0]},
    {"slit",    {"MINDUM", "MAXDUM", "DELDUM", "MINSTEPS", "MAXSTEPS"},
                {"40000", "80000", "1000", "0", "1000"},    10, 0,   1, MotionOf(1)[0]},
    {"slit",    {"MINDUM2", "MAXDUM2", "DELDUM2", "MINSTEPS2", "MAXSTEPS2"},
                {"40000", "80000", "1000", "0", "1000"},    10, 1.2, 1, MotionOf(4)[0]},
    {"filter",  {"MINDUM", "MAXDUM", "DELDUM", "MINSTEPS", "MAXSTEPS"},
                {"20000", "30000", "1000", "0", "4800"},    10, 0,   1, MotionOf(2)[0]},
    {"flipper", {"MINDUM", "MAXDUM", "DELDUM", "MINSTEPS", "MAXSTEPS"},
                {"100000", "100000", "1000", "0", "80"},    10, 0,   1, MotionOf(3)[0]},

    {"wave",    {"DETOFFSET"},    {"192"},    10, 0,   1, {kDetectorOffset}},
    {"wave",    {"DETOFFSET2"},   {"0"},      10, 1.4, 1, {kDetectorOffset, 1}},
    {"wave",    {"TURRET"},       {"1"},      10, 0,   1, {kTurret}, nullptr, SettleTurret},
    {"wave",    {"POLY%d"},       {"0"},      20, 0,   1, {kPolynomial}, Fixed<5>},
    {"wave",    {"Linear"},       {"0,1"},    20, 0,   2, {kLinear}},
    {"wave",    {"Quadratic%d"},  {"0,0,0"}, 100, 0,   3, {kQuadratic}, Fixed<3>},
    {"wave",    {"SINPHASE"},     {"0.812"},  20, 1.1, 1, {kSinPhase}},
    {"wave",    {"SINFREQUENCY"}, {"2000.0"}, 20, 1.1, 1, {kSinFrequency}},
    {"wave",    {"SINAMPLITUDE"}, {"0.0"},    20, 1.1, 1, {kSinAmplitude}},
    {"wave",    {"HOLE1FINDDIST", "HOLE1FINDMAXDUM", "HOLE1FINDMINDUM", "HOLE1FINDDELTA", "HOLE1INTODIST",
                 "HOLE1EDGEDIST", "HOLE1EDGEMAXDUM", "HOLE1EDGEMINDUM", "HOLE1EDGEDELTA"},
                {"480000", "80000", "4000", "1000", "1000", "5000", "80000", "5000", "1000"},  10, 1.1, 1,
                HoleOf(0)[0], nullptr, nullptr, kMaximumFirst},
    {"wave",    {"HOLE2FINDDIST", "HOLE2FINDMAXDUM", "HOLE2FINDMINDUM", "HOLE2FINDDELTA", "HOLE2INTODIST",
                 "HOLE2EDGEDIST", "HOLE2EDGEMAXDUM", "HOLE2EDGEMINDUM", "HOLE2EDGEDELTA"},
                {"3000", "80000", "10000", "1000", "10", "2000", "400000", "400000", "1000"},  10, 1.1, 1,
                HoleOf(1)[0], nullptr, nullptr, kMaximumFirst},

    {"slit",    {"POLYSLIT1"},  {"-80,10"},   10, 0,   2, SlitPointsOf(0)[0], nullptr, SettleSlit<0>},
    {"slit",    {"POLYSLIT2"},  {"800,2200"}, 10, 0,   2, SlitPointsOf(0)[2], nullptr, SettleSlit<0>},
    {"slit",    {"POLYSLIT12"}, {"-80,10"},   10, 1.2, 2, SlitPointsOf(1)[0], nullptr, SettleSlit<1>},
    {"slit",    {"POLYSLIT22"}, {"800,2200"}, 10, 1.2, 2, SlitPointsOf(1)[2], nullptr, SettleSlit<1>},

    {"filter",  {"NOFILTS"},            {"6"},     10, 0,   1, {kNumberOfFilters}},
    {"filter",  {"LABEL%d"},            {"label"}, 10, 0,   1, {kFilterLabel}, Filters},
    {"filter",  {"FILTERRESETOFFSET"},  {"160"},   10, 1.3, 1, {kFilterResetOffset}},
    {"filter",  {"FILTER%dSENSORBITS"}, {"4", "12", "8", "10", "2", "6"},
                                                   10, 1.3, 1, {kFilterSensorBits}, Filters},
    {"filter",  {"FILTER%dDELTA"},      {"0", "800", "1600", "2400", "3200", "4000"},
                                                   10, 1.3, 1, {kFilterDelta}, Filters},

    {"shutter", {"SHUTTERMODE"},         {"0"},    10, 1.1, 1, {kShutterMode}},
    {"shutter", {"SHUTTERTYPE"},         {"1"},    10, 1.1, 1, {kShutterType}},
    {"shutter", {"SHUTTERCUSTOMBGMODE"}, {"3"},    10, 1.1, 1, {kShutterCustomBgMode}},
    {"shutter", {"SHUTTERCUSTOMAQMODE"}, {"0"},    10, 1.1, 1, {kShutterCustomAqMode}},
    {"shutter", {"SHUTTEROPENTIME"},     {"20.0"}, 20, 1.1, 1, {kShutterOpenTime}},
    {"shutter", {"SHUTTERCLOSETIME"},    {"20.0"}, 20, 1.1, 1, {kShutterCloseTime}},
    {"shutter", {"SHUTTERFREQLIMIT"},    {"10.0"}, 20, 1.1, 1, {kShutterFreqLimit}},

    {"wave",    {"NOTURRETS"},     {"3"},   10, 1.1, 1, {kNumberOfTurrets}},
    {"wave",    {"NOGRATS"},       {"3"},   10, 1.1, 1, {kNumberOfGratings, 0}, nullptr, SettleGratings<0>},
    {"wave",    {"NOGRATS2"},      {"3"},   10, 1.1, 1, {kNumberOfGratings, 1}, nullptr, SettleGratings<1>},
    {"wave",    {"NOGRATS3"},      {"3"},   10, 1.1, 1, {kNumberOfGratings, 2}, nullptr, SettleGratings<2>},
    {"wave",    {"GRATLINES%d"},   {"300"}, 10, 1.1, 1, OfTurret(0, kGratingLines)[0], Gratings<0>},
    {"wave",    {"GRATLINES2%d"},  {"300"}, 10, 1.1, 1, OfTurret(1, kGratingLines)[0], Gratings<1>},
    {"wave",    {"GRATLINES3%d"},  {"300"}, 10, 1.1, 1, OfTurret(2, kGratingLines)[0], Gratings<2>},
    {"wave",    {"GRATBLAZE%d"},   {"300"}, 10, 1.1, 1, OfTurret(0, kGratingBlaze)[0], Gratings<0>, CutBlazes<0>},
    {"wave",    {"GRATBLAZE2%d"},  {"300"}, 10, 1.1, 1, OfTurret(1, kGratingBlaze)[0], Gratings<1>, CutBlazes<1>},
    {"wave",    {"GRATBLAZE3%d"},  {"300"}, 10, 1.1, 1, OfTurret(2, kGratingBlaze)[0], Gratings<2>, CutBlazes<2>},
    {"wave",    {"GRATOFFSET%d"},  {"0"},   10, 1.1, 1, OfTurret(0, kGratingOffset)[0], Gratings<0>},
    {"wave",    {"GRATOFFSET2%d"}, {"0"},   10, 1.1, 1, OfTurret(1, kGratingOffset)[0], Gratings<1>},
    {"wave",    {"GRATOFFSET3%d"}, {"0"},   10, 1.1, 1, OfTurret(2, kGratingOffset)[0], Gratings<2>},
    {"wave",    {"GRATSTART%d"},   {"0"},   10, 1.1, 1, OfTurret(0, kGratingStart)[0], Gratings<0>},
    {"wave",    {"GRATSTART2%d"},  {"0"},   10, 1.1, 1, OfTurret(1, kGratingStart)[0], Gratings<1>},
    {"wave",    {"GRATSTART3%d"},  {"0"},   10, 1.1, 1, OfTurret(2, kGratingStart)[0], Gratings<2>},
};
// clang-format on

std::size_t Keys(const KeyRow& row, const Values& values) {
  if (row.count != nullptr) {
    return row.count(values);
  }
  const auto end = std::find(row.keys.begin(), row.keys.end(), nullptr);
  return static_cast<std::size_t>(end - row.keys.begin());
}

/// The index-th of the values that the row's keys hold.
CorvValueId IdOf(const KeyRow& row, std::size_t index) {
  return {row.value.field, row.value.element + row.order[index]};
}

std::string KeyName(const KeyRow& row, std::size_t index) {
  if (row.count == nullptr) {
    return row.keys[index];
  }
  const std::string pattern = row.keys.front();
  const std::size_t number = pattern.find("%d");
  return pattern.substr(0, number) + std::to_string(index + 1) + pattern.substr(number + 2);
}

std::int32_t ToInteger(const std::string& text) {
  constexpr int kDecimal = 10;
  constexpr long kLeast = std::numeric_limits<std::int32_t>::min();
  constexpr long kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(std::strtol(text.c_str(), nullptr, kDecimal), kLeast, kMost));
}

double ToDouble(const std::string& text) {
  return std::strtod(text.c_str(), nullptr);
}

/// The parts between commas; empty ones do not count.
std::vector<std::string> SplitList(const std::string& text) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while ((start = text.find_first_not_of(',', start)) != std::string::npos) {
    const std::size_t end = std::min(text.find(',', start), text.size());
    parts.push_back(text.substr(start, end - start));
    start = end;
  }
  return parts;
}

void Assign(CorvValue value, const std::string& text) {
  const auto assign = [&](auto* place) {
    using Value = std::remove_pointer_t<decltype(place)>;
    if constexpr (std::is_same_v<Value, std::string>) {
      *place = text;
    } else if constexpr (std::is_same_v<Value, float>) {
      *place = static_cast<float>(ToDouble(text));
    } else {
      *place = static_cast<Value>(ToInteger(text));
    }
  };
  std::visit(assign, value);
}

void ReadKey(const char* path, const KeyRow& row, std::size_t index, Values& values) {
  std::array<char, kBuffer> buffer{};
  const char* byDefault = row.defaults[index] != nullptr ? row.defaults[index] : row.defaults.front();
  GetPrivateProfileString(row.section, KeyName(row, index).c_str(), byDefault, buffer.data(), row.buffer, path);
  const std::string text = buffer.data();
  if (row.list == 1) {
    Assign(ValueOf(values, IdOf(row, index)), text);
    return;
  }
  const std::vector<std::string> parts = SplitList(text);
  for (std::size_t i = 0; parts.size() >= row.list && i < row.list; ++i) {
    Assign(ValueOf(values, IdOf(row, index * row.list + i)), parts[i]);
  }
}

std::string ToText(CorvValue value) {
  const auto toText = [](const auto* place) -> std::string {
    using Value = std::remove_cv_t<std::remove_pointer_t<decltype(place)>>;
    if constexpr (std::is_same_v<Value, std::string>) {
      return *place;
    } else if constexpr (std::is_same_v<Value, float>) {
      std::array<char, 32> text{};
      std::snprintf(text.data(), text.size(), "%g", static_cast<double>(*place));
      return text.data();
    } else {
      return std::to_string(*place);
    }
  };
  return std::visit(toText, value);
}

void WriteKey(const KeyRow& row, std::size_t index, Values& values, const ProfileSink& sink,
              const std::optional<CorvValueId>& only) {
  std::string text;
  bool wanted = !only;
  for (std::size_t i = 0; i < row.list; ++i) {
    const CorvValueId id = IdOf(row, index * row.list + i);
    wanted = wanted || id == *only;
    text += (i == 0 ? "" : ",") + ToText(ValueOf(values, id));
  }
  if (wanted) {
    sink(row.section, KeyName(row, index).c_str(), text.c_str());
  }
}

}  // namespace

void ReadProfileKeys(const char* path, CorvDataValues& values) {
  for (const KeyRow& row : kKeyRows) {
    // A double on both sides: as floats 1.3 and 1.4 would differ from their texts.
    if (row.since > 0.0 && !(ToDouble(values.structureVersion) >= row.since)) {
      continue;
    }
    const std::size_t keys = Keys(row, values);
    for (std::size_t index = 0; index < keys; ++index) {
      ReadKey(path, row, index, values);
    }
    if (row.settle != nullptr) {
      row.settle(values);
    }
  }
}

void WriteProfileKeys(CorvDataValues& values, const ProfileSink& sink, const std::optional<CorvValueId>& only) {
  for (const KeyRow& row : kKeyRows) {
    const std::size_t keys = Keys(row, values);
    for (std::size_t index = 0; index < keys; ++index) {
      WriteKey(row, index, values, sink, only);
    }
  }
}

}  // namespace corvane
