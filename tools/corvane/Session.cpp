#include "Session.h"

#include <algorithm>
#include <array>
#include <iostream>

#include "Advice.h"
#include "Failure.h"
#include "Progress.h"

Session::Session(const Options& options) : mOptions(options) {
  std::string directory = options.directory;
  if (!options.simulate.empty()) {
    mSimulation.emplace(options.simulate);
    directory = mSimulation->Directory().string();
  }
  unsigned int status = 0;
  {
    const Progress progress("Looking for instruments and reading their records");
    status = CorvaneInitialize(directory.empty() ? nullptr : directory.data());
  }
  if (status == CORVANE_SUCCESS || status == CORVANE_COMMUNICATION_ERROR) {
    status = CorvaneGetNumberDevices(&mNumberDevices);
  }
  try {
    if (mSimulation) {
      mSimulation->CheckInUse();
      // The library searches real USB bridges all the same. A simulated session must not touch what it finds there.
      if (mNumberDevices > mSimulation->NumberOnBus()) {
        std::cerr << "corvane: real instruments on USB are left alone while simulating\n";
        mNumberDevices = mSimulation->NumberOnBus();
      }
    }
    if (status != CORVANE_SUCCESS) {
      throw Failure(ExitCode::kLibrary, "the library could not be initialised (" + StatusText(status) + ")");
    }
  } catch (...) {
    CorvaneClose();
    throw;
  }
}

Session::~Session() {
  const Progress progress("Writing records back and closing");
  CorvaneClose();
}

int Session::Device() const {
  if (mNumberDevices == 0) {
    throw Failure(ExitCode::kNotFound, "no instrument found", AdviceForNothingFound(Simulated()));
  }
  if (mOptions.device < 0 || mOptions.device >= mNumberDevices) {
    throw Failure(ExitCode::kNotFound,
                  "there is no instrument " + std::to_string(mOptions.device) + "; found " +
                      std::to_string(mNumberDevices) + ", counted from 0",
                  "corvane list shows them");
  }
  return mOptions.device;
}

void Check(unsigned int status, const std::string& doing) {
  if (status == CORVANE_SUCCESS) {
    return;
  }
  const bool isArgument = status == CORVANE_P1_INVALID || IsOutOfRange(status);
  const std::string what = StatusText(status) + " (" + std::to_string(status) + ")";
  throw Failure(isArgument ? ExitCode::kUsage : ExitCode::kInstrument, doing.empty() ? what : doing + ": " + what,
                AdviceForStatus(status), status);
}

std::string SerialNumber(int device) {
  std::array<char, CORVANE_SERIAL_LENGTH> serial{};
  if (CorvaneGetSerialNumber(device, serial.data()) != CORVANE_SUCCESS) {
    return "";
  }
  return {serial.begin(), std::find(serial.begin(), serial.end(), '\0')};
}
