// The wavelength drive of an older instrument: a shaft of 480000 steps a turn with play, and two holes in a disc on it
// by which it is homed, a fine one inside a coarse one. Used by LegacyMotors.
#pragma once

namespace corvane::sim {

/// How a move may end early.
enum class HoleMode {
  kPlain,       ///< not at all
  kStopAtHole,  ///< at the first step in a hole that it was not in
  kStopAtEdge   ///< at the last step in the innermost hole that it started in
};

class WaveDrive {
 public:
  static constexpr int kTurn = 480000;

  /// position: of the shaft, in steps from the fine hole's lower edge. backlash: steps of the motor that the shaft does
  /// not follow when the direction turns.
  WaveDrive(int position, int backlash);

  /// Turns the motor; the steps it made.
  int Move(bool forward, int steps, HoleMode mode);

  /// Of the shaft, in 0 to kTurn - 1.
  int Position() const { return mPosition; }
  bool LastForward() const { return mLastForward; }

 private:
  void Step(bool forward);

  int mPosition;
  int mBacklash;
  int mSlack = 0;  ///< how much of the backlash lies ahead of the next step forward
  bool mLastForward = true;
};

}  // namespace corvane::sim
