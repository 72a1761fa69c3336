// The open files of the virtual bus by descriptor, and the one lock over the bus and everything on it. Outlives every
// bus and every other static object: a program's threads may still close descriptors while it ends.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>

#include "bridge/UsbDeviceFile.h"

class VirtualUsbBus;

class UsbFileTable {
 public:
  static constexpr int kDescriptors = 65536;

  /// A child of fork() has a bus of its own, a copy, but no thread that moves it: transfers end inside their submission
  /// or not at all. The lock is free in it.
  static UsbFileTable& Instance();

  std::mutex& Mutex() { return mMutex; }
  /// Without the lock: whether the descriptor is one of ours. Calls on others must not wait for the bus.
  bool Knows(int descriptor) const;

  // The lock is held.

  /// The bus in force, borrowed; null for none.
  VirtualUsbBus* Bus() const { return mBus; }
  void SetBus(VirtualUsbBus* bus) { mBus = bus; }
  /// Takes the file and answers its descriptor. Throws std::system_error for one beyond kDescriptors.
  int Add(std::unique_ptr<UsbDeviceFile> file);
  /// The file with this descriptor, or null.
  UsbDeviceFile* Find(int descriptor) const;
  std::unique_ptr<UsbDeviceFile> Remove(int descriptor);
  std::size_t Count() const { return mFiles.size(); }

 private:
  std::mutex mMutex;
  VirtualUsbBus* mBus = nullptr;
  std::map<int, std::unique_ptr<UsbDeviceFile>> mFiles;
  std::array<std::atomic<bool>, kDescriptors> mKnown{};
};
