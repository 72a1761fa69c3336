#include "legacy/CorvDataPages.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>

#include "eeprom/StructureVersion.h"
#include "legacy/LegacyResult.h"

namespace corvane {
namespace {

using Values = CorvDataValues;
using legacy::kFailure;
using legacy::kSuccess;
using places::GratingCount;
using places::Many;
using places::Motion;
using places::OfGrating;
using places::One;
using places::SlitPoint;

/// How a value is stored: integers and floats take four bytes, and small integers one.
enum class Form { kByte, kInt, kFloat, kText, kBlaze };

/// What is written together. Reading goes page by page instead.
enum class Group {
  kAddress,
  kGeneral,
  kMotor1,
  kMotor2,
  kMotor3,
  kMotor4,
  kMotor5,
  kWave,
  kHoles,
  kSlits,
  kFilter,
  kShutter,
  kTurretCount,
  kTurret1,
  kTurret2,
  kTurret3
};

struct Row {
  int page = 0;
  int offset = 0;
  Form form = Form::kByte;
  std::size_t elements = 0;
  /// A text: bytes that are read, and bytes that may be written. Blazes: where the third grating's lies from major
  /// version 3 on, when its five digits no longer fit behind the second's.
  int size = 0;
  int room = 0;
  StructureVersion since;
  int readStep = 0;
  Group group = Group::kAddress;
  CorvDataPlaces place = nullptr;
  CorvDataSettle settle = nullptr;
};

constexpr std::size_t kPerFilter = 0;
constexpr StructureVersion kAll{};
constexpr StructureVersion k11{1, 1};
constexpr StructureVersion k12{1, 2};
constexpr StructureVersion k13{1, 3};
constexpr StructureVersion k14{1, 4};
constexpr StructureVersion kNewest{3, 0};
constexpr int kFiveDigitBlazes = 3;

int CheckAddress(Values& values) {
  const bool known = values.commAdd == Values::kCommAdd;
  values.commAdd = Values::kCommAdd;
  return known ? kSuccess : kFailure;
}

int CheckVersion(Values& values) {
  // Texts with blanks or unprogrammed bytes behind the number exist: they leave the numbers as they are.
  SplitVersionString(values.structureVersion.c_str(), &values.structureMajor, &values.structureMinor);
  const StructureVersion version{values.structureMajor, values.structureMinor};
  return kNewest.IsAtLeast(version) ? kSuccess : legacy::kNewerStructure;
}

int CutLabels(Values& values) {
  for (std::string& label : values.filterLabels) {
    label.resize(std::min(label.size(), Values::kMaxLabel));
  }
  return kSuccess;
}

int SettleBackgroundMode(Values& values) {
  values.shutterCustomBgMode = values.shutterCustomBgMode == 2 ? 2 : 3;
  return kSuccess;
}

int SettleAcquisitionMode(Values& values) {
  const std::int8_t mode = values.shutterCustomAqMode;
  values.shutterCustomAqMode = mode == 0 || mode == 3 ? mode : std::int8_t{2};
  return kSuccess;
}

/// As the pages have it: each MINDUM before its MAXDUM.
template <std::size_t Number>
CorvDataPlace Hole(Values& values, std::size_t element) {
  Values::Hole& hole = values.holes[Number];
  const std::array<std::int32_t*, 9> order{&hole.findDist,    &hole.find.minDum, &hole.find.maxDum,
                                           &hole.find.delDum, &hole.intoDist,    &hole.edgeDist,
                                           &hole.edge.minDum, &hole.edge.maxDum, &hole.edge.delDum};
  return order[element];
}

using Grating = Values::Grating;

// clang-format off
constexpr Row kRows[] = {
    // page, offset, form, elements, size, room, since, read step, group, value, then
    {0,   0, Form::kByte,  1,  0,  0, kAll, 11, Group::kAddress, One<&Values::commAdd>, CheckAddress},
    {0,   1, Form::kText,  1, 20, 20, kAll, 12, Group::kGeneral, One<&Values::idString>},
    {0,  21, Form::kText,  1, 10, 10, kAll, 11, Group::kGeneral, One<&Values::structureVersion>, CheckVersion},
    {0,  31, Form::kText,  1, 10, 10, kAll, 12, Group::kGeneral, One<&Values::instrumentVersion>},
    {0,  41, Form::kText,  1, 10, 11, kAll, 12, Group::kGeneral, One<&Values::dateOfManufacture>},
    {0,  52, Form::kText,  1, 10, 11, kAll, 12, Group::kGeneral, One<&Values::date>},
    {0,  63, Form::kFloat, 1,  0,  0, kAll, 12, Group::kGeneral, One<&Values::focalLength>},
    {0,  67, Form::kFloat, 1,  0,  0, kAll, 12, Group::kGeneral, One<&Values::angularDeviation>},
    {0,  71, Form::kFloat, 1,  0,  0, kAll, 12, Group::kGeneral, One<&Values::focalTilt>},
    {0,  75, Form::kFloat, 1,  0,  0, kAll, 12, Group::kGeneral, One<&Values::currentWave>},
    {0,  79, Form::kFloat, 1,  0,  0, kAll, 12, Group::kGeneral, Many<&Values::currentSlit, 0>},
    {0,  83, Form::kInt,   1,  0,  0, kAll, 12, Group::kGeneral, One<&Values::currentFilter>},
    {0,  87, Form::kInt,   1,  0,  0, kAll, 12, Group::kGeneral, One<&Values::currentMirror>},
    {0,  99, Form::kFloat, 1,  0,  0, k12,  12, Group::kGeneral, Many<&Values::currentSlit, 1>},

    {1,   0, Form::kInt,   5,  0,  0, kAll, 13, Group::kMotor1, Motion<0>},
    {2,   0, Form::kInt,   5,  0,  0, kAll, 14, Group::kMotor2, Motion<1>},
    {3,   0, Form::kInt,   5,  0,  0, kAll, 15, Group::kMotor3, Motion<2>},
    {4,   0, Form::kInt,   5,  0,  0, kAll, 16, Group::kMotor4, Motion<3>},
    {5,   0, Form::kInt,   5,  0,  0, k12,  17, Group::kMotor5, Motion<4>},

    {1,  20, Form::kByte,  1,  0,  0, kAll, 18, Group::kWave, One<&Values::turret>, settle::Turret},
    {1,  21, Form::kByte,  1,  0,  0, k11,  18, Group::kTurret1, GratingCount<0>, settle::Gratings<0>},
    {1,  22, Form::kFloat, 3,  0,  0, k11,  18, Group::kTurret1, OfGrating<0, &Grating::lines>},
    {1,  34, Form::kBlaze, 3, 230, 0, k11,  18, Group::kTurret1, OfGrating<0, &Grating::blaze>},
    {1,  46, Form::kInt,   3,  0,  0, k11,  18, Group::kTurret1, OfGrating<0, &Grating::offset>},
    {1,  58, Form::kInt,   3,  0,  0, k11,  18, Group::kTurret1, OfGrating<0, &Grating::start>},
    {1,  70, Form::kInt,   1,  0,  0, kAll, 18, Group::kWave, Many<&Values::detectorOffset, 0>},
    {1,  74, Form::kFloat, 5,  0,  0, kAll, 18, Group::kWave, Many<&Values::polynomial>},
    {1,  94, Form::kFloat, 2,  0,  0, kAll, 18, Group::kWave, Many<&Values::linear>},
    {1, 102, Form::kFloat, 9,  0,  0, kAll, 18, Group::kWave, Many<&Values::quadratic>},
    {1, 138, Form::kFloat, 1,  0,  0, k11,  18, Group::kWave, One<&Values::sinPhase>},
    {1, 142, Form::kFloat, 1,  0,  0, k11,  18, Group::kWave, One<&Values::sinFrequency>},
    {1, 146, Form::kFloat, 1,  0,  0, k11,  18, Group::kWave, One<&Values::sinAmplitude>},
    {1, 150, Form::kInt,   9,  0,  0, k11,  19, Group::kHoles, Hole<0>},
    {1, 186, Form::kInt,   9,  0,  0, k11,  19, Group::kHoles, Hole<1>},
    {1, 222, Form::kByte,  1,  0,  0, k11,  19, Group::kTurretCount, One<&Values::numberOfTurrets>},
    {1, 226, Form::kInt,   1,  0,  0, k14,  19, Group::kHoles, Many<&Values::detectorOffset, 1>},

    {2,  20, Form::kInt,   4,  0,  0, kAll, 20, Group::kSlits, SlitPoint<0>, settle::Slit<0>},
    {2,  84, Form::kInt,   4,  0,  0, k12,  20, Group::kSlits, SlitPoint<1>, settle::Slit<1>},
    {2, 128, Form::kByte,  1,  0,  0, k11,  20, Group::kTurret2, GratingCount<1>, settle::Gratings<1>},
    {2, 129, Form::kFloat, 3,  0,  0, k11,  20, Group::kTurret2, OfGrating<1, &Grating::lines>},
    {2, 141, Form::kBlaze, 3, 235, 0, k11,  20, Group::kTurret2, OfGrating<1, &Grating::blaze>},
    {2, 153, Form::kInt,   3,  0,  0, k11,  20, Group::kTurret2, OfGrating<1, &Grating::offset>},
    {2, 165, Form::kInt,   3,  0,  0, k11,  20, Group::kTurret2, OfGrating<1, &Grating::start>},
    {2, 177, Form::kByte,  1,  0,  0, k11,  20, Group::kTurret3, GratingCount<2>, settle::Gratings<2>},
    {2, 178, Form::kFloat, 3,  0,  0, k11,  20, Group::kTurret3, OfGrating<2, &Grating::lines>},
    {2, 190, Form::kBlaze, 3, 240, 0, k11,  20, Group::kTurret3, OfGrating<2, &Grating::blaze>},
    {2, 202, Form::kInt,   3,  0,  0, k11,  20, Group::kTurret3, OfGrating<2, &Grating::offset>},
    {2, 214, Form::kInt,   3,  0,  0, k11,  20, Group::kTurret3, OfGrating<2, &Grating::start>},

    {3,  20, Form::kByte,  1,  0,  0, kAll, 21, Group::kFilter, One<&Values::numberOfFilters>},
    {3,  21, Form::kText,  kPerFilter, 10, 10, kAll, 21, Group::kFilter, Many<&Values::filterLabels>, CutLabels},
    {3,  81, Form::kByte,  kPerFilter,  0,  0, k13,  21, Group::kFilter, Many<&Values::filterSensorBits>},
    {3,  90, Form::kInt,   1,  0,  0, k13,  21, Group::kFilter, One<&Values::filterResetOffset>},
    {3,  94, Form::kInt,   kPerFilter,  0,  0, k13,  21, Group::kFilter, Many<&Values::filterDelta>},

    {4, 128, Form::kByte,  1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterMode>},
    {4, 129, Form::kByte,  1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterType>},
    {4, 130, Form::kFloat, 1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterOpenTime>},
    {4, 134, Form::kFloat, 1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterCloseTime>},
    {4, 138, Form::kFloat, 1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterFreqLimit>},
    {4, 142, Form::kByte,  1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterCustomBgMode>, SettleBackgroundMode},
    {4, 143, Form::kByte,  1,  0,  0, k11,  22, Group::kShutter, One<&Values::shutterCustomAqMode>, SettleAcquisitionMode},
};

/// The order of writing: turrets come last, though they lie on the first pages.
constexpr struct {
  int step;
  Group group;
} kWriting[] = {
    {11, Group::kAddress}, {12, Group::kGeneral},
    {13, Group::kMotor1}, {14, Group::kMotor2}, {15, Group::kMotor3}, {16, Group::kMotor4}, {17, Group::kMotor5},
    {18, Group::kWave}, {19, Group::kHoles}, {20, Group::kSlits}, {kFilterPageStep, Group::kFilter},
    {22, Group::kShutter},
    {23, Group::kTurretCount}, {23, Group::kTurret1}, {24, Group::kTurret2}, {kLastPageStep, Group::kTurret3},
};
// clang-format on

struct Spot {
  std::uint8_t device;
  std::uint8_t reg;
};

int BlazeDigits(const Values& values) {
  return values.structureMajor < kFiveDigitBlazes ? 4 : 5;
}

std::size_t Elements(const Row& row, const Values& values) {
  return row.elements == kPerFilter ? values.FilterCount() : row.elements;
}

int Width(const Row& row, const Values& values) {
  switch (row.form) {
    case Form::kByte:
      return 1;
    case Form::kText:
      return row.size;
    case Form::kBlaze:
      return BlazeDigits(values);
    default:
      return 4;
  }
}

Spot SpotOf(const Row& row, std::size_t element, const Values& values) {
  const bool movedBlaze = row.form == Form::kBlaze && element == 2 && values.structureMajor >= kFiveDigitBlazes;
  const int offset = movedBlaze ? row.size : row.offset + static_cast<int>(element) * Width(row, values);
  return {static_cast<std::uint8_t>(LegacyBus::kEepromBase + row.page), static_cast<std::uint8_t>(offset)};
}

int ReadText(LegacyBus& bus, const Row& row, Spot spot, const Values& values, std::string& out) {
  std::array<char, LegacyBus::kBlazeSlot> text{};
  const int width = Width(row, values);
  const int result = row.form == Form::kBlaze ? bus.ReadBlaze(text.data(), width, spot.device, spot.reg)
                                              : bus.ReadString(text.data(), width, spot.device, spot.reg);
  if (result == kSuccess) {
    out = text.data();
  }
  return result;
}

int ReadElement(LegacyBus& bus, const Row& row, std::size_t element, Values& values) {
  const Spot spot = SpotOf(row, element, values);
  const auto read = [&](auto* place) {
    using Value = std::remove_pointer_t<decltype(place)>;
    if constexpr (std::is_same_v<Value, std::string>) {
      return ReadText(bus, row, spot, values, *place);
    } else if constexpr (std::is_same_v<Value, float>) {
      return bus.ReadFloat(place, spot.device, spot.reg);
    } else {
      std::int32_t number = 0;
      std::uint8_t byte = 0;
      const bool wide = row.form == Form::kInt;
      const int result =
          wide ? bus.ReadInt(&number, spot.device, spot.reg) : bus.ReadByte(&byte, spot.device, spot.reg);
      if (result == kSuccess) {
        *place = static_cast<Value>(wide ? number : byte);
      }
      return result;
    }
  };
  return std::visit(read, row.place(values, element));
}

int WriteText(LegacyBus& bus, const Row& row, Spot spot, const Values& values, const std::string& text) {
  // With its terminator; a text that fills its field goes without, as it would reach into the next.
  const int withTerminator = static_cast<int>(std::min(text.size(), Values::kMaxText)) + 1;
  const int count = row.form == Form::kBlaze ? Width(row, values) : std::min(withTerminator, row.room);
  return bus.WriteString(text.c_str(), count, spot.device, spot.reg);
}

int PutElement(LegacyBus& bus, const Row& row, std::size_t element, Values& values) {
  const Spot spot = SpotOf(row, element, values);
  const auto write = [&](auto* place) {
    using Value = std::remove_pointer_t<decltype(place)>;
    if constexpr (std::is_same_v<Value, std::string>) {
      return WriteText(bus, row, spot, values, *place);
    } else if constexpr (std::is_same_v<Value, float>) {
      return bus.WriteFloat(*place, spot.device, spot.reg);
    } else {
      return row.form == Form::kInt ? bus.WriteInt(*place, spot.device, spot.reg)
                                    : bus.WriteByte(static_cast<std::uint8_t>(*place), spot.device, spot.reg);
    }
  };
  return std::visit(write, row.place(values, element));
}

/// Whether the layout of the values' structure version has the row; an older one has other bytes in its place.
bool IsInLayout(const Row& row, const Values& values) {
  return StructureVersion{values.structureMajor, values.structureMinor}.IsAtLeast(row.since);
}

int WriteElement(LegacyBus& bus, const Row& row, std::size_t element, Values& values) {
  return IsInLayout(row, values) ? PutElement(bus, row, element, values) : kSuccess;
}

int ReadRow(LegacyBus& bus, const Row& row, Values& values) {
  for (std::size_t element = 0; element < Elements(row, values); ++element) {
    if (ReadElement(bus, row, element, values) != kSuccess) {
      return kFailure;
    }
  }
  return row.settle != nullptr ? row.settle(values) : kSuccess;
}

/// Reads or writes the element that is this value.
int MoveValue(int (*move)(LegacyBus& bus, const Row& row, std::size_t element, Values& values), LegacyBus& bus,
              Values& values, CorvDataPlace value) {
  for (const Row& row : kRows) {
    for (std::size_t element = 0; element < Elements(row, values); ++element) {
      if (row.place(values, element) == value) {
        return move(bus, row, element, values);
      }
    }
  }
  return kFailure;
}

}  // namespace

int ReadPageStep(LegacyBus& bus, int step, CorvDataValues& values) {
  for (const Row& row : kRows) {
    if (row.readStep != step || !IsInLayout(row, values)) {
      continue;
    }
    if (const int result = ReadRow(bus, row, values); result != kSuccess) {
      return result;
    }
  }
  return kSuccess;
}

int WritePageStep(LegacyBus& bus, int step, CorvDataValues& values) {
  for (const auto& part : kWriting) {
    for (const Row& row : kRows) {
      if (part.step != step || row.group != part.group) {
        continue;
      }
      for (std::size_t element = 0; element < Elements(row, values); ++element) {
        if (PutElement(bus, row, element, values) != kSuccess) {
          return kFailure;
        }
      }
    }
  }
  return kSuccess;
}

int ReadPageValue(LegacyBus& bus, CorvDataValues& values, CorvDataPlace value) {
  return MoveValue(ReadElement, bus, values, value);
}

int WritePageValue(LegacyBus& bus, CorvDataValues& values, CorvDataPlace value) {
  return MoveValue(WriteElement, bus, values, value);
}

}  // namespace corvane
