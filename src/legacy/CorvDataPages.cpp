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

struct PageOffset {
  int page = 0;
  int offset = 0;
};

/// What lies at one place: a value, or elements of a field one behind the other.
struct StoredField {
  PageOffset at;
  CorvElements values;
  Form form = Form::kByte;
  /// Texts: bytes that are read, and that may be written.
  int length = 0;
  int room = 0;
  /// Blazes: where the third grating's lies from major version 3 on, when its five digits no longer fit behind the
  /// second's.
  int thirdAt = 0;
  StructureVersion since{};
  /// The step of reading.
  int step = 0;
  Group group = Group::kAddress;
  CorvDataSettle settle = nullptr;
};

constexpr StructureVersion k11{1, 1};
constexpr StructureVersion k12{1, 2};
constexpr StructureVersion k13{1, 3};
constexpr StructureVersion k14{1, 4};
constexpr StructureVersion kNewest{3, 0};
constexpr int kFiveDigitBlazes = 3;
constexpr int kNumberWidth = 4;
constexpr int kFourDigits = 4;
constexpr int kFiveDigits = 5;
constexpr std::size_t kThirdGrating = 2;

/// As many as there are filters.
constexpr std::size_t kEveryFilter = 0;

constexpr CorvElements OfFilters(CorvField field) {
  return {field, 0, kEveryFilter};
}

int CheckAddress(Values& values) {
  const bool known = values.commAdd == Values::kCommAdd;
  values.commAdd = Values::kCommAdd;
  return known ? kSuccess : kFailure;
}

int CheckVersion(Values& values) {
  // Texts with blanks or unprogrammed bytes behind the number exist: they leave the numbers as they are.
  SplitVersionString(values.structureVersion.c_str(), &values.structureMajor, &values.structureMinor);
  const StructureVersion version{values.structureMajor, values.structureMinor};
  return kNewest.IsAtLeast(version) ? kSuccess : legacy::kBeyondLimits;
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

using enum CorvField;
using enum Form;
using enum Group;

// clang-format off
constexpr StoredField kStoredFields[] = {
    {.at = {0, 0}, .values = {kCommAdd}, .form = kByte, .step = 11, .group = kAddress, .settle = CheckAddress},
    {.at = {0, 1}, .values = {kIdString}, .form = kText, .length = 20, .room = 20, .step = 12, .group = kGeneral},
    {.at = {0, 21}, .values = {kStructureVersion}, .form = kText, .length = 10, .room = 10,
     .step = 11, .group = kGeneral, .settle = CheckVersion},
    {.at = {0, 31}, .values = {kInstrumentVersion}, .form = kText, .length = 10, .room = 10,
     .step = 12, .group = kGeneral},
    {.at = {0, 41}, .values = {kDateOfManufacture}, .form = kText, .length = 10, .room = 11,
     .step = 12, .group = kGeneral},
    {.at = {0, 52}, .values = {kDate}, .form = kText, .length = 10, .room = 11, .step = 12, .group = kGeneral},
    {.at = {0, 63}, .values = {kFocalLength}, .form = kFloat, .step = 12, .group = kGeneral},
    {.at = {0, 67}, .values = {kAngularDeviation}, .form = kFloat, .step = 12, .group = kGeneral},
    {.at = {0, 71}, .values = {kFocalTilt}, .form = kFloat, .step = 12, .group = kGeneral},
    {.at = {0, 75}, .values = {kCurrentWave}, .form = kFloat, .step = 12, .group = kGeneral},
    {.at = {0, 79}, .values = {kCurrentSlit}, .form = kFloat, .step = 12, .group = kGeneral},
    {.at = {0, 83}, .values = {kCurrentFilter}, .form = kInt, .step = 12, .group = kGeneral},
    {.at = {0, 87}, .values = {kCurrentMirror}, .form = kInt, .step = 12, .group = kGeneral},
    {.at = {0, 99}, .values = {kCurrentSlit, 1}, .form = kFloat, .since = k12, .step = 12, .group = kGeneral},

    {.at = {1, 0}, .values = MotionOf(0), .form = kInt, .step = 13, .group = kMotor1},
    {.at = {2, 0}, .values = MotionOf(1), .form = kInt, .step = 14, .group = kMotor2},
    {.at = {3, 0}, .values = MotionOf(2), .form = kInt, .step = 15, .group = kMotor3},
    {.at = {4, 0}, .values = MotionOf(3), .form = kInt, .step = 16, .group = kMotor4},
    {.at = {5, 0}, .values = MotionOf(4), .form = kInt, .since = k12, .step = 17, .group = kMotor5},

    {.at = {1, 20}, .values = {kTurret}, .form = kByte, .step = 18, .group = kWave, .settle = SettleTurret},
    {.at = {1, 21}, .values = {kNumberOfGratings}, .form = kByte, .since = k11, .step = 18, .group = kTurret1,
     .settle = SettleGratings<0>},
    {.at = {1, 22}, .values = OfTurret(0, kGratingLines), .form = kFloat, .since = k11, .step = 18, .group = kTurret1},
    {.at = {1, 34}, .values = OfTurret(0, kGratingBlaze), .form = kBlaze, .thirdAt = 230, .since = k11,
     .step = 18, .group = kTurret1},
    {.at = {1, 46}, .values = OfTurret(0, kGratingOffset), .form = kInt, .since = k11, .step = 18, .group = kTurret1},
    {.at = {1, 58}, .values = OfTurret(0, kGratingStart), .form = kInt, .since = k11, .step = 18, .group = kTurret1},
    {.at = {1, 70}, .values = {kDetectorOffset}, .form = kInt, .step = 18, .group = kWave},
    {.at = {1, 74}, .values = {kPolynomial, 0, 5}, .form = kFloat, .step = 18, .group = kWave},
    {.at = {1, 94}, .values = {kLinear, 0, 2}, .form = kFloat, .step = 18, .group = kWave},
    {.at = {1, 102}, .values = {kQuadratic, 0, 9}, .form = kFloat, .step = 18, .group = kWave},
    {.at = {1, 138}, .values = {kSinPhase}, .form = kFloat, .since = k11, .step = 18, .group = kWave},
    {.at = {1, 142}, .values = {kSinFrequency}, .form = kFloat, .since = k11, .step = 18, .group = kWave},
    {.at = {1, 146}, .values = {kSinAmplitude}, .form = kFloat, .since = k11, .step = 18, .group = kWave},
    {.at = {1, 150}, .values = HoleOf(0), .form = kInt, .since = k11, .step = 19, .group = kHoles},
    {.at = {1, 186}, .values = HoleOf(1), .form = kInt, .since = k11, .step = 19, .group = kHoles},
    {.at = {1, 222}, .values = {kNumberOfTurrets}, .form = kByte, .since = k11, .step = 19, .group = kTurretCount},
    {.at = {1, 226}, .values = {kDetectorOffset, 1}, .form = kInt, .since = k14, .step = 19, .group = kHoles},

    {.at = {2, 20}, .values = SlitPointsOf(0), .form = kInt, .step = 20, .group = kSlits, .settle = SettleSlit<0>},
    {.at = {2, 84}, .values = SlitPointsOf(1), .form = kInt, .since = k12, .step = 20, .group = kSlits,
     .settle = SettleSlit<1>},
    {.at = {2, 128}, .values = {kNumberOfGratings, 1}, .form = kByte, .since = k11, .step = 20, .group = kTurret2,
     .settle = SettleGratings<1>},
    {.at = {2, 129}, .values = OfTurret(1, kGratingLines), .form = kFloat, .since = k11, .step = 20, .group = kTurret2},
    {.at = {2, 141}, .values = OfTurret(1, kGratingBlaze), .form = kBlaze, .thirdAt = 235, .since = k11,
     .step = 20, .group = kTurret2},
    {.at = {2, 153}, .values = OfTurret(1, kGratingOffset), .form = kInt, .since = k11, .step = 20, .group = kTurret2},
    {.at = {2, 165}, .values = OfTurret(1, kGratingStart), .form = kInt, .since = k11, .step = 20, .group = kTurret2},
    {.at = {2, 177}, .values = {kNumberOfGratings, 2}, .form = kByte, .since = k11, .step = 20, .group = kTurret3,
     .settle = SettleGratings<2>},
    {.at = {2, 178}, .values = OfTurret(2, kGratingLines), .form = kFloat, .since = k11, .step = 20, .group = kTurret3},
    {.at = {2, 190}, .values = OfTurret(2, kGratingBlaze), .form = kBlaze, .thirdAt = 240, .since = k11,
     .step = 20, .group = kTurret3},
    {.at = {2, 202}, .values = OfTurret(2, kGratingOffset), .form = kInt, .since = k11, .step = 20, .group = kTurret3},
    {.at = {2, 214}, .values = OfTurret(2, kGratingStart), .form = kInt, .since = k11, .step = 20, .group = kTurret3},

    {.at = {3, 20}, .values = {kNumberOfFilters}, .form = kByte, .step = 21, .group = kFilter},
    {.at = {3, 21}, .values = OfFilters(kFilterLabel), .form = kText, .length = 10, .room = 10,
     .step = 21, .group = kFilter, .settle = CutLabels},
    {.at = {3, 81}, .values = OfFilters(kFilterSensorBits), .form = kByte, .since = k13, .step = 21, .group = kFilter},
    {.at = {3, 90}, .values = {kFilterResetOffset}, .form = kInt, .since = k13, .step = 21, .group = kFilter},
    {.at = {3, 94}, .values = OfFilters(kFilterDelta), .form = kInt, .since = k13, .step = 21, .group = kFilter},

    {.at = {4, 128}, .values = {kShutterMode}, .form = kByte, .since = k11, .step = 22, .group = kShutter},
    {.at = {4, 129}, .values = {kShutterType}, .form = kByte, .since = k11, .step = 22, .group = kShutter},
    {.at = {4, 130}, .values = {kShutterOpenTime}, .form = kFloat, .since = k11, .step = 22, .group = kShutter},
    {.at = {4, 134}, .values = {kShutterCloseTime}, .form = kFloat, .since = k11, .step = 22, .group = kShutter},
    {.at = {4, 138}, .values = {kShutterFreqLimit}, .form = kFloat, .since = k11, .step = 22, .group = kShutter},
    {.at = {4, 142}, .values = {kShutterCustomBgMode}, .form = kByte, .since = k11, .step = 22, .group = kShutter,
     .settle = SettleBackgroundMode},
    {.at = {4, 143}, .values = {kShutterCustomAqMode}, .form = kByte, .since = k11, .step = 22, .group = kShutter,
     .settle = SettleAcquisitionMode},
};

/// The order of writing: turrets come last, though they lie on the first pages.
constexpr struct {
  int step;
  Group group;
} kWriting[] = {
    {11, kAddress}, {12, kGeneral},
    {13, kMotor1}, {14, kMotor2}, {15, kMotor3}, {16, kMotor4}, {17, kMotor5},
    {18, kWave}, {19, kHoles}, {20, kSlits}, {kFilterPageStep, kFilter},
    {22, kShutter},
    {23, kTurretCount}, {23, kTurret1}, {24, kTurret2}, {kLastPageStep, kTurret3},
};
// clang-format on

struct Register {
  std::uint8_t device;
  std::uint8_t reg;
};

int BlazeDigits(const Values& values) {
  return values.structureMajor < kFiveDigitBlazes ? kFourDigits : kFiveDigits;
}

std::size_t CountOf(const StoredField& stored, const Values& values) {
  return stored.values.count == kEveryFilter ? values.FilterCount() : stored.values.count;
}

int WidthOf(const StoredField& stored, const Values& values) {
  switch (stored.form) {
    case Form::kByte:
      return 1;
    case Form::kText:
      return stored.length;
    case Form::kBlaze:
      return BlazeDigits(values);
    default:
      return kNumberWidth;
  }
}

Register RegisterOf(const StoredField& stored, std::size_t index, const Values& values) {
  const bool isMovedBlaze =
      stored.form == Form::kBlaze && index == kThirdGrating && values.structureMajor >= kFiveDigitBlazes;
  const int offset =
      isMovedBlaze ? stored.thirdAt : stored.at.offset + static_cast<int>(index) * WidthOf(stored, values);
  return {static_cast<std::uint8_t>(LegacyBus::kEepromBase + stored.at.page), static_cast<std::uint8_t>(offset)};
}

int ReadText(LegacyBus& bus, const StoredField& stored, Register from, const Values& values, std::string& out) {
  std::array<char, LegacyBus::kBlazeSlot> text{};
  const int width = WidthOf(stored, values);
  const int result = stored.form == Form::kBlaze ? bus.ReadBlaze(text.data(), width, from.device, from.reg)
                                                 : bus.ReadString(text.data(), width, from.device, from.reg);
  if (result == kSuccess) {
    out = text.data();
  }
  return result;
}

int ReadElement(LegacyBus& bus, const StoredField& stored, std::size_t index, Values& values) {
  const Register from = RegisterOf(stored, index, values);
  const auto read = [&](auto* value) {
    using Value = std::remove_pointer_t<decltype(value)>;
    if constexpr (std::is_same_v<Value, std::string>) {
      return ReadText(bus, stored, from, values, *value);
    } else if constexpr (std::is_same_v<Value, float>) {
      return bus.ReadFloat(value, from.device, from.reg);
    } else {
      std::int32_t number = 0;
      std::uint8_t byte = 0;
      const bool wide = stored.form == Form::kInt;
      const int result =
          wide ? bus.ReadInt(&number, from.device, from.reg) : bus.ReadByte(&byte, from.device, from.reg);
      if (result == kSuccess) {
        *value = static_cast<Value>(wide ? number : byte);
      }
      return result;
    }
  };
  return std::visit(read, ValueOf(values, stored.values[index]));
}

int WriteText(LegacyBus& bus, const StoredField& stored, Register to, const Values& values, const std::string& text) {
  // With its terminator; a text that fills its field goes without, as it would reach into the next.
  const int withTerminator = static_cast<int>(std::min(text.size(), Values::kMaxText)) + 1;
  const int count = stored.form == Form::kBlaze ? WidthOf(stored, values) : std::min(withTerminator, stored.room);
  return bus.WriteString(text.c_str(), count, to.device, to.reg);
}

/// Writes it whatever the structure version.
int PutElement(LegacyBus& bus, const StoredField& stored, std::size_t index, Values& values) {
  const Register to = RegisterOf(stored, index, values);
  const auto write = [&](auto* value) {
    using Value = std::remove_pointer_t<decltype(value)>;
    if constexpr (std::is_same_v<Value, std::string>) {
      return WriteText(bus, stored, to, values, *value);
    } else if constexpr (std::is_same_v<Value, float>) {
      return bus.WriteFloat(*value, to.device, to.reg);
    } else {
      return stored.form == Form::kInt ? bus.WriteInt(*value, to.device, to.reg)
                                       : bus.WriteByte(static_cast<std::uint8_t>(*value), to.device, to.reg);
    }
  };
  return std::visit(write, ValueOf(values, stored.values[index]));
}

/// Whether the layout of the values' structure version has the field; an older one has other bytes in its place.
bool IsInLayout(const StoredField& stored, const Values& values) {
  return StructureVersion{values.structureMajor, values.structureMinor}.IsAtLeast(stored.since);
}

int WriteElement(LegacyBus& bus, const StoredField& stored, std::size_t index, Values& values) {
  return IsInLayout(stored, values) ? PutElement(bus, stored, index, values) : kSuccess;
}

int ReadField(LegacyBus& bus, const StoredField& stored, Values& values) {
  for (std::size_t index = 0; index < CountOf(stored, values); ++index) {
    if (ReadElement(bus, stored, index, values) != kSuccess) {
      return kFailure;
    }
  }
  return stored.settle != nullptr ? stored.settle(values) : kSuccess;
}

/// Reads or writes one value, where the EEPROM holds it.
int MoveValue(int (*move)(LegacyBus& bus, const StoredField& stored, std::size_t index, Values& values), LegacyBus& bus,
              Values& values, CorvValueId id) {
  for (const StoredField& stored : kStoredFields) {
    const std::size_t first = stored.values.first;
    if (stored.values.field == id.field && id.element >= first && id.element - first < CountOf(stored, values)) {
      return move(bus, stored, id.element - first, values);
    }
  }
  return kFailure;
}

}  // namespace

int ReadPageStep(LegacyBus& bus, int step, CorvDataValues& values) {
  for (const StoredField& stored : kStoredFields) {
    if (stored.step != step || !IsInLayout(stored, values)) {
      continue;
    }
    if (const int result = ReadField(bus, stored, values); result != kSuccess) {
      return result;
    }
  }
  return kSuccess;
}

int WritePageStep(LegacyBus& bus, int step, CorvDataValues& values) {
  for (const auto& part : kWriting) {
    for (const StoredField& stored : kStoredFields) {
      if (part.step != step || stored.group != part.group) {
        continue;
      }
      for (std::size_t index = 0; index < CountOf(stored, values); ++index) {
        if (PutElement(bus, stored, index, values) != kSuccess) {
          return kFailure;
        }
      }
    }
  }
  return kSuccess;
}

int ReadPageValue(LegacyBus& bus, CorvDataValues& values, CorvValueId id) {
  return MoveValue(ReadElement, bus, values, id);
}

int WritePageValue(LegacyBus& bus, CorvDataValues& values, CorvValueId id) {
  return MoveValue(WriteElement, bus, values, id);
}

}  // namespace corvane
