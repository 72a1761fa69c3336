// The process-wide owner of the list of instruments. Used by the exported functions only.
#pragma once

#include <memory>

#include "core/discovery/TSpectrographList.h"

class TSpectrographSDK {
 public:
  /// Creates the singleton on the first call.
  static TSpectrographSDK* Instance();
  /// Destroys the singleton, and with it the list and every device, if it exists.
  static void Kill();

  ~TSpectrographSDK() = default;
  TSpectrographSDK(const TSpectrographSDK&) = delete;
  TSpectrographSDK& operator=(const TSpectrographSDK&) = delete;

  /// Destroys the list there is, then searches for instruments anew. What the search throws passes through; there is
  /// no list then.
  void CreateSpectrographList(char* directory);
  /// Borrowed; null before the first list.
  TSpectrographList* GetSpectrographList() const { return mList.get(); }

 private:
  TSpectrographSDK() = default;

  // Not destroyed at process end: a program that leaves without CorvaneClose must not have its devices driven from a
  // static destructor, when the camera SDK and libusb may be gone already.
  static TSpectrographSDK* mInstance;

  std::unique_ptr<TSpectrographList> mList;
};
