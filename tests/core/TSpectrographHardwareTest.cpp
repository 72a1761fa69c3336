#include "core/TSpectrographHardware.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

class EmptyHardware : public TSpectrographHardware {
 public:
  EmptyHardware() { std::strcpy(mSerial.data(), "CV1234"); }
  void Initialise() override {}
};

TEST(TSpectrographHardware, SerialIsCopiedByteForByteWithinTheBuffer) {
  const EmptyHardware hardware;
  std::string out(60, '#');
  hardware.GetSerialNumber(out.data(), 20);
  EXPECT_EQ(out.substr(0, 21), std::string("CV1234") + std::string(14, '\0') + "#")
      << "the rest of the buffer comes along, and no byte more";
  hardware.GetSerialNumber(out.data(), 1000);
  EXPECT_EQ(out[49], '\0');
  EXPECT_EQ(out[50], '#');
}

TEST(TSpectrographHardware, UnfittedAndUnknownPositionsAreNull) {
  const EmptyHardware hardware;
  EXPECT_EQ(hardware.GetWavelengthInterface(), nullptr);
  EXPECT_EQ(hardware.GetSlitInterface(ISpectrographSlit::kSlitPosition3), nullptr);
  EXPECT_EQ(hardware.GetSlitInterface(static_cast<ISpectrographSlit::TSlitPosition>(-1)), nullptr);
  EXPECT_EQ(hardware.GetFlipperInterface(static_cast<ISpectrographFlipper::TFlipperPosition>(2)), nullptr);
}

}  // namespace
