#include "eeprom/MerakEepromLayout.h"

#include <algorithm>
#include <initializer_list>
#include <span>

#include "core/TextLengths.h"

namespace corvane {

namespace {

struct Field {
  /// Number of values and bytes of each, for structures with a major number up to 2 and from 3 on.
  std::array<int, 2> elements{};
  std::array<int, 2> width{};
  /// First structure version that has the field.
  StructureVersion since;
  /// The element-th value; null for a reserved field, which never travels.
  RecordValueOf valueOf = nullptr;
  /// What the record holds where the structure lacks the field.
  int whenAbsent = 0;
};

constexpr int kKeep = -1;
constexpr int kLabel = kMaxByteLabelLength;
constexpr StructureVersion kAlways{};
constexpr StructureVersion k11{1, 1};
constexpr StructureVersion k12{1, 2};
constexpr StructureVersion k13{1, 3};

using Record = MerakEepromRecord;

template <auto Member, std::size_t Turret>
RecordValue OfTurret(Record& record, std::size_t element) {
  return &(record.*Member)[Turret][element];
}

template <std::size_t Turret>
RecordValue NoOfGratings(Record& record, std::size_t /*element*/) {
  return &record.noOfGratings[Turret];
}

constexpr auto kReserved = nullptr;

// clang-format off
constexpr std::array<Field, kEepromFields> kFields{{
    // elements   width      since    value                              when absent
    {{1, 1},     {20, 20},   kAlways, One<&Record::idString>,                  kKeep},  //  0
    {{1, 1},     {10, 10},   kAlways, One<&Record::structureVersion>,          kKeep},  //  1
    {{1, 1},     {10, 10},   kAlways, One<&Record::serialNumber>,              kKeep},  //  2
    {{1, 1},     {11, 11},   kAlways, One<&Record::manufactureDate>,           kKeep},  //  3
    {{1, 1},     {11, 11},   kAlways, One<&Record::modifiedDate>,              kKeep},  //  4
    {{1, 1},     {4, 4},     kAlways, One<&Record::focalLength>,               kKeep},  //  5
    {{1, 1},     {4, 4},     kAlways, One<&Record::angularDeviation>,          kKeep},  //  6
    {{1, 1},     {4, 4},     kAlways, One<&Record::planeTilt>,                 kKeep},  //  7
    {{1, 1},     {181, 181}, kAlways, kReserved,                               kKeep},  //  8
    {{5, 5},     {4, 4},     kAlways, Many<&Record::coefficients>,             kKeep},  //  9
    {{1, 1},     {4, 4},     kAlways, One<&Record::sinPhase>,                  kKeep},  // 10
    {{1, 1},     {4, 4},     kAlways, One<&Record::sinFrequency>,              kKeep},  // 11
    {{1, 1},     {4, 4},     kAlways, One<&Record::sinAmplitude>,              kKeep},  // 12
    {{1, 1},     {1, 1},     kAlways, One<&Record::waveToStepsEnable>,         kKeep},  // 13
    {{1, 1},     {4, 4},     kAlways, One<&Record::currentWavelength>,         kKeep},  // 14
    // Turret 1. The offsets lie before the starts in every turret.
    {{3, 3},     {4, 4},     kAlways, OfTurret<&Record::gratingOffset, 0>,     kKeep},  // 15
    {{3, 3},     {4, 4},     kAlways, OfTurret<&Record::gratingStart, 0>,      kKeep},  // 16
    {{2, 4},     {4, 4},     kAlways, Many<&Record::detectorOffsets>,          kKeep},  // 17
    {{3, 3},     {4, 4},     k11,     OfTurret<&Record::gratingLines, 0>,      kKeep},  // 18
    {{3, 3},     {4, 6},     k11,     OfTurret<&Record::gratingBlaze, 0>,      kKeep},  // 19
    {{1, 1},     {1, 1},     k12,     NoOfGratings<0>,                         3},      // 20
    {{1, 1},     {1, 1},     k13,     One<&Record::noOfTurrets>,               1},      // 21
    {{1, 1},     {33, 19},   kAlways, kReserved,                               kKeep},  // 22, keeps 23 at 384
    {{6, 6},     {kLabel, kLabel}, kAlways, Many<&Record::filterLabels>,       kKeep},  // 23
    // Turret 2.
    {{3, 3},     {4, 4},     k13,     OfTurret<&Record::gratingOffset, 1>,     kKeep},  // 24
    {{3, 3},     {4, 4},     k13,     OfTurret<&Record::gratingStart, 1>,      kKeep},  // 25
    {{3, 3},     {4, 4},     k13,     OfTurret<&Record::gratingLines, 1>,      kKeep},  // 26
    {{3, 3},     {4, 6},     k13,     OfTurret<&Record::gratingBlaze, 1>,      kKeep},  // 27
    {{1, 1},     {1, 1},     k13,     NoOfGratings<1>,                         kKeep},  // 28
    // Turret 3.
    {{3, 3},     {4, 4},     k13,     OfTurret<&Record::gratingOffset, 2>,     kKeep},  // 29
    {{3, 3},     {4, 4},     k13,     OfTurret<&Record::gratingStart, 2>,      kKeep},  // 30
    {{3, 3},     {4, 4},     k13,     OfTurret<&Record::gratingLines, 2>,      kKeep},  // 31
    {{3, 3},     {4, 6},     k13,     OfTurret<&Record::gratingBlaze, 2>,      kKeep},  // 32
    {{1, 1},     {1, 1},     k13,     NoOfGratings<2>,                         kKeep},  // 33
    {{1, 1},     {1, 1},     k13,     One<&Record::activeTurret>,              0},      // 34
}};

/// The order of travel after the structure version. Fields of one line go value by value in turn, as a turret's
/// gratings do.
constexpr std::initializer_list<int> kOrder[] = {
    {0}, {2}, {3}, {4}, {5}, {6}, {7}, {9}, {12}, {10}, {11}, {13}, {14}, {17}, {23},
    {15, 16, 18, 19}, {20},
    {24, 25, 26, 27}, {28},
    {29, 30, 31, 32}, {33},
    {34}, {21},
};
// clang-format on

std::size_t LayoutOf(StructureVersion version) {
  return version.IsUpToMajor2() ? 0 : 1;
}

/// Walks the given fields element by element in turn, leaving out those for which `has` says no.
template <typename Numbers, typename Has>
bool WalkTogether(const Numbers& numbers, StructureVersion version, Record& record, const EepromTransfer& transfer,
                  Has has) {
  const std::size_t layout = LayoutOf(version);
  const EepromAddresses addresses = SetupEepromAddresses(version);
  const int most = kFields[static_cast<std::size_t>(*std::begin(numbers))].elements[layout];
  for (int element = 0; element < most; ++element) {
    for (const auto number : numbers) {
      const auto index = static_cast<std::size_t>(number);
      const Field& field = kFields[index];
      if (!has(field)) {
        continue;
      }
      const int width = field.width[layout];
      if (!transfer(field.valueOf(record, static_cast<std::size_t>(element)), addresses[index] + element * width,
                    width)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace

EepromAddresses SetupEepromAddresses(StructureVersion version) {
  const std::size_t layout = LayoutOf(version);
  EepromAddresses addresses{};
  int next = 1;
  for (std::size_t i = 0; i < addresses.size(); ++i) {
    addresses[i] = next;
    next += kFields[i].elements[layout] * kFields[i].width[layout];
  }
  return addresses;
}

void SetAbsentFields(StructureVersion version, MerakEepromRecord& record) {
  for (const Field& field : kFields) {
    if (!version.IsAtLeast(field.since) && field.whenAbsent != kKeep) {
      *std::get<int*>(field.valueOf(record, 0)) = field.whenAbsent;
    }
  }
}

bool WalkEepromField(std::size_t number, StructureVersion version, MerakEepromRecord& record,
                     const EepromTransfer& transfer) {
  return WalkTogether(std::initializer_list<std::size_t>{number}, version, record, transfer,
                      [](const Field& field) { return field.valueOf != nullptr; });
}

bool WalkEepromFields(StructureVersion version, MerakEepromRecord& record, const EepromTransfer& transfer) {
  return std::all_of(std::begin(kOrder), std::end(kOrder), [&](const auto& numbers) {
    return WalkTogether(numbers, version, record, transfer,
                        [version](const Field& field) { return version.IsAtLeast(field.since); });
  });
}

}  // namespace corvane
