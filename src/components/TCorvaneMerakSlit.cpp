#include "components/TCorvaneMerakSlit.h"

#include <array>
#include <cstddef>
#include <utility>

#include "components/MerakOperation.h"
#include "components/optics/Truncation.h"
#include "controller/TMerakOrbis.h"

namespace {

struct SlitName {
  int number;
  std::string_view tag;
};

/// By position. The controller counts the side slits across: 4 at the entrance, 2 at the exit.
constexpr std::array<SlitName, ISpectrographSlit::kPositions> kSlits{{{1, "SI1"}, {4, "SI2"}, {3, "SO1"}, {2, "SO2"}}};

const SlitName& SlitAt(ISpectrographSlit::TSlitPosition position) {
  const auto index = static_cast<std::size_t>(position);
  if (index >= kSlits.size()) {
    throw TCorvaneException(TCorvaneMerakSlit::kUnknownPosition);
  }
  return kSlits[index];
}

}  // namespace

TCorvaneMerakSlit::TCorvaneMerakSlit(TMerakOrbis& controller, TSlitPosition position)
    : mController(controller), mNumber(SlitAt(position).number), mTag(SlitAt(position).tag) {
}

bool TCorvaneMerakSlit::IsPresent() {
  return corvane::ListCoversTag(mAborter, mController, mTag);
}

void TCorvaneMerakSlit::SetSlit(float width) {
  // The mode is asked for right before: a controller that was silent then is not waited for a second time.
  if (std::exchange(mModeMetSilence, false) && mController.IsSilent()) {
    corvane::ThrowOnFailure(merak::kIoError);
  }
  corvane::RunBusy(mAborter, *this, [&] { return mController.SetSlitWidth(mNumber, corvane::Truncated(width)); });
}

float TCorvaneMerakSlit::GetSlit() {
  const int width =
      corvane::ReadNumber(mAborter, [this](int& given) { return mController.GetSlitWidth(mNumber, given); });
  return static_cast<float>(width);
}

void TCorvaneMerakSlit::SetSlitMode(const char* mode) {
  corvane::RunPaused(mAborter, [&] { return mController.SetSlitMode(mNumber, mode); });
}

const char* TCorvaneMerakSlit::GetSlitMode() {
  corvane::RunPaused(mAborter, [&] {
    const MerakResult result = mController.GetSlitMode(mNumber, mMode);
    mModeMetSilence = result == merak::kIoError && mController.IsSilent();
    return result;
  });
  return mMode.c_str();
}

void TCorvaneMerakSlit::Reset() {
  corvane::RunBusy(mAborter, *this, [&] { return mController.SlitHome(mNumber); });
}

void TCorvaneMerakSlit::UnsafeReset() {
  const corvane::AcquisitionPause pause(mAborter);
  Reset();
}
