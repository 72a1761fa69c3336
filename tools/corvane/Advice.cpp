#include "Advice.h"

#include <dlfcn.h>

#include <array>

#include "CorvaneCIF.h"
#include "Simulation.h"
#include "ftd2xx.h"

namespace {

constexpr std::array<const char*, 8> kCameraEntryPoints{"I2CWrite",   "I2CRead",  "I2CBurstWrite", "I2CBurstRead",
                                                        "Initialize", "ShutDown", "GetDetector",   "GetPixelSize"};

std::string CameraFindings() {
  // The library has tried to load it already; asking again tells why it failed.
  void* const handle = dlopen("libtivan.so", RTLD_LAZY);
  if (handle == nullptr) {
    const char* const reason = dlerror();
    return std::string("the camera SDK is not usable (") + (reason == nullptr ? "unknown reason" : reason) +
           "): instruments behind a camera need it";
  }
  std::string findings = "the camera SDK (libtivan.so) is there, but no motion controller answers on its camera's bus";
  for (const char* const name : kCameraEntryPoints) {
    if (dlsym(handle, name) == nullptr) {
      findings = std::string("the camera SDK (libtivan.so) lacks ") + name + ": it is of another maker or too old";
      break;
    }
  }
  dlclose(handle);
  return findings;
}

std::string BridgeFindings() {
  DWORD count = 0;
  if (FT_CreateDeviceInfoList(&count) != FT_OK) {
    return "USB could not be searched";
  }
  return count == 0 ? "no USB bridge of a spectrograph is plugged in"
                    : std::to_string(count) + " USB serial bridge(s) plugged in, none with a motion controller";
}

}  // namespace

std::string StatusText(unsigned int status) {
  switch (status) {
    case CORVANE_P4_INVALID:
      return "parameter 4 invalid";
    case CORVANE_P5_INVALID:
      return "parameter 5 invalid";
    case CORVANE_NO_LEGACY_DRIVER:
      return "only older instruments have this";
    default:
      break;
  }
  std::array<char, CORVANE_DESCRIPTION_LENGTH> text{};
  CorvaneGetFunctionReturnDescription(static_cast<int>(status), text.data(), static_cast<int>(text.size()));
  std::string lower(text.data());
  for (char& character : lower) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return lower;
}

bool IsOutOfRange(unsigned int status) {
  return status >= CORVANE_P2_INVALID && status <= CORVANE_P5_INVALID;
}

std::string AdviceForStatus(unsigned int status) {
  if (status == CORVANE_COMMUNICATION_ERROR) {
    return "the part may not be fitted (corvane info lists the parts), or the instrument does not answer: check power "
           "and cable, and that no other program holds it";
  }
  if (IsOutOfRange(status)) {
    return "the value is out of range; corvane info shows the limits";
  }
  return "";
}

std::string AdviceForNothingFound(const Simulation* simulation) {
  if (simulation != nullptr) {
    const int usb = simulation->NumberUsb();
    return usb == 0 ? "the scenario attaches no instrument to the I2C bus"
                    : "the scenario attaches " + std::to_string(usb) +
                          " instrument(s) over USB only, which needs a program with a virtual USB bus";
  }
  return CameraFindings() + "; " + BridgeFindings() + ". corvane --simulate lx ... works without hardware";
}
