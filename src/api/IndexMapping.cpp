#include "api/IndexMapping.h"

#include "core/TCorvaneException.h"

namespace {

constexpr int kFirstSlit = 1;
constexpr int kFirstFlipper = 1;
constexpr int kFirstPort = 0;

bool IsAmong(int number, int first, int count) {
  return number >= first && number < first + count;
}

void Require(bool known) {
  if (!known) {
    throw TCorvaneException(TCorvaneException::kFailure);
  }
}

}  // namespace

namespace corvane {

bool SlitKnown(int slit) {
  return IsAmong(slit, kFirstSlit, ISpectrographSlit::kPositions);
}

bool FlipperKnown(int flipper) {
  return IsAmong(flipper, kFirstFlipper, ISpectrographFlipper::kPositions);
}

bool PortKnown(int port) {
  return IsAmong(port, kFirstPort, ISpectrographFlipper::kPorts);
}

}  // namespace corvane

ISpectrographSlit::TSlitPosition SDKSlitIndexToSlitPosition(int slit) {
  Require(corvane::SlitKnown(slit));
  return static_cast<ISpectrographSlit::TSlitPosition>(slit - kFirstSlit);
}

ISpectrographFlipper::TFlipperPosition SDKFlipperIndexToFlipperPosition(int flipper) {
  Require(corvane::FlipperKnown(flipper));
  return static_cast<ISpectrographFlipper::TFlipperPosition>(flipper - kFirstFlipper);
}

ISpectrographFlipper::TPortPosition SDKPortIndexToPortPosition(int port) {
  Require(corvane::PortKnown(port));
  return static_cast<ISpectrographFlipper::TPortPosition>(port - kFirstPort);
}
