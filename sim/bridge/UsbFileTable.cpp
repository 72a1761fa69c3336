#include "bridge/UsbFileTable.h"

#include <pthread.h>

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

UsbFileTable& UsbFileTable::Instance() {
  // Made in place and never destroyed.
  alignas(UsbFileTable) static std::byte storage[sizeof(UsbFileTable)];
  static UsbFileTable& instance = []() -> UsbFileTable& {
    UsbFileTable& made = *::new (storage) UsbFileTable;
    const auto unlock = [] { Instance().Mutex().unlock(); };
    pthread_atfork([] { Instance().Mutex().lock(); }, unlock, unlock);
    return made;
  }();
  return instance;
}

bool UsbFileTable::Knows(int descriptor) const {
  return descriptor >= 0 && descriptor < kDescriptors && mKnown[static_cast<std::size_t>(descriptor)];
}

int UsbFileTable::Add(std::unique_ptr<UsbDeviceFile> file) {
  const int descriptor = file->Descriptor();
  if (descriptor >= kDescriptors) {
    throw std::system_error(EMFILE, std::generic_category(), "device node");
  }
  mFiles.insert_or_assign(descriptor, std::move(file));
  mKnown[static_cast<std::size_t>(descriptor)] = true;
  return descriptor;
}

UsbDeviceFile* UsbFileTable::Find(int descriptor) const {
  const auto found = mFiles.find(descriptor);
  return found != mFiles.end() ? found->second.get() : nullptr;
}

std::unique_ptr<UsbDeviceFile> UsbFileTable::Remove(int descriptor) {
  const auto found = mFiles.find(descriptor);
  if (found == mFiles.end()) {
    return nullptr;
  }
  auto file = std::move(found->second);
  mFiles.erase(found);
  mKnown[static_cast<std::size_t>(descriptor)] = false;
  return file;
}
