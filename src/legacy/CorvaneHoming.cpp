// Corvane: homing of the wave drive. This library's own sequence.
//
// A disc on the drive has two holes, each described by a stage of the record. A stage runs forward until the sensor
// sees the hole (FINDDIST at most, with the FIND ramp), goes on into it (INTODIST), and turns back until the sensor
// sees the hole's edge (EDGEDIST at most, with the EDGE ramp), which is the reference. The first hole is coarse and may
// lie a whole turn away, the second one is fine and close behind it. The drive stands at position 0 after the second.
//
// A leg of length 0 is left out; a homing that looks for nothing, or has a negative length, fails before it moves. No
// register tells what the sensor saw or how far a move went: a hole that was not found goes unnoticed.
#include <algorithm>
#include <initializer_list>

#include "legacy/Corvane.h"

using corvane::CorvDataValues;

namespace {

bool HasPossibleLegs(const CorvDataValues::Hole& hole) {
  return std::min({hole.findDist, hole.intoDist, hole.edgeDist}) >= 0;
}

bool IsLookedFor(const CorvDataValues::Hole& hole) {
  return hole.findDist > 0 || hole.edgeDist > 0;
}

}  // namespace

unsigned int Corvane::ResetWavelength(bool full) {
  return OnRecord([&](CorvDataValues& values) -> unsigned int {
    const auto& [coarse, fine] = values.holes;
    const bool possible = HasPossibleLegs(fine) && (!full || HasPossibleLegs(coarse));
    if (!possible || !(IsLookedFor(fine) || (full && IsLookedFor(coarse)))) {
      return kFailure;
    }
    // Until the reference is found nobody knows where the drive stands.
    SaveCurrentWaveSteps(kNoStepPosition);
    if ((full && FindHole(coarse) != kSuccess) || FindHole(fine) != kSuccess) {
      return kFailure;
    }
    return SaveCurrentWaveSteps(0);
  });
}

unsigned int Corvane::FindHole(const CorvDataValues::Hole& hole) {
  using corvane::MoveMode;
  const struct {
    bool forward;
    int steps;
    MoveMode mode;
    const corvane::StepRamp& ramp;
  } moves[] = {
      {true, hole.findDist, MoveMode::kStopAtHole, hole.find},
      {true, hole.intoDist, MoveMode::kPlain, hole.find},
      {false, hole.edgeDist, MoveMode::kStopAtEdge, hole.edge},
  };
  for (const auto& move : moves) {
    if (move.steps == 0) {
      continue;
    }
    SetDirection(corvane::kWaveMotor, move.forward);
    if (StartMove(corvane::kWaveMotor, move.steps, move.mode, move.ramp) != kSuccess ||
        Bus().WaitForStandstill(corvane::kWaveMotor) != corvane::legacy::kSuccess) {
      return kFailure;
    }
  }
  return kSuccess;
}
