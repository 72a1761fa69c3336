// What the thread sanitizer cannot judge in a program on the virtual bus. GLib, umockdev and libudev are not built for
// it and hand over between threads by locks it does not know.
// The child of a fork starts threads of its own, which the sanitizer bears when it is told to.
extern "C" {
__attribute__((visibility("default"))) const char* __tsan_default_suppressions();  // NOLINT: fixed name
__attribute__((visibility("default"))) const char* __tsan_default_options();       // NOLINT: fixed name
}

const char* __tsan_default_options() {
  return "die_after_fork=0";
}

const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libgobject-2.0.so\n"
         "called_from_lib:libgio-2.0.so\n"
         "called_from_lib:libumockdev.so\n"
         "called_from_lib:libumockdev-preload.so\n"
         "called_from_lib:libudev.so\n";
}
