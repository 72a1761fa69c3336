#include "bridge/UsbDeviceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace {

// The smallest pipe: a single byte makes it full.
constexpr int kPipeSize = 4096;

}  // namespace

UsbDeviceFile::UsbDeviceFile(UsbDeviceNode& node) : mNode(&node) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  mReader = ends[0];
  mDescriptor = ends[1];
  fcntl(mDescriptor, F_SETPIPE_SZ, kPipeSize);
  SetWritable(false);
}

UsbDeviceFile::~UsbDeviceFile() {
  Disconnect();
}

void UsbDeviceFile::Complete(usbdevfs_urb& urb) {
  mCompleted.push_back(&urb);
  SetWritable(true);
}

usbdevfs_urb* UsbDeviceFile::Reap() {
  if (mCompleted.empty()) {
    return nullptr;
  }
  usbdevfs_urb* const urb = mCompleted.front();
  mCompleted.pop_front();
  if (mCompleted.empty()) {
    SetWritable(false);
  }
  return urb;
}

void UsbDeviceFile::Disconnect() {
  mNode = nullptr;
  if (mReader >= 0) {
    close(mReader);
    mReader = -1;
  }
}

void UsbDeviceFile::SetWritable(bool writable) {
  if (mReader < 0 || writable == mWritable) {
    return;
  }
  char byte = 0;
  const ssize_t moved = writable ? read(mReader, &byte, 1) : write(mDescriptor, &byte, 1);
  if (moved != 1) {
    throw std::system_error(errno, std::generic_category(), "device node");
  }
  mWritable = writable;
}
