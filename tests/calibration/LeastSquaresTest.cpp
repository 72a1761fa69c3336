#include "calibration/LeastSquares.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace {

using corvane::FitMatrix;
using corvane::FitVector;

TEST(LeastSquares, BasisIsThePowersFromTheFirstOn) {
  FitVector basis{-1.0, 0.0, 0.0, 0.0, 0.0};
  corvane::fploy(3.0, basis);
  EXPECT_EQ((FitVector{-1.0, 1.0, 3.0, 9.0, 27.0}), basis);
}

TEST(LeastSquares, FindsTheCubicItsPointsLieOn) {
  const std::vector<double> x{1, 129, 257, 385, 513, 641, 769, 897, 1024};
  std::vector<double> y;
  for (const double p : x) {
    y.push_back(550.25 + p * (0.125 + p * (-3.0e-6 + p * 2.0e-10)));
  }
  FitVector fitted{};
  EXPECT_TRUE(corvane::lfit(x, y, fitted));
  EXPECT_NEAR(550.25, fitted[1], 1e-9);
  EXPECT_NEAR(0.125, fitted[2], 1e-11);
  EXPECT_NEAR(-3.0e-6, fitted[3], 1e-14);
  EXPECT_NEAR(2.0e-10, fitted[4], 1e-17);
}

TEST(LeastSquares, IsTheBestOfItsNeighboursWherePointsScatter) {
  const std::vector<double> x{0, 1, 2, 3, 4, 5, 6};
  const std::vector<double> y{1, -1, 4, 2, 0, 7, 3};
  const auto error = [&](const FitVector& c) {
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      sum += std::pow(y[i] - (c[1] + x[i] * (c[2] + x[i] * (c[3] + x[i] * c[4]))), 2);
    }
    return sum;
  };
  FitVector fitted{};
  ASSERT_TRUE(corvane::lfit(x, y, fitted));
  for (std::size_t i = 1; i < fitted.size(); ++i) {
    for (const double change : {1e-4, -1e-4}) {
      FitVector neighbour = fitted;
      neighbour[i] += change;
      EXPECT_LT(error(fitted), error(neighbour));
    }
  }
}

TEST(LeastSquares, EliminationPivotsOnRowsAndColumns) {
  // Zeros on the diagonal, and a pivot so small that taking it first would cost the digits of all others.
  FitMatrix a{};
  a[1] = {0, 0, 2, 0, 1};
  a[2] = {0, 1e-18, 1, 0, 0};
  a[3] = {0, 1, 1, 0, 4};
  a[4] = {0, 0, 0, 5, 0};
  FitVector b{0, 2 * 2 + 4, 2, 1 + 2 + 4 * 4, 5 * 3};
  EXPECT_TRUE(corvane::gaussj(a, b));
  for (std::size_t i = 1; i <= 4; ++i) {
    EXPECT_NEAR(static_cast<double>(i), b[i], 1e-12);
  }
}

TEST(LeastSquares, ASingularMatrixStopsEliminationWithoutADivisionByZero) {
  // All points coincide.
  const std::vector<double> x(9, 1.0);
  const std::vector<double> y(9, 600.5);
  FitVector fitted{};
  EXPECT_FALSE(corvane::lfit(x, y, fitted));
  EXPECT_EQ((FitVector{0, 600.5, 0, 0, 0}), fitted);

  FitMatrix nothing{};
  FitVector b{0, 1, 2, 3, 4};
  EXPECT_FALSE(corvane::gaussj(nothing, b));
  EXPECT_EQ((FitVector{0, 1, 2, 3, 4}), b);
}

}  // namespace
