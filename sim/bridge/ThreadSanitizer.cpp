// What the thread sanitizer cannot judge in a program on the virtual bus. GLib, umockdev and libudev are not built for
// it and hand over between threads by locks it does not know; libusb counts the holders of a device by an atomic number
// that it does not see. The child of a fork starts threads of its own, which it bears when it is told to.
#if defined(__SANITIZE_THREAD__)
#define CORVANE_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define CORVANE_THREAD_SANITIZER
#endif
#endif

#ifdef CORVANE_THREAD_SANITIZER

#include <dlfcn.h>

#include <mutex>

struct libusb_device;

// NOLINTBEGIN(bugprone-reserved-identifier): the names are those of the runtime.
#define CORVANE_FOR_SANITIZER extern "C" __attribute__((visibility("default")))

CORVANE_FOR_SANITIZER const char* __tsan_default_options() {
  return "die_after_fork=0";
}

CORVANE_FOR_SANITIZER const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libgobject-2.0.so\n"
         "called_from_lib:libgio-2.0.so\n"
         "called_from_lib:libumockdev.so\n"
         "called_from_lib:libumockdev-preload.so\n"
         "called_from_lib:libudev.so\n";
}

// NOLINTEND(bugprone-reserved-identifier)

// In the place of libusb's own, for libusb too: with a lock that the sanitizer knows, around the count going down.
CORVANE_FOR_SANITIZER void libusb_unref_device(libusb_device* device) {
  using Function = void (*)(libusb_device*);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "libusb_unref_device"));
  static std::recursive_mutex mutex;  // the last holder of a device lets go of its hub
  const std::lock_guard lock(mutex);
  next(device);
}

#endif
