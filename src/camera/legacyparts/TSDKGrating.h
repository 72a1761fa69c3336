// The gratings and the turret of an older instrument.
#pragma once

#include "core/ISpectrographGrating.h"

class Corvane;

/// Always present. Failures throw TCorvaneException(TCorvaneException::kFailure).
class TSDKGrating final : public ISpectrographGrating {
 public:
  /// Borrowed; outlives the component.
  explicit TSDKGrating(Corvane* driver) : mDriver(driver) {}

  void SetGrating(int grating) override;
  int GetGrating() override;
  void Reset() override;
  /// Homes the drive by its second, fine hole alone.
  void UnsafeReset() override;
  int GetNumberGratings() override;
  /// blaze belongs to the driver's record and holds until its next load.
  void GetGratingInfo(int grating, float& lines, const char*& blaze, float& home, float& offset) override;
  void SetDetectorOffset(int entrance, int exit, int offset) override;
  int GetDetectorOffset(int entrance, int exit) override;
  /// The first port's offset, whichever port is in use.
  void SetDetectorOffset(int offset) override;
  /// The first port's offset as the driver holds it; the instrument is not asked.
  int GetDetectorOffset() override;
  void SetGratingOffset(int grating, int offset) override;
  /// As the driver holds it for the turret in use; the instrument is not asked.
  int GetGratingOffset(int grating) override;
  /// Nothing to adjust on these instruments.
  void GratingOffsetAutoAdjust() override;
  void GratingOffsetCancelAutoAdjust() override;
  /// The clients are told of busy and idle only, deliberately.
  void SetTurret(int turret) override;
  int GetTurret() override;

 private:
  Corvane* mDriver;
};
