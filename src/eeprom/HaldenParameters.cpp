#include "eeprom/HaldenParameters.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "core/TextLengths.h"

namespace corvane {

namespace {

using Record = MerakEepromRecord;

/// The parameters of one field of the record, which are numbered evenly.
struct ParameterRun {
  /// Number of the first element; the others follow by `step`.
  int first = 0;
  int step = 1;
  int elements = 1;
  RecordValueOf valueOf = nullptr;
  HaldenPart part = HaldenPart::kOther;
  /// Travels element by element in turn with the run before it.
  bool inTurn = false;
  std::size_t longestText = kMaxTextLength;
};

/// All gratings of the first turret, then of the second, ...
template <auto Member>
RecordValue PerGrating(Record& record, std::size_t element) {
  return &(record.*Member)[element / Record::kGratings][element % Record::kGratings];
}

constexpr int kAllGratings = Record::kTurrets * Record::kGratings;
constexpr auto kOther = HaldenPart::kOther;
constexpr auto kOptics = HaldenPart::kOptics;
constexpr auto kOffsets = HaldenPart::kOffsets;

// clang-format off
/// In the order of travel.
constexpr ParameterRun kRuns[] = {
    // first, step, elements
    {1,   1, 1,                        One<&Record::idString>},
    {5,   1, 1,                        One<&Record::structureVersion>},
    {0,   1, 1,                        One<&Record::serialNumber>},
    {2,   1, 1,                        One<&Record::manufactureDate>},
    {3,   1, 1,                        One<&Record::modifiedDate>},
    {6,   1, 1,                        One<&Record::focalLength>, kOptics},
    {7,   1, 1,                        One<&Record::angularDeviation>, kOptics},
    {8,   1, 1,                        One<&Record::planeTilt>, kOptics},
    {14, -1, Record::kCoefficients,    Many<&Record::coefficients>},
    {16,  1, 1,                        One<&Record::sinAmplitude>},
    {17,  1, 1,                        One<&Record::sinPhase>},
    {15,  1, 1,                        One<&Record::sinFrequency>},
    {55,  1, kAllGratings,             PerGrating<&Record::gratingOffset>, kOffsets},
    {19,  1, kAllGratings,             PerGrating<&Record::gratingStart>, kOther, true},
    {31,  1, kAllGratings,             PerGrating<&Record::gratingLines>, kOther, true},
    {43,  1, kAllGratings,             PerGrating<&Record::gratingBlaze>, kOther, true,
                                       kMaxBlazeLength},
    {67,  1, Record::kDetectorOffsets, Many<&Record::detectorOffsets>, kOffsets},
    {82,  1, Record::kFilters,         Many<&Record::filterLabels>},
    {114, 1, Record::kTurrets,         Many<&Record::noOfGratings>},
    {18,  1, 1,                        One<&Record::heldTurret>},
};
// clang-format on

HaldenParameter ParameterOf(const ParameterRun& run, int element, Record& record) {
  return {run.first + run.step * element, run.valueOf(record, static_cast<std::size_t>(element)), run.longestText};
}

/// Walks the runs that `has` says yes to.
template <typename Has>
bool Walk(Record& record, const HaldenTransfer& transfer, Has has) {
  const ParameterRun* next = std::begin(kRuns);
  while (next != std::end(kRuns)) {
    const ParameterRun* const first = next;
    next = std::find_if(first + 1, std::end(kRuns), [](const ParameterRun& run) { return !run.inTurn; });
    for (int element = 0; element < first->elements; ++element) {
      for (const ParameterRun* run = first; run != next; ++run) {
        if (has(*run) && !transfer(ParameterOf(*run, element, record))) {
          return false;
        }
      }
    }
  }
  return true;
}

}  // namespace

bool WalkHaldenParameters(MerakEepromRecord& record, const HaldenTransfer& transfer) {
  return Walk(record, transfer, [](const ParameterRun& /*run*/) { return true; });
}

bool WalkHaldenParameters(HaldenPart part, MerakEepromRecord& record, const HaldenTransfer& transfer) {
  return Walk(record, transfer, [part](const ParameterRun& run) { return run.part == part; });
}

}  // namespace corvane
