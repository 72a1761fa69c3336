#include "legacy/CorvDataField.h"

#include <array>
#include <iterator>

namespace corvane {
namespace {

using Values = CorvDataValues;

template <auto Member>
CorvValue One(Values& values, std::size_t /*element*/) {
  return &(values.*Member);
}

template <auto Member>
CorvValue Many(Values& values, std::size_t element) {
  return &(values.*Member)[element];
}

CorvValue Motion(Values& values, std::size_t element) {
  Values::Motion& motion = values.motors[element / kMotionValues];
  const std::array<std::int32_t*, kMotionValues> order{&motion.ramp.minDum, &motion.ramp.maxDum, &motion.ramp.delDum,
                                                       &motion.minSteps, &motion.maxSteps};
  return order[element % kMotionValues];
}

CorvValue Hole(Values& values, std::size_t element) {
  Values::Hole& hole = values.holes[element / kHoleValues];
  const std::array<std::int32_t*, kHoleValues> order{&hole.findDist,    &hole.find.minDum, &hole.find.maxDum,
                                                     &hole.find.delDum, &hole.intoDist,    &hole.edgeDist,
                                                     &hole.edge.minDum, &hole.edge.maxDum, &hole.edge.delDum};
  return order[element % kHoleValues];
}

CorvValue SlitPoint(Values& values, std::size_t element) {
  auto& [first, second] = values.slits[element / kSlitPointValues].points;
  const std::array<std::int32_t*, kSlitPointValues> order{&first.steps, &first.width, &second.steps, &second.width};
  return order[element % kSlitPointValues];
}

CorvValue NumberOfGratings(Values& values, std::size_t element) {
  return &values.turrets[element].numberOfGratings;
}

template <auto Member>
CorvValue OfEachGrating(Values& values, std::size_t element) {
  return &(values.turrets[element / Values::kGratings].gratings[element % Values::kGratings].*Member);
}

using Grating = Values::Grating;

struct FieldInMemory {
  CorvField field;
  CorvValue (*find)(Values& values, std::size_t element);
};

// In the order of CorvField.
constexpr FieldInMemory kFields[] = {
    {CorvField::kCommAdd, One<&Values::commAdd>},
    {CorvField::kIdString, One<&Values::idString>},
    {CorvField::kStructureVersion, One<&Values::structureVersion>},
    {CorvField::kInstrumentVersion, One<&Values::instrumentVersion>},
    {CorvField::kDateOfManufacture, One<&Values::dateOfManufacture>},
    {CorvField::kDate, One<&Values::date>},
    {CorvField::kFocalLength, One<&Values::focalLength>},
    {CorvField::kAngularDeviation, One<&Values::angularDeviation>},
    {CorvField::kFocalTilt, One<&Values::focalTilt>},
    {CorvField::kCurrentWave, One<&Values::currentWave>},
    {CorvField::kCurrentSlit, Many<&Values::currentSlit>},
    {CorvField::kCurrentFilter, One<&Values::currentFilter>},
    {CorvField::kCurrentMirror, One<&Values::currentMirror>},
    {CorvField::kTurret, One<&Values::turret>},
    {CorvField::kDetectorOffset, Many<&Values::detectorOffset>},
    {CorvField::kMotion, Motion},
    {CorvField::kPolynomial, Many<&Values::polynomial>},
    {CorvField::kLinear, Many<&Values::linear>},
    {CorvField::kQuadratic, Many<&Values::quadratic>},
    {CorvField::kSinPhase, One<&Values::sinPhase>},
    {CorvField::kSinFrequency, One<&Values::sinFrequency>},
    {CorvField::kSinAmplitude, One<&Values::sinAmplitude>},
    {CorvField::kHole, Hole},
    {CorvField::kSlitPoint, SlitPoint},
    {CorvField::kNumberOfFilters, One<&Values::numberOfFilters>},
    {CorvField::kFilterLabel, Many<&Values::filterLabels>},
    {CorvField::kFilterResetOffset, One<&Values::filterResetOffset>},
    {CorvField::kFilterSensorBits, Many<&Values::filterSensorBits>},
    {CorvField::kFilterDelta, Many<&Values::filterDelta>},
    {CorvField::kShutterType, One<&Values::shutterType>},
    {CorvField::kShutterMode, One<&Values::shutterMode>},
    {CorvField::kShutterCustomBgMode, One<&Values::shutterCustomBgMode>},
    {CorvField::kShutterCustomAqMode, One<&Values::shutterCustomAqMode>},
    {CorvField::kShutterOpenTime, One<&Values::shutterOpenTime>},
    {CorvField::kShutterCloseTime, One<&Values::shutterCloseTime>},
    {CorvField::kShutterFreqLimit, One<&Values::shutterFreqLimit>},
    {CorvField::kNumberOfTurrets, One<&Values::numberOfTurrets>},
    {CorvField::kNumberOfGratings, NumberOfGratings},
    {CorvField::kGratingLines, OfEachGrating<&Grating::lines>},
    {CorvField::kGratingBlaze, OfEachGrating<&Grating::blaze>},
    {CorvField::kGratingOffset, OfEachGrating<&Grating::offset>},
    {CorvField::kGratingStart, OfEachGrating<&Grating::start>},
};

constexpr bool StandInOrder() {
  for (std::size_t i = 0; i < std::size(kFields); ++i) {
    if (static_cast<std::size_t>(kFields[i].field) != i) {
      return false;
    }
  }
  return std::size(kFields) == static_cast<std::size_t>(CorvField::kGratingStart) + 1;
}
static_assert(StandInOrder());

}  // namespace

CorvValue ValueOf(CorvDataValues& values, CorvValueId id) {
  return kFields[static_cast<std::size_t>(id.field)].find(values, id.element);
}

}  // namespace corvane
