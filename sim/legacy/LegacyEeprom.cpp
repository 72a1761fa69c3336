#include "legacy/LegacyEeprom.h"

#include <bit>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace corvane::sim {
namespace {

constexpr StructureVersion kAll{1, 0};
constexpr StructureVersion k11{1, 1};
constexpr StructureVersion k12{1, 2};
constexpr StructureVersion k13{1, 3};
constexpr StructureVersion k14{1, 4};

/// Where a field of the record lies, and the first structure version that has it; older images leave it free.
struct PageField {
  int page;
  int offset;
  StructureVersion since = kAll;
};

enum Page { kGeneral, kWave, kSlit, kFilter, kFlipper, kOutputSlit };

constexpr std::uint8_t kRecordMark = 16;
constexpr int kLabelWidth = 10;
constexpr int kQuadratics = 9;

/// In milliseconds.
constexpr float kShutterOpenTime = 20.0F;
constexpr float kShutterCloseTime = 35.0F;

/// Both holes: find distance, its ramp (minimum, maximum, increment), the distance into the hole, the distance back to
/// its edge and the ramp for that.
constexpr std::array<int, 18> kHoles{480000, 4000,  80000, 1000, 1000, 5000, 5000,   80000,  1000,
                                     3000,   10000, 80000, 1000, 10,   2000, 400000, 400000, 1000};

struct TurretFields {
  PageField gratings;
  int lines = 0;
  int blazes = 0;
  int offsets = 0;
  int starts = 0;
  int thirdBlaze = 0;  ///< from 3.0 on
};

constexpr TurretFields kTurretFields[kMaxTurrets] = {
    {.gratings = {kWave, 21, k11}, .lines = 22, .blazes = 34, .offsets = 46, .starts = 58, .thirdBlaze = 230},
    {.gratings = {kSlit, 128, k11}, .lines = 129, .blazes = 141, .offsets = 153, .starts = 165, .thirdBlaze = 235},
    {.gratings = {kSlit, 177, k11}, .lines = 178, .blazes = 190, .offsets = 202, .starts = 214, .thirdBlaze = 240},
};

/// Writes values at their fields, those that the structure version has.
class ImageWriter {
 public:
  using Pages = std::array<std::array<std::uint8_t, kLegacyPageSize>, kLegacyPages>;

  ImageWriter(Pages& pages, StructureVersion version) : mPages(pages), mVersion(version) {}

  void Byte(const PageField& field, int value) {
    if (mVersion.AtLeast(field.since.major, field.since.minor)) {
      mPages[static_cast<std::size_t>(field.page)][static_cast<std::size_t>(field.offset)] =
          static_cast<std::uint8_t>(value);
    }
  }
  void Int(PageField field, int value) {
    const auto word = static_cast<std::uint32_t>(value);
    for (int shift = 0; shift < 32; shift += 8) {
      Byte(field, static_cast<int>((word >> static_cast<unsigned>(shift)) & 0xFFU));
      ++field.offset;
    }
  }
  void Float(const PageField& field, float value) { Int(field, std::bit_cast<std::int32_t>(value)); }
  void Text(PageField field, std::string_view text, int width) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
      Byte(field, i < text.size() ? text[i] : '\0');
      ++field.offset;
    }
  }

 private:
  Pages& mPages;
  StructureVersion mVersion;
};

void WriteGeneral(ImageWriter& out, const LegacyDescription& description) {
  const Record& record = description.record;
  const Turret& turret = record.turrets[static_cast<std::size_t>(record.activeTurret)];
  out.Byte({kGeneral, 0}, kRecordMark);
  out.Text({kGeneral, 1}, record.id, 20);
  out.Text({kGeneral, 21},
           std::to_string(description.structure.major) + "." + std::to_string(description.structure.minor), 10);
  out.Text({kGeneral, 31}, record.serial, 10);
  out.Text({kGeneral, 41}, record.manufactured, 11);
  out.Text({kGeneral, 52}, record.modified, 11);
  out.Float({kGeneral, 63}, record.focalLength);
  out.Float({kGeneral, 67}, record.angularDeviation);
  out.Float({kGeneral, 71}, record.tilt);
  out.Float({kGeneral, 75}, record.currentWavelength * turret.gratings[0].lines / kReferenceLines);
  out.Float({kGeneral, 79}, description.slitWidths[0]);
  out.Int({kGeneral, 83}, description.filter);
  out.Int({kGeneral, 87}, description.port);
  out.Float({kGeneral, 99, k12}, description.slitWidths[1]);
}

void WriteMotors(ImageWriter& out) {
  for (int motor = 0; motor < kLegacyMotors; ++motor) {
    const MotorProfile& profile = kMotorProfiles[static_cast<std::size_t>(motor)];
    const StructureVersion since = motor == kOutputSlitMotor ? k12 : kAll;
    int offset = 0;
    for (const int value : {profile.minimum, profile.maximum, profile.increment, profile.lowest, profile.highest}) {
      out.Int({kWave + motor, offset, since}, value);
      offset += 4;
    }
  }
}

void WriteDrive(ImageWriter& out, const Record& record) {
  out.Byte({kWave, 20}, record.activeTurret + 1);
  out.Int({kWave, 70}, record.detectorOffsets[0]);
  for (int i = 0; i < static_cast<int>(record.coefficients.size()); ++i) {
    out.Float({kWave, 74 + 4 * i}, record.coefficients[static_cast<std::size_t>(i)]);
  }
  out.Float({kWave, 94}, 0.0F);
  out.Float({kWave, 98}, 1.0F);
  for (int i = 0; i < kQuadratics; ++i) {
    out.Float({kWave, 102 + 4 * i}, 0.0F);
  }
  out.Float({kWave, 138, k11}, record.sinePhase);
  out.Float({kWave, 142, k11}, record.sineFrequency);
  out.Float({kWave, 146, k11}, record.sineAmplitude);
  int offset = 150;
  for (const int value : kHoles) {
    out.Int({kWave, offset, k11}, value);
    offset += 4;
  }
  out.Byte({kWave, 222, k11}, static_cast<int>(record.turrets.size()));
  out.Int({kWave, 226, k14}, record.detectorOffsets[1]);
}

void WriteTurret(ImageWriter& out, const TurretFields& fields, const Turret& turret, StructureVersion version) {
  const int page = fields.gratings.page;
  const StructureVersion since = fields.gratings.since;
  const int digits = version.major >= 3 ? 5 : 4;
  out.Byte(fields.gratings, static_cast<int>(turret.gratings.size()));
  for (int g = 0; g < static_cast<int>(turret.gratings.size()); ++g) {
    const Grating& grating = turret.gratings[static_cast<std::size_t>(g)];
    const bool isMovedBlaze = version.major >= 3 && g == kLegacyGratings - 1;
    out.Float({page, fields.lines + 4 * g, since}, grating.lines);
    out.Text({page, isMovedBlaze ? fields.thirdBlaze : fields.blazes + digits * g, since}, grating.blaze, digits);
    out.Int({page, fields.offsets + 4 * g, since}, grating.offset);
    out.Int({page, fields.starts + 4 * g, since}, grating.start);
  }
}

void WriteSlits(ImageWriter& out) {
  for (const PageField& first : {PageField{kSlit, 20}, PageField{kSlit, 84, k12}}) {
    PageField field = first;
    for (const SlitPoint& point : kSlitPoints) {
      out.Int(field, point.steps);
      field.offset += 4;
      out.Int(field, point.width);
      field.offset += 4;
    }
  }
}

void WriteFilters(ImageWriter& out, const Record& record) {
  out.Byte({kFilter, 20}, kFilters);
  out.Int({kFilter, 90, k13}, kFilterResetOffset);
  for (int f = 0; f < kFilters; ++f) {
    const auto index = static_cast<std::size_t>(f);
    out.Text({kFilter, 21 + kLabelWidth * f}, record.filters[index], kLabelWidth);
    out.Byte({kFilter, 81 + f, k13}, kFilterPatterns[index]);
    out.Int({kFilter, 94 + 4 * f, k13}, kFilterPositions[index]);
  }
}

void WriteShutter(ImageWriter& out) {
  out.Byte({kFlipper, 128, k11}, 0);
  out.Byte({kFlipper, 129, k11}, 1);
  out.Float({kFlipper, 130, k11}, kShutterOpenTime);
  out.Float({kFlipper, 134, k11}, kShutterCloseTime);
  out.Float({kFlipper, 138, k11}, 10.0F);
  out.Byte({kFlipper, 142, k11}, 3);
  out.Byte({kFlipper, 143, k11}, 2);
}

}  // namespace

LegacyEeprom::LegacyEeprom(const LegacyDescription& description, SimulationClock clock)
    : mClock(std::move(clock)), mWriteTime(std::llround(description.writeTime * 1000.0)) {
  for (auto& page : mPages) {
    page.fill(description.memoryFill);
  }
  Store(description);
}

void LegacyEeprom::Store(const LegacyDescription& description) {
  ImageWriter out(mPages, description.structure);
  WriteGeneral(out, description);
  WriteMotors(out);
  WriteDrive(out, description.record);
  WriteSlits(out);
  WriteFilters(out, description.record);
  WriteShutter(out);
  for (std::size_t t = 0; t < description.record.turrets.size(); ++t) {
    WriteTurret(out, kTurretFields[t], description.record.turrets[t], description.structure);
  }
  for (const PagePatch& patch : description.memoryPatches) {
    // What reaches beyond the page goes on in the next, and ends with the last.
    auto byteNumber = static_cast<std::size_t>(patch.page) * kLegacyPageSize + static_cast<std::size_t>(patch.offset);
    for (const unsigned char byte : patch.bytes) {
      if (byteNumber < std::size_t{kLegacyPages} * kLegacyPageSize) {
        mPages[byteNumber / kLegacyPageSize][byteNumber % kLegacyPageSize] = byte;
      }
      ++byteNumber;
    }
  }
}

bool LegacyEeprom::IsBusy() const {
  return mBusyUntil.count() != 0 && mClock() < mBusyUntil;
}

bool LegacyEeprom::Read(int page, int offset, std::uint8_t& value) const {
  if (IsBusy()) {
    return false;
  }
  value = Byte(page, offset);
  return true;
}

bool LegacyEeprom::Write(int page, int offset, std::uint8_t value) {
  if (IsBusy()) {
    return false;
  }
  if (!mWriteMode) {
    ++mLostWrites;
    return true;
  }
  ++mWrites;
  mPages[static_cast<std::size_t>(page)][static_cast<std::size_t>(offset)] = value;
  mBusyUntil = mWriteTime.count() > 0 ? mClock() + mWriteTime : mWriteTime;
  return true;
}

}  // namespace corvane::sim
