// The camera SDK bridge over small camera SDKs built for these tests.
#include "camera/TSDKControl.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "camera/TGlobalControl.h"
#include "camera/TTivanDynamicLoader.h"
#include "support/TemporaryDirectory.h"

namespace {

/// Runs in an empty directory of its own.
class CameraSdk : public testing::Test {
 protected:
  /// Puts one of the camera SDKs there under the name that the library looks for.
  static void Install(const std::string& kind, const std::string& name = "libtivan.so") {
    std::filesystem::copy_file(std::string(CORVANE_FAKE_SDK_DIRECTORY) + "/libfaketivan_" + kind + ".so", name);
  }

  static std::string Log() {
    std::ifstream stream("sdk.log");
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryDirectory mDirectory;
  ScopedWorkingDirectory mThere{mDirectory.Path()};
};

TEST_F(CameraSdk, IsInitialisedOnceAndShutDownOnce) {
  Install("COMPLETE");
  {
    char directory[] = "/etc/camera";
    TGlobalControl control(directory);
    EXPECT_EQ(1, control.GetNumberDevices());
    EXPECT_NE(nullptr, control.GetSDKI2CInterface());
    EXPECT_EQ(control.GetSDKI2CInterface(), control.GetI2CInterface(0));
    for (const int unknown : {1, -1, INT_MAX, INT_MIN}) {
      EXPECT_EQ(nullptr, control.GetI2CInterface(unknown));
      EXPECT_EQ(nullptr, control.GetDetectorInterface(unknown));
    }
    EXPECT_TRUE(control.IsDeviceUSB(0)) << "the camera SDK is source 0";
    EXPECT_FALSE(control.IsDeviceSDK(0));
  }
  EXPECT_EQ("Initialize /etc/camera\nShutDown\n", Log());
  EXPECT_EQ(nullptr, dlopen("./libtivan.so", RTLD_LAZY | RTLD_NOLOAD)) << "still loaded";
}

TEST_F(CameraSdk, ThatLacksAFunctionOrRefusesHasNoDeviceAndIsShutDown) {
  const std::pair<const char*, const char*> cases[] = {{"LACKS_PIXEL_SIZE", "ShutDown\n"},
                                                       {"REFUSES", "Initialize (null)\nShutDown\n"}};
  for (const auto& [kind, log] : cases) {
    Install(kind);
    {
      TGlobalControl control(nullptr);
      EXPECT_EQ(0, control.GetNumberDevices());
      EXPECT_EQ(nullptr, control.GetSDKI2CInterface());
      EXPECT_EQ(nullptr, control.GetI2CInterface(0));
    }
    EXPECT_EQ(log, Log());
    std::filesystem::remove("sdk.log");
    std::filesystem::remove("libtivan.so");
  }
}

TEST_F(CameraSdk, IsTakenFromHereBeforeTheSystem) {
  // The fake SDKs' directory is on this program's search path.
  const char* const name = "libfaketivan_COMPLETE.so";
  EXPECT_EQ(1, TSDKControl(nullptr, name).GetNumberDevices());
  Install("REFUSES", name);
  EXPECT_EQ(0, TSDKControl(nullptr, name).GetNumberDevices());
}

TEST_F(CameraSdk, ThatIsAbsentOrNoLibraryHasNoDevice) {
  for (const char* const content : {static_cast<const char*>(nullptr), "", "not a library"}) {
    if (content != nullptr) {
      mDirectory.Write("libtivan.so", content);
    }
    TSDKControl control(nullptr, "libtivan.so");
    EXPECT_EQ(0, control.GetNumberDevices());
    EXPECT_EQ(nullptr, control.GetI2CInterface(0));
    EXPECT_EQ(nullptr, control.GetDetectorInterface(0));
    EXPECT_NE(std::string::npos, std::string(control.GetErrorText()).find("libtivan.so"));
  }
}

TEST_F(CameraSdk, LoaderAnswersHowItWent) {
  using TivanUtility::TTivanDynamicLoader;
  TTivanDynamicLoader absent("libtivan.so", "./sub", true);
  EXPECT_EQ(1, absent.Open()) << "not there, and nowhere else to look";
  EXPECT_STREQ("No Error", absent.GetErrorText());
  EXPECT_EQ(nullptr, absent.GetFunction("Initialize"));
  TTivanDynamicLoader missing(std::string(1'000, 'n') + ".so");
  EXPECT_EQ(2, missing.Open());
  EXPECT_EQ(255U, std::string(missing.GetErrorText()).size()) << "a long text is cut";
}

class CameraBus : public CameraSdk {
 protected:
  TSDKControl mControl{nullptr, "libfaketivan_COMPLETE.so"};
  TI2CInterface& mBus = *mControl.GetI2CInterface(0);
};

TEST_F(CameraBus, StatusesAreTranslated) {
  // A read answers 20000 + register.
  const std::pair<unsigned char, unsigned int> codes[] = {{2, 0}, {66, 3}, {67, 3}, {68, 3}, {80, 1},
                                                          {0, 1}, {65, 1}, {69, 1}, {255, 1}};
  for (const auto& [reg, code] : codes) {
    unsigned char byte = 0;
    EXPECT_EQ(code, mBus.Read(9, reg, &byte)) << "status " << 20000 + reg;
    EXPECT_EQ(9, byte);
  }
}

TEST_F(CameraBus, TransfersReachTheSdkUnchangedButBurstsOfNoBytesOrTooMany) {
  std::vector<unsigned char> bytes(65'536, 'y');
  for (const long count : {0L, -1L, LONG_MAX}) {
    EXPECT_EQ(1U, mBus.BurstWrite(0x58, count, bytes.data()));
  }
  EXPECT_EQ(1U, mBus.BurstWrite(0x58, 1, nullptr));
  EXPECT_EQ(0U, mBus.Write(0x58, 7, 200));
  EXPECT_EQ(0U, mBus.BurstWrite(0x58, 3, bytes.data()));
  EXPECT_EQ("Initialize (null)\nI2CWrite 88 7 200\nI2CBurstWrite 88 yyy\n", Log());
  EXPECT_EQ(0U, mBus.BurstWrite(0x58, 65'536, bytes.data()));
  EXPECT_EQ(std::vector<unsigned char>(65'536, 'y'), bytes) << "the caller's bytes are constant";
  EXPECT_EQ(0U, mBus.BurstRead(5, 2, bytes.data()));
  EXPECT_EQ((std::vector<unsigned char>{5, 5, 'y'}), std::vector<unsigned char>(bytes.begin(), bytes.begin() + 3));
}

TEST_F(CameraBus, DetectorGeometryIsAskedEachTime) {
  TDetectorInterface& detector = *mControl.GetDetectorInterface(0);
  float width = 1.0F;
  float height = 1.0F;
  int count = 1;
  mDirectory.Write("detector-fails", "");
  for (const unsigned int status : {2U, 0U}) {
    EXPECT_EQ(status, detector.GetPixelWidth(width));
    EXPECT_EQ(status, detector.GetPixelHeight(height));
    EXPECT_EQ(status, detector.GetNumberOfPixels(count));
    EXPECT_EQ(status == 0 ? 13.5F : 1.0F, width);
    EXPECT_EQ(status == 0 ? 16.0F : 1.0F, height);
    EXPECT_EQ(status == 0 ? 2048 : 1, count);
    std::filesystem::remove("detector-fails");
  }
}

}  // namespace
