#include "controller/ParameterMemory.h"

#include <algorithm>
#include <charconv>

namespace corvane::sim {
namespace {

// Numbers of single values, and of the first of several.
constexpr int kSerial = 0;
constexpr int kId = 1;
constexpr int kManufactured = 2;
constexpr int kModified = 3;
constexpr int kVersion = 5;
constexpr int kFocalLength = 6;
constexpr int kAngularDeviation = 7;
constexpr int kTilt = 8;
constexpr int kCoefficients = 10;
constexpr int kSineFrequency = 15;
constexpr int kSineAmplitude = 16;
constexpr int kSinePhase = 17;
constexpr int kRecordTurret = 18;
constexpr int kStarts = 19;
constexpr int kLines = 31;
constexpr int kBlazes = 43;
constexpr int kOffsets = 55;
constexpr int kDetectorOffsets = 67;
constexpr int kFilterLabels = 82;
constexpr int kGratingCounts = 114;
constexpr int kTurretNames = 122;
/// Among the values of gratings each turret has this much room.
constexpr int kGratingsPerTurret = 4;
static_assert(kMaxGratings == kGratingsPerTurret);

template <typename Number>
Number Parse(std::string_view text) {
  Number number{};
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

template <typename Number>
std::string Print(Number number) {
  std::array<char, 64> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return {buffer.data(), error == std::errc{} ? end : buffer.data()};
}

/// The one list of fields, for writing (a const record) and for reading: each goes to text, real or whole with its
/// number.
template <typename AnyRecord, typename Text, typename Real, typename Whole>
void EachField(AnyRecord& record, Text text, Real real, Whole whole) {
  text(kSerial, record.serial);
  text(kId, record.id);
  text(kManufactured, record.manufactured);
  text(kModified, record.modified);
  real(kFocalLength, record.focalLength);
  real(kAngularDeviation, record.angularDeviation);
  real(kTilt, record.tilt);
  for (std::size_t i = 0; i < record.coefficients.size(); ++i) {
    real(kCoefficients + static_cast<int>(i), record.coefficients[i]);
  }
  real(kSineFrequency, record.sineFrequency);
  real(kSineAmplitude, record.sineAmplitude);
  real(kSinePhase, record.sinePhase);
  for (std::size_t i = 0; i < record.detectorOffsets.size(); ++i) {
    whole(kDetectorOffsets + static_cast<int>(i), record.detectorOffsets[i]);
  }
  for (std::size_t i = 0; i < record.filters.size(); ++i) {
    text(kFilterLabels + static_cast<int>(i), record.filters[i]);
  }
  for (std::size_t t = 0; t < record.turrets.size(); ++t) {
    for (std::size_t g = 0; g < record.turrets[t].gratings.size(); ++g) {
      auto& grating = record.turrets[t].gratings[g];
      const int place = kGratingsPerTurret * static_cast<int>(t) + static_cast<int>(g);
      whole(kStarts + place, grating.start);
      real(kLines + place, grating.lines);
      text(kBlazes + place, grating.blaze);
      whole(kOffsets + place, grating.offset);
    }
  }
}

}  // namespace

ParameterMemory::ParameterMemory(const Record& record, StructureVersion version) {
  const auto put = [this](int number, std::string_view text) { SetText(number, text); };
  EachField(
      record, put, [&](int number, float value) { put(number, Print(value)); },
      [&](int number, int value) { put(number, Print(value)); });
  put(kVersion, Print(version.major) + "." + Print(version.minor));
  put(kRecordTurret, Print(record.activeTurret));
  for (int t = 0; t < kMaxTurrets; ++t) {
    const bool mounted = t < static_cast<int>(record.turrets.size());
    put(kGratingCounts + t, mounted ? Print(record.turrets[static_cast<std::size_t>(t)].gratings.size()) : "0");
    put(kTurretNames + t, mounted ? "Turret " + Print(t + 1) : "");
  }
}

void ParameterMemory::SetText(int number, std::string_view text) {
  mTexts[static_cast<std::size_t>(number)] = text.substr(0, kLongestText);
}

Record ParameterMemory::Decode(const Record& base) const {
  Record record = base;
  record.turrets.resize(kMaxTurrets);
  for (int t = 0; t < kMaxTurrets; ++t) {
    const int count = Text(kTurretNames + t).empty() ? 0 : Parse<int>(Text(kGratingCounts + t));
    record.turrets[static_cast<std::size_t>(t)].gratings.resize(
        static_cast<std::size_t>(std::clamp(count, 0, kGratingsPerTurret)));
  }
  EachField(
      record, [this](int number, std::string& value) { value = Text(number); },
      [this](int number, float& value) { value = Parse<float>(Text(number)); },
      [this](int number, int& value) { value = Parse<int>(Text(number)); });
  return record;
}

}  // namespace corvane::sim
