// Corvane: homing of the wave drive. This library's own sequence.
//
// A disc on the drive has two holes, each described by a stage of the record. A stage runs forward until the sensor
// sees the hole (FINDDIST at most, with the FIND ramp), goes on into it (INTODIST), and turns back until the sensor
// sees the hole's edge (EDGEDIST at most, with the EDGE ramp), which is the reference. The first hole is coarse and may
// lie a whole turn away, the second one is fine and close behind it. The drive stands at position 0 after the second.
#include "legacy/Corvane.h"

unsigned int Corvane::ResetWavelength(bool full) {
  if (!HasData()) {
    return kNoData;
  }
  // Until the reference is found nobody knows where the drive stands.
  SaveCurrentWaveSteps(kNoStepPosition);
  const auto& holes = mData.values.holes;
  if ((full && FindHole(holes.front()) != kSuccess) || FindHole(holes.back()) != kSuccess) {
    return kFailure;
  }
  return SaveCurrentWaveSteps(0);
}

unsigned int Corvane::FindHole(const corvane::CorvDataValues::Hole& hole) {
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
    SetDirection(corvane::kWaveMotor, move.forward);
    if (move.steps < 1 || StartMove(corvane::kWaveMotor, move.steps, move.mode, move.ramp) != kSuccess ||
        mData.WaitForStandstill(corvane::kWaveMotor) != legacy::kSuccess) {
      return kFailure;
    }
  }
  return kSuccess;
}
