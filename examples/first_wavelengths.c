/* Finds the first spectrograph, moves it to 550 nm and prints the wavelength of its first and last pixel.
 * Usage: first_wavelengths [DIRECTORY]   (of the camera SDK's configuration) */
#include <CorvaneCIF.h>
#include <stdio.h>
#include <stdlib.h>

static int measure(int device) {
  int pixels = 0;
  if (CorvaneSetWavelength(device, 550.0F) != CORVANE_SUCCESS ||
      CorvaneGetNumberPixels(device, &pixels) != CORVANE_SUCCESS || pixels < 1) {
    return 1;
  }
  float* nm = malloc((size_t)pixels * sizeof *nm);
  if (nm == NULL) {
    return 1;
  }
  const int failed = CorvaneGetCalibration(device, nm, pixels) != CORVANE_SUCCESS;
  if (!failed) {
    printf("pixel 1: %.3f nm, pixel %d: %.3f nm\n", (double)nm[0], pixels, (double)nm[pixels - 1]);
  }
  free(nm);
  return failed;
}

int main(int argc, char** argv) {
  static char here[] = ".";
  int devices = 0;
  int failed = CorvaneInitialize(argc > 1 ? argv[1] : here) != CORVANE_SUCCESS ||
               CorvaneGetNumberDevices(&devices) != CORVANE_SUCCESS || devices == 0;
  if (failed) {
    fprintf(stderr, "no spectrograph found\n");
  } else {
    failed = measure(0);
  }
  CorvaneClose(); /* writes changed values back */
  return failed;
}
