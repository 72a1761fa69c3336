// A host program that happens to define functions of the library's names must not come between the library and its own.
#include <CorvaneCIF.h>
#include <ftd2xx.h>

#include <cstdio>

namespace {

int gCalls = 0;

}  // namespace

// Definitions of the host, in the executable's dynamic table and so in front of the library's in every search.
extern "C" {

unsigned int CorvaneGetGrating(int /*device*/, int* /*grating*/) {
  ++gCalls;
  return CORVANE_COMMUNICATION_ERROR;
}

FT_STATUS FT_CreateDeviceInfoList(LPDWORD /*count*/) {
  ++gCalls;
  return FT_OTHER_ERROR;
}

FT_STATUS FT_ListDevices(PVOID /*arg1*/, PVOID /*arg2*/, DWORD /*flags*/) {
  ++gCalls;
  return FT_OTHER_ERROR;
}
}

int main() {
  char here[] = ".";
  const unsigned int opened = CorvaneInitialize(here);
  const unsigned int moved = CorvaneSetWavelength(0, 550.0F);
  const unsigned int closed = CorvaneClose();
  std::printf("opened %u, moved %u, closed %u, calls into the host: %d\n", opened, moved, closed, gCalls);
  return opened == CORVANE_SUCCESS && moved == CORVANE_SUCCESS && closed == CORVANE_SUCCESS && gCalls == 0 ? 0 : 1;
}
