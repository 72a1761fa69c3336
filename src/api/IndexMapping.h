// Slit, flipper and port numbers of the exported functions to positions of the components. Each throws
// TCorvaneException(1) for a number it does not know.
#pragma once

#include "core/ISpectrographFlipper.h"
#include "core/ISpectrographSlit.h"

/// 1 to 4 to positions 0 to 3.
ISpectrographSlit::TSlitPosition SDKSlitIndexToSlitPosition(int slit);
/// 1, 2 to positions 0, 1.
ISpectrographFlipper::TFlipperPosition SDKFlipperIndexToFlipperPosition(int flipper);
/// 0, 1 to positions 0, 1.
ISpectrographFlipper::TPortPosition SDKPortIndexToPortPosition(int port);
