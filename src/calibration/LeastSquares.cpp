#include "calibration/LeastSquares.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace corvane {
namespace {

constexpr std::size_t kLast = kFitCoefficients;

struct Pivot {
  std::size_t row = 0;
  std::size_t column = 0;
};

using UsedColumns = std::array<bool, kFitCoefficients + 1>;

/// The largest element outside the rows and columns that had a pivot; the first of equal ones, so that samples which
/// all coincide give a constant and not a curve. Element 0, 0 when only zeros are left.
Pivot FindPivot(const FitMatrix& a, const UsedColumns& used) {
  Pivot pivot;
  double largest = 0.0;
  for (std::size_t row = 1; row <= kLast; ++row) {
    for (std::size_t column = 1; column <= kLast; ++column) {
      if (!used[row] && !used[column] && std::abs(a[row][column]) > largest) {
        largest = std::abs(a[row][column]);
        pivot = {row, column};
      }
    }
  }
  return pivot;
}

/// Makes row the unit row of its diagonal element and clears that column in all other rows.
void Eliminate(std::size_t row, FitMatrix& a, FitVector& b) {
  const double reciprocal = 1.0 / a[row][row];
  for (std::size_t column = 1; column <= kLast; ++column) {
    a[row][column] *= reciprocal;
  }
  b[row] *= reciprocal;
  for (std::size_t other = 1; other <= kLast; ++other) {
    if (other == row) {
      continue;
    }
    const double factor = a[other][row];
    for (std::size_t column = 1; column <= kLast; ++column) {
      a[other][column] -= a[row][column] * factor;
    }
    b[other] -= b[row] * factor;
  }
}

}  // namespace

void fploy(double x, FitVector& basis) {
  basis[1] = 1.0;
  for (std::size_t i = 2; i <= kLast; ++i) {
    basis[i] = basis[i - 1] * x;
  }
}

bool gaussj(FitMatrix& a, FitVector& b) {
  UsedColumns used{};
  for (int step = 0; step < kFitCoefficients; ++step) {
    const Pivot pivot = FindPivot(a, used);
    if (pivot.column == 0) {
      return false;
    }
    // The pivot goes to the diagonal, so the solution needs no reordering: unknown i ends in row i.
    std::swap(a[pivot.row], a[pivot.column]);
    std::swap(b[pivot.row], b[pivot.column]);
    used[pivot.column] = true;
    Eliminate(pivot.column, a, b);
  }
  return true;
}

bool lfit(std::span<const double> x, std::span<const double> y, FitVector& coefficients) {
  FitMatrix normal{};
  FitVector basis{};
  coefficients.fill(0.0);
  for (std::size_t point = 0; point < x.size(); ++point) {
    fploy(x[point], basis);
    for (std::size_t j = 1; j <= kLast; ++j) {
      for (std::size_t k = 1; k <= j; ++k) {
        normal[j][k] += basis[j] * basis[k];
      }
      coefficients[j] += y[point] * basis[j];
    }
  }
  for (std::size_t j = 1; j <= kLast; ++j) {
    for (std::size_t k = 1; k < j; ++k) {
      normal[k][j] = normal[j][k];
    }
  }
  return gaussj(normal, coefficients);
}

}  // namespace corvane
