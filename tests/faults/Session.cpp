#include "Session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>

#include "api/CorvaneCIF.h"

namespace {

constexpr int kPixels = 1024;
constexpr float kUntouched = -7.0F;
constexpr int kUntouchedInt = -7;

int Entries(const char* folder) {
  return static_cast<int>(
      std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

class Run {
 public:
  explicit Run(SessionResult& result) : mResult(result) {}

  bool Call(const std::string& name, unsigned int status) {
    static const std::set<unsigned int> kDefined = {CORVANE_COMMUNICATION_ERROR, CORVANE_SUCCESS, CORVANE_P1_INVALID,
                                                    CORVANE_P2_INVALID, CORVANE_NOT_INITIALIZED};
    EXPECT_TRUE(kDefined.count(status) == 1) << name << " answered " << status;
    mResult.calls.emplace_back(name, status);
    return status == CORVANE_SUCCESS;
  }

 private:
  SessionResult& mResult;
};

void Drive(Run& run, SessionResult& result) {
  run.Call("SetPixelWidth", CorvaneSetPixelWidth(0, 13.5F));
  run.Call("SetNumberPixels", CorvaneSetNumberPixels(0, kPixels));
  run.Call("SetGrating", CorvaneSetGrating(0, 2));
  run.Call("SetWavelength", CorvaneSetWavelength(0, 550.0F));

  // The one output that a failure writes; it writes 0.
  result.wavelength = kUntouched;
  if (!run.Call("GetWavelength", CorvaneGetWavelength(0, &result.wavelength)) && result.wavelength != kUntouched) {
    EXPECT_EQ(result.wavelength, 0.0F);
  }
  run.Call("SetGratingOffset", CorvaneSetGratingOffset(0, 2, 15));
  result.offset = kUntouchedInt;
  if (!run.Call("GetGratingOffset", CorvaneGetGratingOffset(0, 2, &result.offset))) {
    EXPECT_EQ(result.offset, kUntouchedInt);
  }
  result.calibration.assign(kPixels, kUntouched);
  if (!run.Call("GetCalibration", CorvaneGetCalibration(0, result.calibration.data(), kPixels))) {
    EXPECT_EQ(std::count(result.calibration.begin(), result.calibration.end(), kUntouched), kPixels);
  }
}

}  // namespace

bool SessionResult::AllSucceeded() const {
  return found &&
         std::all_of(calls.begin(), calls.end(), [](const auto& call) { return call.second == CORVANE_SUCCESS; });
}

bool SessionResult::SameResults(const SessionResult& other) const {
  return wavelength == other.wavelength && calibration == other.calibration && offset == other.offset;
}

SessionResult RunSession(const std::string& directory) {
  SessionResult result;
  Run run(result);
  std::string path = directory;
  run.Call("Initialize", CorvaneInitialize(path.data()));
  int count = 0;
  run.Call("GetNumberDevices", CorvaneGetNumberDevices(&count));
  result.found = count > 0;
  Drive(run, result);
  EXPECT_TRUE(run.Call("Close", CorvaneClose()));
  return result;
}

int OpenDescriptors() {
  return Entries("/proc/self/fd");
}

int Threads() {
  return Entries("/proc/self/task");
}
