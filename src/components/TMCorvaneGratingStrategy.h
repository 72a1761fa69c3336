// How gratings are selected and offsets kept: by the controller's firmware (TMCorvaneGratingStrategyBuiltIn) or by
// steps computed here (TCorvaneMerakStepTurret). TCorvaneMerakGrating chooses one for every call. Gratings count from
// 1, ports from 0; results are controller codes (core/MerakResult.h).
#pragma once

#include "core/MerakResult.h"

class TMCorvaneGratingStrategy {
 public:
  enum eWavelengthOption : int {
    /// The new grating goes to its zero order.
    kGoHome = 0,
    /// The new grating shows the wavelength that the old one showed.
    kKeepWavelength = 1,
  };

  virtual ~TMCorvaneGratingStrategy() = default;
  virtual MerakResult SetGrating(int grating, eWavelengthOption option) = 0;
  virtual MerakResult GetGrating(int& grating) = 0;
  /// Motor steps, for a grating of the active turret. kUnknownError for a grating that the EEPROM record has
  /// no room for.
  virtual MerakResult SetGratingOffset(int grating, int offset) = 0;
  virtual MerakResult GetGratingOffset(int grating, int& offset) = 0;
  /// Nothing is adjusted on this path; both succeed.
  virtual MerakResult GratingOffsetAutoAdjust() = 0;
  virtual MerakResult GratingOffsetCancelAutoAdjust() = 0;
  /// Motor steps, for an entrance and an exit port.
  virtual MerakResult SetDetectorOffset(int entrance, int exit, int offset) = 0;
  virtual MerakResult GetDetectorOffset(int entrance, int exit, int& offset) = 0;
};
