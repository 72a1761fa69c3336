// The camera SDK bridge over small camera SDKs built for these tests.
#include "camera/TSDKControl.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
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

TEST_F(CameraSdk, IsTakenFromHereBeforeTheSystemAndMayBeAbsentOrNoLibrary) {
  EXPECT_EQ(1, TSDKControl(nullptr, kComplete).GetNumberDevices());
  Install("REFUSES", kComplete);
  EXPECT_EQ(0, TSDKControl(nullptr, kComplete).GetNumberDevices());
  for (const char* const content : {static_cast<const char*>(nullptr), "", "not a library"}) {
    if (content != nullptr) {
      mDirectory.Write("libtivan.so", content);
    }
    TSDKControl control(nullptr, "libtivan.so");
    EXPECT_EQ(0, control.GetNumberDevices());
    EXPECT_NE(std::string::npos, std::string(control.GetErrorText()).find("libtivan.so"));
  }
  TivanUtility::TTivanDynamicLoader absent("libother.so", "./sub", true);
  EXPECT_EQ(1, absent.Open()) << "not there, and nowhere else to look";
  TivanUtility::TTivanDynamicLoader missing(std::string(1'000, 'n') + ".so");
  EXPECT_EQ(2, missing.Open());
  EXPECT_EQ(255U, std::string(missing.GetErrorText()).size()) << "a long text is cut";
}

TEST_F(CameraSdk, TranslatesStatusesAndRefusesBurstsOfNoBytesOrTooMany) {
  TSDKControl control(nullptr, kComplete);
  TI2CInterface& bus = *control.GetI2CInterface(0);
  // A read answers 20000 + register.
  const std::pair<unsigned char, unsigned int> codes[] = {{2, 0}, {66, 3}, {67, 3}, {68, 3}, {80, 1},
                                                          {0, 1}, {65, 1}, {69, 1}, {255, 1}};
  for (const auto& [reg, code] : codes) {
    unsigned char byte = 0;
    EXPECT_EQ(code, bus.Read(9, reg, &byte)) << "status " << 20000 + reg;
  }
  std::vector<unsigned char> bytes(65'536, 'y');
  for (const long count : {0L, -1L, LONG_MAX}) {
    EXPECT_EQ(1U, bus.BurstWrite(0x58, count, bytes.data()));
  }
  EXPECT_EQ(1U, bus.BurstWrite(0x58, 1, nullptr));
  EXPECT_EQ(0U, bus.Write(0x58, 7, 200));
  EXPECT_EQ(0U, bus.BurstWrite(0x58, 3, bytes.data()));
  EXPECT_EQ("Initialize (null)\nI2CWrite 88 7 200\nI2CBurstWrite 88 yyy\n", TakeLog());
  EXPECT_EQ(0U, bus.BurstWrite(0x58, 65'536, bytes.data()));
  EXPECT_EQ(std::vector<unsigned char>(65'536, 'y'), bytes) << "the caller's bytes are constant";
  EXPECT_EQ(0U, bus.BurstRead(5, 2, bytes.data()));
  EXPECT_EQ((std::vector<unsigned char>{5, 5, 'y'}), std::vector<unsigned char>(bytes.begin(), bytes.begin() + 3));
  // The detector is asked each time, and a failure leaves the output alone.
  float width = 1.0F;
  for (const unsigned int status : {2U, 0U}) {
    status != 0 ? mDirectory.Write("detector-fails", "") : (std::filesystem::remove("detector-fails"), "");
    EXPECT_EQ(status, control.GetDetectorInterface(0)->GetPixelWidth(width));
    EXPECT_EQ(status == 0 ? 13.5F : 1.0F, width);
  }
}

}  // namespace
