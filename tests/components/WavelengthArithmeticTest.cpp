#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "components/TStepperWaveToSteps.h"
#include "components/TTivanMath.h"
#include "components/TWavelengthConversion.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
/// p = x / 2400.
constexpr float kLinear[5] = {0.0F, 0.0F, 0.0F, 1.0F / 2400.0F, 0.0F};

std::int64_t Steps(float x, int offset, int version, unsigned long total, float amplitude = 0.0F, float phase = 0.0F,
                   float frequency = 0.0F, const float* coefficients = kLinear) {
  return TStepperWaveToSteps(coefficients, amplitude, phase, frequency, total).ToSteps(x, offset, version);
}

TEST(TStepperWaveToSteps, TurnsTheSineOfTheAngleIntoSteps) {
  EXPECT_EQ(Steps(1200.0F, 77, 1, 36000), 77 + 3000);
  EXPECT_EQ(Steps(1200.0F, 77, 2, 36000), 77 + 3000);
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36005), 3000) << "3000.4";
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36007), 3001) << "3000.6";
  EXPECT_EQ(Steps(-1200.0F, 0, 2, 36007), -3001) << "rounded away from zero on both sides";
  EXPECT_EQ(Steps(2400.0F, -5, 2, 36000), 9000 - 5) << "p = 1 is still within reach";
}

TEST(TStepperWaveToSteps, StaysAtTheZeroPositionBelowOneAndOutOfReach) {
  for (const int version : {1, 3}) {
    EXPECT_EQ(Steps(0.5F, 42, version, 36000), 42);
    EXPECT_EQ(Steps(-0.99F, 42, version, 36000), 42);
    EXPECT_EQ(Steps(2880.0F, 42, version, 36000), 42) << "p = 1.2";
    EXPECT_EQ(Steps(-2880.0F, 42, version, 36000), 42) << "p = -1.2 has no angle either";
    for (const float hostile : {kNaN, kInfinity, -kInfinity}) {
      const float coefficients[5] = {0.0F, 0.0F, 0.0F, 0.0F, hostile};
      EXPECT_EQ(Steps(500.0F, 42, version, 36000, 0, 0, 0, coefficients), 42);
      EXPECT_EQ(Steps(hostile, 42, version, 36000), 42);
      EXPECT_EQ(Steps(500.0F, 42, version, 36000, hostile, 0.1F, 100.0F), 42);
      EXPECT_EQ(Steps(500.0F, 42, version, 36000, 1.0F, hostile, 100.0F), 42);
    }
  }
}

TEST(TStepperWaveToSteps, SineCorrectionChangesSignWithTheStructure) {
  // A period so long that the sine is that of the phase alone: 10 * sin(pi / 2).
  constexpr float kQuarter = 1.5707964F;
  EXPECT_EQ(Steps(1200.0F, 500, 1, 36000, 10.0F, kQuarter, 1e12F), 3510);
  EXPECT_EQ(Steps(1200.0F, 500, 2, 36000, 10.0F, kQuarter, 1e12F), 3490);
  EXPECT_EQ(Steps(1200.0F, 500, 1, 36000, -4000.0F, kQuarter, 1e12F), 500)
      << "the older one is cut at the zero position";
  EXPECT_EQ(Steps(1200.0F, 500, 2, 36000, 4000.0F, kQuarter, 1e12F), -500) << "the newer one is not";
  EXPECT_EQ(Steps(-1200.0F, 500, 1, 36000), 500);
  // The period is in steps: 3000 steps are a quarter of 12000.
  EXPECT_EQ(Steps(1200.0F, 0, 1, 36000, 10.0F, 0.0F, 12000.0F), 3010);
  EXPECT_EQ(Steps(1200.0F, 0, 1, 36000, 0.0F, 1.0F, 0.0F), 3000);
  EXPECT_EQ(Steps(1200.0F, 0, 1, 36000, 10.0F, 1.0F, 0.0F), 3000) << "without a period there is no correction";
}

TEST(TStepperWaveToSteps, PolynomialIsSummedInSinglePrecisionFromTheConstantUp) {
  const float c[5] = {3.1e-15F, -2.7e-11F, 1.3e-8F, 3.9e-4F, 0.0123F};
  constexpr unsigned long kTotal = 4'000'000'000'000UL;
  for (float x = 3.3F; x < 1500.0F; x *= 1.7F) {
    // Every product and every sum rounded to single precision by being stored.
    volatile float sum = c[4];
    for (int power = 1; power <= 4; ++power) {
      volatile float term = c[4 - power];
      for (int i = 0; i < power; ++i) {
        term = term * x;
      }
      sum = sum + term;
    }
    const long double degrees =
        static_cast<long double>(std::asin(static_cast<double>(sum))) * static_cast<long double>(57.29577951308232);
    EXPECT_EQ(Steps(x, 0, 2, kTotal, 0, 0, 0, c), std::llround(static_cast<long double>(kTotal) * degrees / 360.0L));
  }
}

TEST(TStepperWaveToSteps, NumbersBeyond64BitsAreBounded) {
  constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
  EXPECT_EQ(static_cast<std::uint64_t>(Steps(2400.0F, 0, 2, kMost)) >> 61, 1U) << "2^62, a quarter revolution";
  const std::int64_t beyond = Steps(1200.0F, 0, 2, 36000, -1e19F, 1.5707964F, 1e12F);
  EXPECT_LT(beyond, 0);
  EXPECT_NEAR(static_cast<double>(static_cast<std::uint64_t>(beyond)), 1e19, 1e13)
      << "2^63 and above come out as the unsigned image";
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36000, -3e38F, 1.5707964F, 1e12F), -1);
  EXPECT_EQ(Steps(1200.0F, 0, 2, 36000, 3e38F, 1.5707964F, 1e12F), std::numeric_limits<std::int64_t>::min());
}

using Conversion = TWavelengthConversion;

TEST(TWavelengthConversion, ConvertsWavelengthsBothWays) {
  const struct {
    Conversion::eWaveUnit unit;
    float value, nm;
  } pairs[] = {{Conversion::kNanometres, 450.0F, 450.0F},
               {static_cast<Conversion::eWaveUnit>(17), 450.0F, 450.0F},
               {Conversion::kElectronVolts, 2.0F, 619.926F},
               {Conversion::kMicrometres, 0.5F, 0.5F / 0.001F},  // divided, not multiplied by 1000
               {Conversion::kWavenumbers, 20000.0F, 500.0F}};
  for (const auto& [unit, value, nm] : pairs) {
    EXPECT_FLOAT_EQ(Conversion::ToNm(value, Conversion::kWavelength, unit, 0.0F), nm) << unit;
    EXPECT_FLOAT_EQ(Conversion::FromNm(nm, Conversion::kWavelength, unit, 0.0F), value) << unit;
    for (const float bad : {0.0F, -1.0F}) {
      EXPECT_EQ(Conversion::ToNm(bad, Conversion::kWavelength, unit, 0.0F), -1.0F);
      EXPECT_EQ(Conversion::FromNm(bad, Conversion::kWavelength, unit, 0.0F), -1.0F);
    }
  }
  EXPECT_EQ(Conversion::ToNm(0.5F, Conversion::kWavelength, Conversion::kMicrometres, 0.0F), 0.5F / 0.001F);
}

TEST(TWavelengthConversion, ConvertsRamanShiftsWhateverTheUnit) {
  constexpr auto kShift = Conversion::kRamanShift;
  for (const auto unit : {Conversion::kMicrometres, Conversion::kWavenumbers, Conversion::kNanometres}) {
    EXPECT_EQ(Conversion::ToNm(0.0F, kShift, unit, -3.0F), -3.0F) << "before the excitation is checked";
    EXPECT_EQ(Conversion::FromNm(532.0F, kShift, unit, 532.0F), 0.0F);
    // 532 nm is 18796.99 cm^-1; 1000 less is 561.89 nm.
    EXPECT_NEAR(Conversion::ToNm(1000.0F, kShift, unit, 532.0F), 561.893F, 0.001F);
    EXPECT_NEAR(Conversion::FromNm(561.893F, kShift, unit, 532.0F), 1000.0F, 0.1F);
    EXPECT_EQ(Conversion::ToNm(1000.0F, kShift, unit, 0.0F), -1.0F);
    EXPECT_EQ(Conversion::FromNm(500.0F, kShift, unit, 0.0F), -1.0F);
    EXPECT_EQ(Conversion::FromNm(-500.0F, kShift, unit, 532.0F), -1.0F);
    const auto unknown = static_cast<Conversion::eWaveType>(2);
    EXPECT_EQ(Conversion::ToNm(500.0F, unknown, unit, 532.0F), -1.0F);
    EXPECT_EQ(Conversion::FromNm(500.0F, unknown, unit, 532.0F), -1.0F);
  }
}

TEST(TTivanMath, ZeroIsBelowAMillionth) {
  using TivanUtility::TTivanMath;
  EXPECT_TRUE(TTivanMath::IsZero(-0.0F));
  EXPECT_TRUE(TTivanMath::IsZero(-9.9e-7F));
  EXPECT_FALSE(TTivanMath::IsZero(1e-6F));
  EXPECT_FALSE(TTivanMath::IsZero(kNaN));
}

}  // namespace
