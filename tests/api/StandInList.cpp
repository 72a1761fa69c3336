// Stands in for the library's list of instruments: finds what the test's Search answers.
#include <utility>

#include "RecordingHardware.h"
#include "calibration/TCalibration.h"
#include "core/TSpectrographList.h"
#include "legacy/TCorvaneI2CControl.h"

namespace {

Search& TheSearch() {
  static Search search;
  return search;
}

}  // namespace

void SetSearch(Search search) {
  TheSearch() = std::move(search);
}

struct TSpectrographList::TSpectrographListItem {
  std::unique_ptr<TSpectrographHardware> hardware;
};

TSpectrographList::TSpectrographList(char* /*directory*/) {
  for (auto& hardware : TheSearch()()) {
    mItems.push_back({std::move(hardware)});
  }
}

TSpectrographList::~TSpectrographList() = default;

int TSpectrographList::GetNumberDevices() const {
  return static_cast<int>(mItems.size());
}

TSpectrographHardware* TSpectrographList::GetDevice(int index) const {
  return mItems.at(static_cast<std::size_t>(index)).hardware.get();
}

TCalibration* TSpectrographList::GetCalibration(int /*index*/) const {
  return nullptr;
}

Corvane* TSpectrographList::GetRawCorvane(int /*index*/) const {
  return nullptr;
}
