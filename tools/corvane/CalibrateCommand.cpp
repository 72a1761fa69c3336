#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <numbers>

#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "Progress.h"
#include "Session.h"
#include "model/FixedDecimals.h"

namespace {

using corvane::sim::Fixed;

struct Calibration {
  float centre = 0;
  int grating = 0;
  int pixels = 0;
  float pixelWidth = 0;
  float coefficients[4] = {};
  std::vector<float> wavelengths;
};

void Prepare(int device, const CalibrateOptions& wanted) {
  if (wanted.pixels > 0) {
    Check(CorvaneSetNumberPixels(device, wanted.pixels), "setting the number of pixels");
  }
  if (wanted.pixelWidth > 0) {
    Check(CorvaneSetPixelWidth(device, wanted.pixelWidth), "setting the pixel width");
  }
  if (wanted.centre >= 0) {
    const Progress progress("Moving to " + Shortest(wanted.centre) + " nm");
    Check(CorvaneSetWavelength(device, wanted.centre), "moving to " + Shortest(wanted.centre) + " nm");
  }
}

/// The centre (nm) down to which the whole detector lies on one side of zero order; 0 where the optics are not known.
double LeastCentre(int device, const Calibration& calibration) {
  float focalLength = 0;
  float deviation = 0;
  float tilt = 0;
  float lines = 0;
  Check(CorvaneEepromGetOpticalParams(device, &focalLength, &deviation, &tilt), "reading the optical constants");
  Check(CorvaneGetGratingInfo(device, calibration.grating, &lines, nullptr, nullptr, nullptr), "reading the grating");
  constexpr double kRadians = std::numbers::pi / 180;
  const double focalPixels = static_cast<double>(focalLength) / (1e-6 * static_cast<double>(calibration.pixelWidth));
  const double tau = static_cast<double>(tilt) * kRadians;
  const double reach = 2e6 / static_cast<double>(lines) * std::cos(static_cast<double>(deviation) * kRadians);
  double least = 0;
  for (const int pixel : {1, calibration.pixels}) {
    const int offAxis = pixel - calibration.pixels / 2;
    const double fromCentre = offAxis;
    const double beta = std::atan(std::cos(tau) * fromCentre / (std::sin(tau) * fromCentre + focalPixels));
    least = std::max(least, reach * std::sin(-beta / 2));
  }
  return std::isfinite(least) ? least : 0;
}

Calibration Calibrate(int device) {
  Calibration result;
  Check(CorvaneGetWavelength(device, &result.centre), "reading the wavelength");
  Check(CorvaneGetGrating(device, &result.grating), "reading the grating");
  if (CorvaneGetNumberPixels(device, &result.pixels) != CORVANE_SUCCESS || result.pixels < 1 ||
      CorvaneGetPixelWidth(device, &result.pixelWidth) != CORVANE_SUCCESS || !(result.pixelWidth > 0)) {
    throw Failure(ExitCode::kInstrument, "the detector's geometry is not known",
                  "give --pixels COUNT and --pixel-width UM");
  }
  if (result.centre == 0) {
    throw Failure(ExitCode::kInstrument, "the instrument stands at zero order, which has no calibration",
                  "give --centre NM, or corvane set wavelength NM");
  }
  if (const double least = LeastCentre(device, result); static_cast<double>(result.centre) <= least) {
    throw Failure(ExitCode::kInstrument,
                  "a part of the detector lies behind zero order, where a calibration is wrong by nanometres",
                  "give --centre NM above " + Fixed(std::ceil(10 * least) / 10, 1));
  }
  float* const c = result.coefficients;
  Check(CorvaneGetPixelCalibrationCoefficients(device, &c[0], &c[1], &c[2], &c[3]), "calibrating");
  result.wavelengths.resize(static_cast<std::size_t>(result.pixels));
  Check(CorvaneGetCalibration(device, result.wavelengths.data(), result.pixels), "calibrating");
  return result;
}

/// The pixels to show. All of the range, but an overview in text: nobody reads two thousand lines.
std::vector<int> Chosen(const CalibrateOptions& wanted, int pixels) {
  const auto check = [&](int pixel) {
    if (pixel < 1 || pixel > pixels) {
      throw Failure(ExitCode::kUsage,
                    "there is no pixel " + std::to_string(pixel) + "; they count from 1 to " + std::to_string(pixels));
    }
  };
  std::vector<int> chosen = wanted.only;
  if (chosen.empty()) {
    const int first = wanted.range.empty() ? 1 : wanted.range[0];
    const int last = wanted.range.empty() ? pixels : wanted.range[1];
    check(first);
    check(last);
    constexpr int kOverview = 8;
    const int step = wanted.range.empty() && wanted.format == "text" ? std::max(1, pixels / kOverview) : 1;
    for (long long pixel = first; pixel <= last; pixel += step) {
      chosen.push_back(static_cast<int>(pixel));
    }
    if (!chosen.empty() && chosen.back() != last) {
      chosen.push_back(last);
    }
  }
  std::for_each(chosen.begin(), chosen.end(), check);
  return chosen;
}

/// "534.8 + 0.0147 p - 1.2e-08 p^2 + ..."
std::string Polynomial(const float (&coefficients)[4]) {
  constexpr const char* kPowers[] = {"", " p", " p^2", " p^3"};
  std::string text = Shortest(coefficients[0]);
  for (std::size_t i = 1; i < std::size(coefficients); ++i) {
    text += (std::signbit(coefficients[i]) ? " - " : " + ") + Shortest(std::abs(coefficients[i])) + kPowers[i];
  }
  return text;
}

/// The wavelength that really falls on a pixel; empty where nobody is asked.
using Truth = std::function<double(int pixel)>;

float At(const Calibration& calibration, int pixel) {
  return calibration.wavelengths[static_cast<std::size_t>(pixel) - 1];
}

void PrintText(const Calibration& calibration, const std::vector<int>& pixels, const Truth& truth) {
  PrintField("centre", Shortest(calibration.centre) + " nm, grating " + std::to_string(calibration.grating));
  PrintField("detector", std::to_string(calibration.pixels) + " pixels of " + Shortest(calibration.pixelWidth) + " um");
  PrintField("nm at pixel p", Polynomial(calibration.coefficients));
  std::cout << '\n';
  std::vector<std::vector<std::string>> rows{{"pixel", "nm"}};
  if (truth != nullptr) {
    rows[0].insert(rows[0].end(), {"true nm", "difference"});
  }
  for (const int pixel : pixels) {
    const double wavelength = static_cast<double>(At(calibration, pixel));
    rows.push_back({std::to_string(pixel), Fixed(wavelength, 4)});
    if (truth != nullptr) {
      const double real = truth(pixel);
      rows.back().insert(rows.back().end(), {Fixed(real, 4), Fixed(wavelength - real, 5)});
    }
  }
  PrintTable(rows);
}

void PrintCsv(const Calibration& calibration, const std::vector<int>& pixels, const Truth& truth) {
  std::cout << (truth == nullptr ? "pixel,nm\n" : "pixel,nm,true_nm\n");
  for (const int pixel : pixels) {
    std::cout << pixel << ',' << Shortest(At(calibration, pixel));
    if (truth != nullptr) {
      std::cout << ',' << Fixed(truth(pixel), 6);
    }
    std::cout << '\n';
  }
}

void PrintJson(const Calibration& calibration, const std::vector<int>& pixels, const Truth& truth) {
  Json json = {{"centre", Plain(calibration.centre)}, {"grating", calibration.grating},
               {"pixels", calibration.pixels},        {"pixelWidth", Plain(calibration.pixelWidth)},
               {"coefficients", Json::array()},       {"calibration", Json::array()}};
  for (const float coefficient : calibration.coefficients) {
    json["coefficients"].push_back(Plain(coefficient));
  }
  for (const int pixel : pixels) {
    Json entry = {{"pixel", pixel}, {"nm", Plain(At(calibration, pixel))}};
    if (truth != nullptr) {
      entry["true"] = truth(pixel);
    }
    json["calibration"].push_back(entry);
  }
  Print(json);
}

}  // namespace

void RunCalibrate(const Options& options, const CalibrateOptions& wanted) {
  const Session session(options);
  if (wanted.truth && session.Simulated() == nullptr) {
    throw Failure(ExitCode::kUsage, "only a simulated instrument knows the truth", "give --simulate, or leave --truth");
  }
  const int device = session.Device();
  Prepare(device, wanted);
  const Calibration calibration = Calibrate(device);
  const std::vector<int> pixels = Chosen(wanted, calibration.pixels);
  Truth truth;
  if (wanted.truth) {
    truth = [&session, device](int pixel) { return session.Simulated()->TrueWavelength(device, pixel); };
  }
  if (session.Json() || wanted.format == "json") {
    PrintJson(calibration, pixels, truth);
  } else if (wanted.format == "csv") {
    PrintCsv(calibration, pixels, truth);
  } else {
    PrintText(calibration, pixels, truth);
  }
}
