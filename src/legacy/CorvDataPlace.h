// Where one value of an older instrument's record lives in memory: how the tables of the EEPROM and of the data file,
// and their users, name a value.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

#include "legacy/CorvDataValues.h"
#include "legacy/LegacyResult.h"

namespace corvane {

using CorvDataPlace = std::variant<std::string*, float*, std::int32_t*, std::uint8_t*, std::int8_t*>;

/// Finds the element-th of the values that one row of a table stands for.
using CorvDataPlaces = CorvDataPlace (*)(CorvDataValues& values, std::size_t element);

namespace places {

template <auto Member>
CorvDataPlace One(CorvDataValues& values, std::size_t /*element*/) {
  return &(values.*Member);
}

/// The elements of an array, the first of the row being number First.
template <auto Member, std::size_t First = 0>
CorvDataPlace Many(CorvDataValues& values, std::size_t element) {
  return &(values.*Member)[First + element];
}

/// A motor's MINDUM, MAXDUM, DELDUM, MINSTEPS, MAXSTEPS.
template <std::size_t Motor>
CorvDataPlace Motion(CorvDataValues& values, std::size_t element) {
  CorvDataValues::Motion& motion = values.motors[Motor];
  const std::array<std::int32_t*, 5> order{&motion.ramp.minDum, &motion.ramp.maxDum, &motion.ramp.delDum,
                                           &motion.minSteps, &motion.maxSteps};
  return order[element];
}

/// The steps and the width of a slit's points in turn, from point First on.
template <std::size_t Slit, std::size_t First = 0>
CorvDataPlace SlitPoint(CorvDataValues& values, std::size_t element) {
  CorvDataValues::SlitPoint& point = values.slits[Slit].points[First + element / 2];
  return element % 2 == 0 ? &point.steps : &point.width;
}

template <std::size_t Turret>
CorvDataPlace GratingCount(CorvDataValues& values, std::size_t /*element*/) {
  return &values.turrets[Turret].numberOfGratings;
}

template <std::size_t Turret, auto Member>
CorvDataPlace OfGrating(CorvDataValues& values, std::size_t element) {
  return &(values.turrets[Turret].gratings[element].*Member);
}

}  // namespace places

/// What becomes of values once a row has brought them; its result ends a transfer unless it is legacy::kSuccess.
using CorvDataSettle = int (*)(CorvDataValues& values);

namespace settle {

inline int Turret(CorvDataValues& values) {
  ClampTurret(values);
  return legacy::kSuccess;
}

template <std::size_t Number>
int Gratings(CorvDataValues& values) {
  ClampGratings(values.turrets[Number]);
  return legacy::kSuccess;
}

template <std::size_t Number>
int Slit(CorvDataValues& values) {
  DeriveSlitCoefficients(values.slits[Number]);
  return legacy::kSuccess;
}

}  // namespace settle

}  // namespace corvane
