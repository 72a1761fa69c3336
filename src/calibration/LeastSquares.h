// Linear least-squares fit of a cubic: all weights are 1, solved through the normal equations by Gauss-Jordan
// elimination. For the pixel calibration; double precision throughout.
#pragma once

#include <array>
#include <span>

namespace corvane {

constexpr int kFitCoefficients = 4;

/// Vectors and matrices count from 1, so that a coefficient's index is its power of x plus one; element 0 is unused.
using FitVector = std::array<double, kFitCoefficients + 1>;
using FitMatrix = std::array<FitVector, kFitCoefficients + 1>;

/// The basis at x: 1, x, x², x³, each the one before times x.
void fploy(double x, FitVector& basis);

/// Solves a·s = b with full pivoting; b becomes s and a its own remains. False when the matrix is singular: elimination
/// stops there, b holds what it had become so far, and nothing was divided by zero.
bool gaussj(FitMatrix& a, FitVector& b);

/// Fits y = coefficients[1] + coefficients[2]·x + coefficients[3]·x² + coefficients[4]·x³ through the points. x and y
/// are of one size. Answers as gaussj.
bool lfit(std::span<const double> x, std::span<const double> y, FitVector& coefficients);

}  // namespace corvane
