// A camera SDK for the tests of the bridge; it writes what is called to "sdk.log" in the working directory.
// FAKE_LACKS_PIXEL_SIZE lacks the entry point "GetPixelSize", the "Initialize" of FAKE_REFUSES fails.
// In C, because a C++ library may stay loaded after it was closed.
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#pragma GCC visibility push(default)

enum { kSuccess = 20002, kRefused = 20003, kDetectorFailure = 20004 };

static unsigned int Log(const char* format, ...) {
  FILE* file = fopen("sdk.log", "a");
  va_list arguments;
  va_start(arguments, format);
  vfprintf(file, format, arguments);
  va_end(arguments);
  fclose(file);
  return kSuccess;
}

/// Detector calls fail while this file is there.
static unsigned int DetectorStatus(void) {
  return access("detector-fails", F_OK) == 0 ? kDetectorFailure : kSuccess;
}

unsigned int I2CWrite(unsigned char address, unsigned char reg, unsigned char data) {
  return Log("I2CWrite %d %d %d\n", address, reg, data);
}

/// The status is 20000 and the register, the value the address.
unsigned int I2CRead(unsigned char address, unsigned char reg, unsigned char* data) {
  *data = address;
  return 20000U + reg;
}

unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data) {
  Log("I2CBurstWrite %d %.*s\n", address, (int)count, (const char*)data);
  memset(data, 0, (size_t)count);  // It may: the argument is not constant.
  return kSuccess;
}

unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data) {
  memset(data, address, (size_t)count);
  return kSuccess;
}

unsigned int Initialize(char* directory) {
  Log("Initialize %s\n", directory != NULL ? directory : "(null)");
#ifdef FAKE_REFUSES
  return kRefused;
#else
  return kSuccess;
#endif
}

unsigned int ShutDown(void) {
  return Log("ShutDown\n");
}

unsigned int GetDetector(int* xPixels, int* yPixels) {
  *xPixels = 1024;
  *yPixels = 256;
  return DetectorStatus();
}

#ifndef FAKE_LACKS_PIXEL_SIZE
unsigned int GetPixelSize(float* width, float* height) {
  *width = 13.5F;
  *height = 20.0F;
  return DetectorStatus();
}
#endif
