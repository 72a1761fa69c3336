// What the thread sanitizer cannot judge in a program on the virtual bus. GLib, umockdev and libudev are not built for
// it and hand over between threads by locks it does not know. libusb's synchronous calls learn from a plain flag that
// another thread has finished their transfer; only those calls are left out, its locks and callbacks stay in view.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();  // NOLINT: fixed name

const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libgobject-2.0.so\n"
         "called_from_lib:libgio-2.0.so\n"
         "called_from_lib:libumockdev.so\n"
         "called_from_lib:libumockdev-preload.so\n"
         "called_from_lib:libudev.so\n"
         "race:libusb_free_transfer\n"
         "race:libusb_control_transfer\n"
         "race:libusb_bulk_transfer\n";
}
