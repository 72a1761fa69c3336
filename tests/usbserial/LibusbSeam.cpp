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

libusb_transfer_cb_fn CallbackOf(const libusb_transfer* transfer) {
  const std::lock_guard lock(gMutex);
  return gCallbacks.at(transfer);
}

void LIBUSB_CALL CallAndStay(libusb_transfer* transfer) {
  CallbackOf(transfer)(transfer);
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

IN_THE_PLACE_OF_LIBUSB int libusb_control_transfer(libusb_device_handle* /*handle*/, uint8_t /*type*/,
                                                   uint8_t /*request*/, uint16_t /*value*/, uint16_t /*index*/,
                                                   unsigned char* /*data*/, uint16_t /*length*/,
                                                   unsigned int /*timeout*/) {
  return Synchronous("libusb_control_transfer");
}

IN_THE_PLACE_OF_LIBUSB int libusb_bulk_transfer(libusb_device_handle* /*handle*/, unsigned char /*endpoint*/,
                                                unsigned char* /*data*/, int /*length*/, int* /*moved*/,
                                                unsigned int /*timeout*/) {
  return Synchronous("libusb_bulk_transfer");
}

IN_THE_PLACE_OF_LIBUSB int libusb_interrupt_transfer(libusb_device_handle* /*handle*/, unsigned char /*endpoint*/,
                                                     unsigned char* /*data*/, int /*length*/, int* /*moved*/,
                                                     unsigned int /*timeout*/) {
  return Synchronous("libusb_interrupt_transfer");
}

IN_THE_PLACE_OF_LIBUSB int libusb_get_string_descriptor_ascii(libusb_device_handle* /*handle*/, uint8_t /*index*/,
                                                              unsigned char* /*data*/, int /*length*/) {
  return Synchronous("libusb_get_string_descriptor_ascii");
}
