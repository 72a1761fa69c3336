// The C library calls through which libusb reaches a device node, answered here for the nodes of the virtual bus and
// passed on for everything else. Compiled into the executable itself, whose symbols come before those of any shared
// library, so that libusb's own calls arrive here.
#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>

#include "bridge/UsbDeviceNode.h"
#include "bridge/UsbFileTable.h"
#include "bridge/VirtualUsbBus.h"

#define CORVANE_INTERPOSED extern "C" __attribute__((visibility("default")))

// The thread sanitizer's runtime has versions of its own that this file displaces; they want to see the calls too.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are those of the runtime and of the C library.
extern "C" {
__attribute__((weak)) int __interceptor_open(const char* path, int flags, ...);
__attribute__((weak)) int __interceptor_open64(const char* path, int flags, ...);
__attribute__((weak)) int __interceptor_close(int descriptor);
__attribute__((weak)) int __interceptor_ioctl(int descriptor, unsigned long request, ...);
}

namespace {

template <class Function>
Function Next(const char* name, Function sanitizer) {
  return sanitizer != nullptr ? sanitizer : reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int CloseNext(int descriptor) {
  using Function = int (*)(int);
  static const auto next = Next<Function>("close", &__interceptor_close);
  return next(descriptor);
}

int Fail(int error) {
  errno = error;
  return -1;
}

struct NodeName {
  int bus = 0;
  int address = 0;
};

// /dev/bus/usb/BBB/DDD
std::optional<NodeName> ParseNode(std::string_view path) {
  constexpr std::string_view kFolder = "/dev/bus/usb/";
  constexpr std::size_t kDigits = 3;
  if (!path.starts_with(kFolder) || path.size() != kFolder.size() + 2 * kDigits + 1) {
    return std::nullopt;
  }
  const char* const number = path.data() + kFolder.size();
  NodeName name;
  if (std::from_chars(number, number + kDigits, name.bus).ptr != number + kDigits || number[kDigits] != '/' ||
      std::from_chars(number + kDigits + 1, path.data() + path.size(), name.address).ptr != path.data() + path.size()) {
    return std::nullopt;
  }
  return name;
}

// Opens a node of the virtual bus; nothing when the path is none.
std::optional<int> OpenNode(const char* path) {
  UsbFileTable& table = UsbFileTable::Instance();
  const auto name = path != nullptr ? ParseNode(path) : std::nullopt;
  if (!name) {
    return std::nullopt;
  }
  const std::lock_guard lock(table.Mutex());
  VirtualUsbBus* const bus = table.Bus();
  if (bus == nullptr || name->bus != bus->BusNumber()) {
    return std::nullopt;
  }
  UsbDeviceNode* const node = bus->FindNode(name->address);
  if (node == nullptr) {
    return std::nullopt;
  }
  if (node->OpenStatus() != 0) {
    return Fail(-node->OpenStatus());
  }
  try {
    auto file = std::make_unique<UsbDeviceFile>(*node);
    UsbDeviceFile& opened = *file;
    const int descriptor = table.Add(std::move(file));
    node->Adopt(opened);
    return descriptor;
  } catch (const std::system_error& error) {
    return Fail(error.code().value());
  } catch (const std::bad_alloc&) {
    return Fail(ENOMEM);
  }
}

int IoctlOnFile(UsbDeviceFile& file, unsigned long request, void* argument) {
  if (request == USBDEVFS_REAPURBNDELAY) {
    usbdevfs_urb* const urb = file.Reap();
    if (urb == nullptr) {
      return Fail(file.Node() != nullptr ? EAGAIN : ENODEV);
    }
    *static_cast<usbdevfs_urb**>(argument) = urb;
    return 0;
  }
  VirtualUsbBus* const bus = UsbFileTable::Instance().Bus();
  if (file.Node() == nullptr || bus == nullptr) {
    return Fail(ENODEV);
  }
  const int result = bus->Ioctl(*file.Node(), file, request, argument);
  return result < 0 ? Fail(-result) : result;
}

}  // namespace

#define CORVANE_OPEN(name, sanitizer)                                 \
  CORVANE_INTERPOSED int name(const char* path, int flags, ...) {     \
    using Function = int (*)(const char*, int, ...);                  \
    static const auto next = Next<Function>(#name, sanitizer);        \
    if (const auto opened = OpenNode(path)) {                         \
      return *opened;                                                 \
    }                                                                 \
    mode_t mode = 0;                                                  \
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) { \
      va_list arguments;                                              \
      va_start(arguments, flags);                                     \
      mode = va_arg(arguments, mode_t);                               \
      va_end(arguments);                                              \
    }                                                                 \
    return next(path, flags, mode);                                   \
  }

CORVANE_OPEN(open, &__interceptor_open)
CORVANE_OPEN(open64, &__interceptor_open64)

// What a fortified build calls for an open without a mode.
CORVANE_INTERPOSED int __open_2(const char* path, int flags) {
  return open(path, flags);
}

CORVANE_INTERPOSED int __open64_2(const char* path, int flags) {
  return open64(path, flags);
}

// NOLINTEND(bugprone-reserved-identifier)

CORVANE_INTERPOSED int close(int descriptor) {
  UsbFileTable& table = UsbFileTable::Instance();
  if (table.Knows(descriptor)) {
    // Gone from the table before the number can be given out again.
    std::unique_ptr<UsbDeviceFile> file;
    const std::lock_guard lock(table.Mutex());
    file = table.Remove(descriptor);
    if (file != nullptr && file->Node() != nullptr) {
      file->Node()->Forget(*file);
    }
  }
  return CloseNext(descriptor);
}

CORVANE_INTERPOSED int ioctl(int descriptor, unsigned long request, ...) {
  using Function = int (*)(int, unsigned long, ...);
  static const auto next = Next<Function>("ioctl", &__interceptor_ioctl);
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  UsbFileTable& table = UsbFileTable::Instance();
  if (table.Knows(descriptor)) {
    const std::lock_guard lock(table.Mutex());
    if (UsbDeviceFile* const file = table.Find(descriptor); file != nullptr) {
      return IoctlOnFile(*file, request, argument);
    }
  }
  return next(descriptor, request, argument);
}
