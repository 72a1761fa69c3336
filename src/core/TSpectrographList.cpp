#include "core/TSpectrographList.h"

#include <cstddef>
#include <utility>

#include "calibration/TCalibration.h"
#include "camera/TGlobalControl.h"
#include "components/TMerakHardware.h"
#include "controller/TMerakOrbis.h"
#include "controller/TTivanOnly_MerakOrbis.h"
#include "legacy/TCorvaneI2CControl.h"

struct TSpectrographList::TSpectrographListItem {
  std::unique_ptr<TSpectrographHardware> hardware;
  std::unique_ptr<TCalibration> calibration;
};

TSpectrographList::TSpectrographList(char* directory) : mControl(std::make_unique<TCorvaneI2CControl>(directory)) {
  TMerakOrbis probe(mControl->GetSDKI2CInterface());
  int controllers = 0;
  probe.GetDeviceCount(controllers);
  if (controllers <= 0) {
    return;
  }
  mItems.reserve(static_cast<std::size_t>(controllers));
  for (int index = 0; index < controllers; ++index) {
    AddControllerDevice(index, index);
  }
}

TSpectrographList::~TSpectrographList() {
  for (TSpectrographListItem& item : mItems) {
    item.calibration.reset();
    item.hardware.reset();
  }
}

int TSpectrographList::GetNumberDevices() const {
  return static_cast<int>(mItems.size());
}

void TSpectrographList::AddControllerDevice(int listIndex, int controllerIndex) {
  auto controller = std::make_unique<TTivanOnly_MerakOrbis>(mControl->GetSDKI2CInterface());
  // A controller that does not open is listed all the same; its operations then fail one by one.
  static_cast<void>(controller->Open(controllerIndex));

  TSpectrographListItem item;
  item.hardware = std::make_unique<TMerakHardware>(std::move(controller));
  // By the index in the whole list: with one camera only the first device of the list gets its detector, deliberately.
  TDetectorInterface* detector = mControl->GetGlobalControl()->GetDetectorInterface(listIndex);
  item.calibration = std::make_unique<TCalibration>(detector, item.hardware.get());
  mItems.push_back(std::move(item));
}

const TSpectrographList::TSpectrographListItem* TSpectrographList::Item(int index) const {
  const bool known = index >= 0 && index < GetNumberDevices();
  return known ? &mItems[static_cast<std::size_t>(index)] : nullptr;
}

TSpectrographHardware* TSpectrographList::GetDevice(int index) const {
  const TSpectrographListItem* item = Item(index);
  return item != nullptr ? item->hardware.get() : nullptr;
}

TCalibration* TSpectrographList::GetCalibration(int index) const {
  const TSpectrographListItem* item = Item(index);
  return item != nullptr ? item->calibration.get() : nullptr;
}

Corvane* TSpectrographList::GetRawCorvane(int /*index*/) const {
  return nullptr;
}
