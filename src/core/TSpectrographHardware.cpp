#include "core/TSpectrographHardware.h"

#include <algorithm>
#include <cstddef>

namespace {

template <typename Array, typename Position>
auto* At(const Array& parts, Position position) {
  const auto index = static_cast<std::size_t>(position);
  return index < parts.size() ? parts[index].get() : nullptr;
}

}  // namespace

TSpectrographHardware::TSpectrographHardware() = default;

TSpectrographHardware::~TSpectrographHardware() {
  DestroyComponents();
}

void TSpectrographHardware::DestroyComponents() {
  for (auto& slit : mSlit) {
    slit.reset();
  }
  for (auto& flipper : mFlipper) {
    flipper.reset();
  }
  // The wavelength observes the grating, so it goes first.
  mWavelength.reset();
  mShutter.reset();
  mGrating.reset();
  mFilter.reset();
  mFocusMirror.reset();
  mEeprom.reset();
  mAccessory.reset();
}

ISpectrographSlit* TSpectrographHardware::GetSlitInterface(ISpectrographSlit::TSlitPosition position) const {
  return At(mSlit, position);
}

ISpectrographFlipper* TSpectrographHardware::GetFlipperInterface(
    ISpectrographFlipper::TFlipperPosition position) const {
  return At(mFlipper, position);
}

void TSpectrographHardware::GetSerialNumber(char* out, int max) const {
  const int count = std::clamp(max, 0, kSerialLength);
  std::copy_n(mSerial.begin(), count, out);
}
