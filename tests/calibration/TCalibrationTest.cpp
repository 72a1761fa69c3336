#include "calibration/TCalibration.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

#include "support/FakeSpectrograph.h"

namespace {

class FakeDetector final : public TDetectorInterface {
 public:
  unsigned int GetPixelWidth(float& width) override {
    if (!mWidthFails) {
      width = 13.5F;
    }
    return mWidthFails ? 2 : 0;
  }
  unsigned int GetNumberOfPixels(int& count) override {
    if (!mCountFails) {
      count = 1024;
    }
    return mCountFails ? 2 : 0;
  }

  bool mWidthFails = false;
  bool mCountFails = false;
};

class Calibration : public testing::Test {
 protected:
  FakeHardware mHardware;
  FakeDetector mDetector;
  TCalibration mCalibration{&mDetector, &mHardware};
  TCalibration mWithoutDetector{nullptr, &mHardware};
};

TEST_F(Calibration, AsksTheDetectorUntilAValueIsSet) {
  float width = 0.0F;
  int count = 0;
  for (const float ignored : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
    mCalibration.SetPixelWidth(ignored);
  }
  mCalibration.SetNumberPixels(0);
  mCalibration.SetNumberPixels(-1);
  EXPECT_EQ(0U, mCalibration.GetPixelWidth(width));
  EXPECT_EQ(0U, mCalibration.GetNumberPixels(count));
  EXPECT_EQ(13.5F, width);
  EXPECT_EQ(1024, count);

  mDetector.mWidthFails = mDetector.mCountFails = true;
  EXPECT_EQ(1U, mCalibration.GetPixelWidth(width));
  EXPECT_EQ(2U, mCalibration.GetNumberPixels(count));
  EXPECT_EQ(13.5F, width);
  EXPECT_EQ(1024, count);
  mCalibration.SetPixelWidth(26.0F);
  EXPECT_EQ(0U, mCalibration.GetPixelWidth(width));
  EXPECT_EQ(2U, mCalibration.GetNumberPixels(count)) << "each value by itself";
  mCalibration.SetNumberPixels(512);
  EXPECT_EQ(0U, mCalibration.GetNumberPixels(count));
  EXPECT_EQ(26.0F, width);
  EXPECT_EQ(512, count);

  EXPECT_EQ(0U, mWithoutDetector.GetPixelWidth(width));
  EXPECT_EQ(0U, mWithoutDetector.GetNumberPixels(count));
  EXPECT_EQ(0.0F, width);
  EXPECT_EQ(0, count);
}

TEST_F(Calibration, GivesTheFirstPixelsItsOwnWavelengths) {
  TCalibrationAlgorithm::TConstants c;
  ASSERT_EQ(0U, mCalibration.GetCalibrationConstants(&c.c0, &c.c1, &c.c2, &c.c3));
  TCalibrationAlgorithm::TConstants direct;
  ASSERT_EQ(0, TCalibrationAlgorithm::GetConstants(direct, 550.0F, TWavelengthConversion::kWavelength,
                                                   TWavelengthConversion::kNanometres, 0.0F, 0, 13.5F, 1024, 0.328F,
                                                   3.3F, 15.2F, 600.0, false));
  EXPECT_EQ(direct.c0, c.c0);
  EXPECT_EQ(direct.c1, c.c1);
  EXPECT_EQ(direct.c2, c.c2);
  EXPECT_EQ(direct.c3, c.c3);

  std::vector<float> ten(11, -1.0F);
  ASSERT_EQ(0U, mCalibration.GetCalibration(ten.data(), 10));
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(c.ValueFor(static_cast<float>(i + 1)), ten[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(-1.0F, ten[10]);

  std::vector<float> more(1'025, -1.0F);
  ASSERT_EQ(0U, mCalibration.GetCalibration(more.data(), 2'000'000));
  EXPECT_EQ(c.ValueFor(1024.0F), more[1'023]);
  EXPECT_EQ(-1.0F, more[1'024]) << "no more than the detector has";

  EXPECT_EQ(0U, mCalibration.GetCalibration(more.data(), -1));
  EXPECT_EQ(0U, mCalibration.GetCalibration(nullptr, 10));
  EXPECT_EQ(0U, mCalibration.GetCalibrationConstants(nullptr, nullptr, nullptr, nullptr));
}

TEST_F(Calibration, FollowsTheInstrument) {
  float before = 0.0F;
  float after = 0.0F;
  ASSERT_EQ(0U, mCalibration.GetCalibration(&before, 1));
  mHardware.wave->SetWavelength(600.0F);
  ASSERT_EQ(0U, mCalibration.GetCalibration(&after, 1));
  EXPECT_NEAR(50.0F, after - before, 1.0F);
}

TEST_F(Calibration, AMissingInputLeavesTheOutputsAlone) {
  float out = -1.0F;
  const auto refused = [&out](TCalibration& calibration) {
    return calibration.GetCalibration(&out, 1) == 3 &&
           calibration.GetCalibrationConstants(&out, &out, &out, &out) == 3 && out == -1.0F;
  };
  EXPECT_TRUE(refused(mWithoutDetector)) << "no pixel width";
  mWithoutDetector.SetPixelWidth(13.5F);
  EXPECT_TRUE(refused(mWithoutDetector)) << "no number of pixels";
  mWithoutDetector.SetNumberPixels(1024);
  EXPECT_FALSE(refused(mWithoutDetector));
  out = -1.0F;

  mDetector.mWidthFails = true;
  EXPECT_TRUE(refused(mCalibration));
  mDetector.mWidthFails = false;
  mHardware.GetGratingInterface()->SetGrating(0);
  EXPECT_TRUE(refused(mCalibration)) << "a mirror in the place of a grating";
  mHardware.GetGratingInterface()->SetGrating(1);
  mHardware.wave->SetWavelength(0.0F);
  EXPECT_TRUE(refused(mCalibration)) << "zero order";
  mHardware.wave->SetWavelength(550.0F);
  mHardware.DropEeprom();
  EXPECT_TRUE(refused(mCalibration));
  TCalibration nothing(nullptr, nullptr);
  EXPECT_TRUE(refused(nothing));
}

TEST_F(Calibration, AComponentsFailurePassesThrough) {
  mHardware.wave->mFails = true;
  float out = -1.0F;
  EXPECT_THROW(mCalibration.GetCalibration(&out, 1), TCorvaneException);
  EXPECT_EQ(-1.0F, out);
}

}  // namespace
