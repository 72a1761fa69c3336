// The camera SDK bridge over small camera SDKs built for these tests.
#include "camera/TSDKControl.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "camera/TGlobalControl.h"
#include "camera/TTivanDynamicLoader.h"
#include "support/TemporaryDirectory.h"

namespace {

/// This program's search path leads to it.
constexpr char kComplete[] = "libfaketivan_COMPLETE.so";

/// Runs in an empty directory of its own.
class CameraSdk : public testing::Test {
 protected:
  /// Puts one of the camera SDKs there.
  static void Install(const std::string& kind, const std::string& name = "libtivan.so") {
    std::filesystem::copy_file(std::string(CORVANE_FAKE_SDK_DIRECTORY) + "/libfaketivan_" + kind + ".so", name);
  }
  /// What was called since the last call.
  static std::string TakeLog() {
    std::ifstream stream("sdk.log");
    std::string log(std::istreambuf_iterator<char>(stream), {});
    std::filesystem::remove("sdk.log");
    return log;
  }

  TemporaryDirectory mDirectory;
  ScopedWorkingDirectory mThere{mDirectory.Path()};
};

TEST_F(CameraSdk, IsInitialisedOnceAndShutDownOnce) {
  char place[] = "/etc/camera";
  const std::tuple<const char*, int, const char*> cases[] = {{"COMPLETE", 1, "Initialize /etc/camera\nShutDown\n"},
                                                             {"LACKS_PIXEL_SIZE", 0, "ShutDown\n"},
                                                             {"REFUSES", 0, "Initialize /etc/camera\nShutDown\n"}};
  for (const auto& [kind, devices, log] : cases) {
    Install(kind);
    {
      TGlobalControl control(place);
      EXPECT_EQ(devices, control.GetNumberDevices()) << kind;
      for (const int unknown : {1, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(nullptr, control.GetI2CInterface(unknown));
        EXPECT_EQ(nullptr, control.GetDetectorInterface(unknown));
      }
    }
    EXPECT_EQ(log, TakeLog()) << kind;
    EXPECT_EQ(nullptr, dlopen("./libtivan.so", RTLD_LAZY | RTLD_NOLOAD)) << "still loaded";
    std::filesystem::remove("libtivan.so");
  }
}

TEST_F(CameraSdk, IsTakenFromHereBeforeTheSystem) {
  EXPECT_EQ(1, TSDKControl(nullptr, kComplete).GetNumberDevices());
  Install("REFUSES", kComplete);
  EXPECT_EQ(0, TSDKControl(nullptr, kComplete).GetNumberDevices());
}

TEST_F(CameraSdk, MayBeAbsentOrNoLibrary) {
  const auto expectNone = [] {
    TSDKControl control(nullptr, "libtivan.so");
    EXPECT_EQ(0, control.GetNumberDevices());
    EXPECT_NE(std::string::npos, std::string(control.GetErrorText()).find("libtivan.so"));
  };
  expectNone();
  for (const char* const content : {"", "not a library"}) {
    mDirectory.Write("libtivan.so", content);
    expectNone();
  }
}

TEST(DynamicLoader, TellsWhyItDidNotLoad) {
  using Loader = TivanUtility::TTivanDynamicLoader;
  EXPECT_EQ(Loader::kNotInSearchDirectory, Loader("libother.so", "./sub", true).Open());
  Loader missing(std::string(1'000, 'n') + ".so");
  EXPECT_EQ(Loader::kLoadFailed, missing.Open());
  EXPECT_EQ(Loader::kErrorTextSize - 1, std::string(missing.GetErrorText()).size()) << "cut";
}

/// On the bus and the detector of the complete camera SDK.
class Camera : public CameraSdk {
 protected:
  TSDKControl mControl{nullptr, kComplete};
  TI2CInterface& mBus = *mControl.GetI2CInterface(0);
  TDetectorInterface& mDetector = *mControl.GetDetectorInterface(0);
};

TEST_F(Camera, StatusesAreTranslated) {
  using Bus = TSDKI2CInterface;
  // A read answers 20000 + register.
  std::map<int, unsigned int> codes{
      {2, Bus::kSuccess}, {66, Bus::kBusFailure}, {67, Bus::kBusFailure}, {68, Bus::kBusFailure}};
  for (int reg = 0; reg < 256; ++reg) {
    const unsigned int code = codes.count(reg) != 0 ? codes[reg] : Bus::kOtherFailure;
    unsigned char byte = 0;
    EXPECT_EQ(code, mBus.Read(9, static_cast<unsigned char>(reg), &byte)) << "status " << 20000 + reg;
  }
}

TEST_F(Camera, BurstsOfNoBytesOrTooManyAreRefused) {
  unsigned char byte = 'y';
  TakeLog();
  for (const long count : {0L, -1L, TSDKI2CInterface::kMaximumBurst + 1, LONG_MAX}) {
    EXPECT_EQ(TSDKI2CInterface::kOtherFailure, mBus.BurstWrite(0x58, count, &byte)) << count;
  }
  EXPECT_EQ(TSDKI2CInterface::kOtherFailure, mBus.BurstWrite(0x58, 1, nullptr));
  EXPECT_EQ("", TakeLog());
}

TEST_F(Camera, TransfersReachTheSdk) {
  const std::vector<unsigned char> sent(TSDKI2CInterface::kMaximumBurst, 'y');
  TakeLog();
  EXPECT_EQ(TSDKI2CInterface::kSuccess, mBus.Write(0x58, 7, 200));
  EXPECT_EQ(TSDKI2CInterface::kSuccess, mBus.BurstWrite(0x58, 3, sent.data()));
  EXPECT_EQ("I2CWrite 88 7 200\nI2CBurstWrite 88 yyy\n", TakeLog());
  EXPECT_EQ(TSDKI2CInterface::kSuccess, mBus.BurstWrite(0x58, TSDKI2CInterface::kMaximumBurst, sent.data()));
  EXPECT_EQ(std::vector<unsigned char>(sent.size(), 'y'), sent) << "the caller's bytes are constant";
  std::vector<unsigned char> received(3, 'y');
  EXPECT_EQ(TSDKI2CInterface::kSuccess, mBus.BurstRead(5, 2, received.data()));
  EXPECT_EQ((std::vector<unsigned char>{5, 5, 'y'}), received);
}

TEST_F(Camera, DetectorIsAskedEachTimeAndAFailureLeavesTheOutputAlone) {
  float width = 1.0F;
  float height = 2.0F;
  int count = 3;
  const auto expect = [&](unsigned int status, float expectedWidth, float expectedHeight, int expectedCount) {
    EXPECT_EQ(status, mDetector.GetPixelWidth(width));
    EXPECT_EQ(status, mDetector.GetPixelHeight(height));
    EXPECT_EQ(status, mDetector.GetNumberOfPixels(count));
    EXPECT_EQ(expectedWidth, width);
    EXPECT_EQ(expectedHeight, height);
    EXPECT_EQ(expectedCount, count);
  };
  mDirectory.Write("detector-fails", "");
  expect(TSDKDetectorInterface::kFailure, 1.0F, 2.0F, 3);
  std::filesystem::remove("detector-fails");
  expect(TDetectorInterface::kSuccess, 13.5F, 20.0F, 1024);
}

}  // namespace
