// Slit, flipper and port numbers of the exported functions to positions of the components.
#pragma once

#include "core/ISpectrographFlipper.h"
#include "core/ISpectrographSlit.h"

namespace corvane {

/// Slits count from 1, flippers from 1, ports from 0.
bool SlitKnown(int slit);
bool FlipperKnown(int flipper);
bool PortKnown(int port);

}  // namespace corvane

/// The first number is position 0. Each throws TCorvaneException for a number that is not known.
ISpectrographSlit::TSlitPosition SDKSlitIndexToSlitPosition(int slit);
ISpectrographFlipper::TFlipperPosition SDKFlipperIndexToFlipperPosition(int flipper);
ISpectrographFlipper::TPortPosition SDKPortIndexToPortPosition(int port);
