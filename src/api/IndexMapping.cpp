#include "api/IndexMapping.h"

#include "core/TCorvaneException.h"

namespace {

template <typename Position>
Position Map(int number, int first, int last) {
  if (number < first || number > last) {
    throw TCorvaneException(1);
  }
  return static_cast<Position>(number - first);
}

}  // namespace

ISpectrographSlit::TSlitPosition SDKSlitIndexToSlitPosition(int slit) {
  return Map<ISpectrographSlit::TSlitPosition>(slit, 1, 4);
}

ISpectrographFlipper::TFlipperPosition SDKFlipperIndexToFlipperPosition(int flipper) {
  return Map<ISpectrographFlipper::TFlipperPosition>(flipper, 1, 2);
}

ISpectrographFlipper::TPortPosition SDKPortIndexToPortPosition(int port) {
  return Map<ISpectrographFlipper::TPortPosition>(port, 0, 1);
}
