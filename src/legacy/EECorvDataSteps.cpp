#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <optional>

#include "components/optics/Degrees.h"
#include "components/optics/ReferenceLines.h"
#include "legacy/EECorvData.h"

namespace {

using corvane::CorvDataValues;

/// Half goes away from zero. Nothing for what is no 32-bit number.
std::optional<int> RoundToSteps(long double steps) {
  const long double rounded = std::round(steps);
  constexpr long double kLeast = std::numeric_limits<int>::min();
  constexpr long double kMost = std::numeric_limits<int>::max();
  return rounded >= kLeast && rounded <= kMost ? std::optional<int>(static_cast<int>(rounded)) : std::nullopt;
}

const CorvDataValues::Slit* SlitOf(const CorvDataValues& values, int slit) {
  const bool known = slit >= 0 && static_cast<std::size_t>(slit) < values.slits.size();
  return known ? &values.slits[static_cast<std::size_t>(slit)] : nullptr;
}

std::optional<int> SlitSteps(const CorvDataValues& values, int slit, float width) {
  const CorvDataValues::Slit* of = SlitOf(values, slit);
  // Points of the same width leave no line between them.
  if (of == nullptr || of->points[0].width == of->points[1].width) {
    return std::nullopt;
  }
  return RoundToSteps(of->c0 + of->c1 * width + of->c2 * width * width);
}

/// Makes one polynomial serve all gratings, which count from 1.
float GratingX(const CorvDataValues& values, float wavelength, int grating) {
  const float lines = values.ActiveTurret().gratings[static_cast<std::size_t>(grating - 1)].lines;
  return wavelength / corvane::kReferenceLines * lines;
}

bool IsZeroOrder(float x) {
  constexpr float kZeroOrder = 0.0001F;
  return std::fabs(x) < kZeroOrder;
}

long double Polynomial(const CorvDataValues& values, float x) {
  const long double e = x;
  const auto& poly = values.polynomial;
  return poly[0] * e * e * e * e + poly[1] * e * e * e + poly[2] * e * e + poly[3] * e + poly[4];
}

long double DriveAngle(long double sine) {
  constexpr long double kDegreesPerTurn = 360.0L;
  return EECorvData::kStepsPerTurn * corvane::kDegreesPerRadian * std::asin(sine) / kDegreesPerTurn;
}

}  // namespace

bool EECorvData::SlitConverts(int slit, float width) const {
  return SlitSteps(values, slit, width).has_value();
}

int EECorvData::ConvertSlitToSteps(int slit, float width) const {
  return SlitSteps(values, slit, width).value_or(0);
}

float EECorvData::ConvertStepsToSlit(int slit, int steps) const {
  const CorvDataValues::Slit* of = SlitOf(values, slit);
  if (of == nullptr) {
    return 0.0F;
  }
  const float k = of->c0 - static_cast<float>(steps);
  if (of->c2 == 0.0F) {
    return of->c1 == 0.0F ? 0.0F : -k / of->c1;
  }
  const float root = std::sqrt(of->c1 * of->c1 - 4.0F * of->c2 * k);
  const float larger = (-of->c1 + root) / (2.0F * of->c2);
  const float smaller = (-of->c1 - root) / (2.0F * of->c2);
  if (larger > 0.0F) {
    return larger;
  }
  return smaller > 0.0F ? smaller : 0.0F;
}

long double EECorvData::GetSinCorrection(long double steps) const {
  if (values.sinAmplitude == 0.0F || values.sinFrequency == 0.0F) {
    return 0.0L;  // No correction stored; 0 * sin(infinity) would not be a number.
  }
  constexpr long double kTwoPi = 2.0L * std::numbers::pi_v<long double>;
  return values.sinAmplitude * std::sin(kTwoPi * steps / values.sinFrequency + values.sinPhase);
}

std::optional<int> EECorvData::WaveSteps(float wavelength, int grating, int detector) const {
  constexpr int kSineSubtracted = 2;
  const auto detectors = static_cast<int>(values.detectorOffset.size());
  if (grating < 1 || grating > static_cast<int>(CorvDataValues::kGratings) || detector < 0 || detector >= detectors) {
    return std::nullopt;
  }
  const CorvDataValues::Grating& of = values.ActiveTurret().gratings[static_cast<std::size_t>(grating - 1)];
  const float x = GratingX(values, wavelength, grating);
  const long double sine = Polynomial(values, x);
  if (sine > 1.0L) {
    return std::nullopt;
  }
  const float origin = static_cast<float>(of.start) + static_cast<float>(of.offset) +
                       static_cast<float>(values.detectorOffset[static_cast<std::size_t>(detector)]);
  long double position = origin;
  if (!IsZeroOrder(x)) {
    // Zero order needs no angle. Below -1 there is none, and a number that is none has no place.
    if (!(sine >= -1.0L)) {
      return std::nullopt;
    }
    // The generations differ both in the sign of the correction and in where it is taken.
    const long double angle = DriveAngle(sine);
    if (values.structureMajor < kSineSubtracted) {
      position += std::fmax(angle + GetSinCorrection(angle), 0.0L);
    } else {
      position += angle;
      position -= GetSinCorrection(position);
    }
  }
  return RoundToSteps(position);
}

int EECorvData::ConvertWaveToSteps(float wavelength, int grating, int detector) const {
  return WaveSteps(wavelength, grating, detector).value_or(kOutOfReach);
}

std::optional<int> EECorvData::WavePosition(float wavelength, int grating, int detector) const {
  const std::optional<int> steps = WaveSteps(wavelength, grating, detector);
  const auto& poly = values.polynomial;
  const bool flat = std::all_of(poly.begin(), poly.end() - 1, [](float factor) { return factor == 0.0F; });
  return flat && steps && !IsZeroOrder(GratingX(values, wavelength, grating)) ? std::nullopt : steps;
}

float EECorvData::GetActualWavelength(float wavelength, int grating, int detector) const {
  constexpr float kStep = 0.01F;
  constexpr int kMostSteps = 100000;
  if (wavelength == 0.0F) {
    return 0.0F;
  }
  const float rounded = std::trunc(100.0F * wavelength + 0.5F) / 100.0F;
  const int position = ConvertWaveToSteps(rounded, grating, detector);
  // Flat conversions have no edge, and steps that are lost in a large wavelength find none.
  const auto edge = [&](float step) -> std::optional<float> {
    float reached = rounded;
    for (int i = 0; i < kMostSteps; ++i) {
      reached += step;
      if (ConvertWaveToSteps(reached, grating, detector) != position) {
        return reached;
      }
    }
    return std::nullopt;
  };
  const std::optional<float> low = edge(-kStep);
  const std::optional<float> high = edge(kStep);
  // The centre of the two wavelengths outside the band, each moved on by a step: kept in this form.
  return low && high ? ((*low - kStep) + (kStep + *high)) / 2.0F : rounded;
}
