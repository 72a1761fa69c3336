#include "core/discovery/TSpectrographList.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "calibration/TCalibration.h"
#include "camera/TGlobalControl.h"
#include "camera/legacyparts/TCorvaneX3Hardware.h"
#include "components/TMerakHardware.h"
#include "controller/TMerakOrbis.h"
#include "controller/TTivanOnly_MerakOrbis.h"
#include "legacy/Corvane.h"
#include "legacy/TCorvaneI2CControl.h"
#include "legacy/TMCDI2CInterfaceWrapper.h"

/// Each borrows from those before it, so it goes first.
struct TSpectrographList::TSpectrographListItem {
  /// Both null for an instrument with a motion controller.
  std::unique_ptr<TI2CInterface> i2c;
  std::unique_ptr<Corvane> raw;
  std::unique_ptr<TSpectrographHardware> hardware;
  std::unique_ptr<TCalibration> calibration;
};

TSpectrographList::TSpectrographList(char* directory)
    : TSpectrographList(std::make_unique<TCorvaneI2CControl>(directory)) {
}

TSpectrographList::TSpectrographList(std::unique_ptr<TCorvaneI2CControl> control) : mControl(std::move(control)) {
  TMerakOrbis probe(mControl->GetSDKI2CInterface());
  int controllers = 0;
  probe.GetDeviceCount(controllers);
  controllers = std::max(controllers, 0);
  const int legacy = mControl->GetNumberDevices();
  mItems.reserve(static_cast<std::size_t>(legacy) + static_cast<std::size_t>(controllers));
  for (int index = 0; index < legacy; ++index) {
    AddLegacyDevice(index);
  }
  for (int index = 0; index < controllers; ++index) {
    AddControllerDevice(legacy + index, index);
  }
}

TSpectrographList::~TSpectrographList() {
  for (TSpectrographListItem& item : mItems) {
    item.calibration.reset();
    item.hardware.reset();
    item.raw.reset();
    item.i2c.reset();
  }
}

int TSpectrographList::GetNumberDevices() const {
  return static_cast<int>(mItems.size());
}

void TSpectrographList::AddLegacyDevice(int index) {
  TSpectrographListItem item;
  item.i2c = std::make_unique<TMCDI2CInterfaceWrapper>(mControl->GetI2CInterface(index));
  item.raw = std::make_unique<Corvane>(item.i2c.get(), mControl->IsDeviceUSB(index));
  item.hardware = std::make_unique<TCorvaneX3Hardware>(item.raw.get());
  item.calibration = std::make_unique<TCalibration>(mControl->GetDetectorInterface(index), item.hardware.get());
  mItems.push_back(std::move(item));
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

Corvane* TSpectrographList::GetRawCorvane(int index) const {
  const TSpectrographListItem* item = Item(index);
  return item != nullptr ? item->raw.get() : nullptr;
}
