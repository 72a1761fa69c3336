#include "LibusbSeam.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <libusb.h>

#include <map>
#include <mutex>
#include <thread>

namespace corvane {

LibusbSeam gLibusb;

}  // namespace corvane

using corvane::gLibusb;

namespace {

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::mutex gMutex;
std::map<const libusb_transfer*, libusb_transfer_cb_fn> gCallbacks;

void LIBUSB_CALL CallAndStay(libusb_transfer* transfer) {
  std::unique_lock lock(gMutex);
  const libusb_transfer_cb_fn callback = gCallbacks.at(transfer);
  lock.unlock();
  callback(transfer);
  std::this_thread::sleep_for(gLibusb.holdBehindCallback.load());
}

int Synchronous(const char* name) {
  ADD_FAILURE() << name << " is called";
  return LIBUSB_ERROR_NOT_SUPPORTED;
}

}  // namespace

// In the place of libusb's own, for libusb too.
#define IN_THE_PLACE_OF_LIBUSB __attribute__((visibility("default")))

IN_THE_PLACE_OF_LIBUSB int libusb_init(libusb_context** context) {
  static auto* const real = Real<decltype(libusb_init)>("libusb_init");
  return gLibusb.refuseStart ? LIBUSB_ERROR_OTHER : real(context);
}

IN_THE_PLACE_OF_LIBUSB int libusb_submit_transfer(libusb_transfer* transfer) {
  static auto* const real = Real<decltype(libusb_submit_transfer)>("libusb_submit_transfer");
  if (gLibusb.refuseReads && (transfer->endpoint & LIBUSB_ENDPOINT_IN) != 0) {
    return LIBUSB_ERROR_OTHER;
  }
  if (gLibusb.holdBehindCallback.load().count() != 0) {
    const std::lock_guard lock(gMutex);
    gCallbacks[transfer] = transfer->callback;
    transfer->callback = &CallAndStay;
  }
  return real(transfer);
}

IN_THE_PLACE_OF_LIBUSB int libusb_cancel_transfer(libusb_transfer* transfer) {
  static auto* const real = Real<decltype(libusb_cancel_transfer)>("libusb_cancel_transfer");
  return gLibusb.loseCancels ? LIBUSB_SUCCESS : real(transfer);
}

IN_THE_PLACE_OF_LIBUSB int libusb_control_transfer(libusb_device_handle*, uint8_t, uint8_t, uint16_t, uint16_t,
                                                   unsigned char*, uint16_t, unsigned int) {
  return Synchronous("libusb_control_transfer");
}

IN_THE_PLACE_OF_LIBUSB int libusb_bulk_transfer(libusb_device_handle*, unsigned char, unsigned char*, int, int*,
                                                unsigned int) {
  return Synchronous("libusb_bulk_transfer");
}

IN_THE_PLACE_OF_LIBUSB int libusb_interrupt_transfer(libusb_device_handle*, unsigned char, unsigned char*, int, int*,
                                                     unsigned int) {
  return Synchronous("libusb_interrupt_transfer");
}

IN_THE_PLACE_OF_LIBUSB int libusb_get_string_descriptor_ascii(libusb_device_handle*, uint8_t, unsigned char*, int) {
  return Synchronous("libusb_get_string_descriptor_ascii");
}
