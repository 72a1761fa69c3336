// The list of instruments found, and the search for them. Constructing a list is the search: it loads the camera SDK,
// looks for older instruments behind every camera, counts the controllers, and builds one TSpectrographHardware and one
// TCalibration for each, older instruments first. Nothing is caught here.
#pragma once

#include <memory>
#include <vector>

#include "camera/TI2CInterface.h"
#include "core/TSpectrographHardware.h"

class Corvane;
class TCalibration;
class TCorvaneI2CControl;
class TGlobalControl;

class TSpectrographList {
 public:
  /// directory is handed to the camera SDK; may be null.
  explicit TSpectrographList(char* directory);
  /// The same with cameras that were looked through already; must not be null.
  explicit TSpectrographList(std::unique_ptr<TCorvaneI2CControl> control);
  ~TSpectrographList();
  TSpectrographList(const TSpectrographList&) = delete;
  TSpectrographList& operator=(const TSpectrographList&) = delete;

  int GetNumberDevices() const;
  /// Borrowed; null for an index outside the list.
  TSpectrographHardware* GetDevice(int index) const;
  TCalibration* GetCalibration(int index) const;
  /// The driver of an older instrument; null for an instrument with a motion controller.
  Corvane* GetRawCorvane(int index) const;

 private:
  struct TSpectrographListItem;

  const TSpectrographListItem* Item(int index) const;
  void AddLegacyDevice(int index);
  void AddControllerDevice(int listIndex, int controllerIndex);

  std::unique_ptr<TCorvaneI2CControl> mControl;
  std::vector<TSpectrographListItem> mItems;
};
